#include <algorithm>
#include <cerrno>
#include <vector>

#include "contract/bus_fixture.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BusCall : public BusContract {};

std::string Bytes(std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) bytes += static_cast<char>(i * 7 + i / 256);
  return bytes;
}

TEST_F(BusCall, BodiesOfEverySizeAndValueComeBackUnchanged) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  for (const std::size_t size : {0U, 1U, 2U, 255U, 256U, 512U, 513U, 4096U, 65535U, 65536U}) {
    const CallResult result = Call(client.get(), "camera", "echo", Bytes(size));
    EXPECT_GE(result.code, 0) << size;
    EXPECT_EQ(result.reply, Bytes(size)) << size;
  }
}

TEST_F(BusCall, TheServiceSeesMethodAndBytes) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "move/relative to Fußpunkt", std::string("a\0b", 3),
                      TheReceiver(0).callback),
            0);
  ASSERT_TRUE(service->WaitKept(1));
  const auto request = service->Take();
  EXPECT_EQ(request->method(), "move/relative to Fußpunkt");
  EXPECT_EQ(request->payload(), std::string("a\0b", 3));
}

TEST_F(BusCall, NamesMayBe255BytesLong) {
  const std::string name(255, 'n');
  const auto service = Serve(name);
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), name, name, "", TheReceiver(0).callback), 0);
  ASSERT_TRUE(service->WaitKept(1));
  EXPECT_EQ(service->Take()->method(), name);
}

TEST_F(BusCall, NullRequestOfNoLengthIsAnEmptyRequest) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  char reply[8];
  int length = sizeof reply;
  EXPECT_GE(bus_method_call_sync(client.get(), "camera", "echo", nullptr, 0, reply, &length, 10), 0);
  EXPECT_EQ(length, 0);
}

TEST_F(BusCall, NullReplyBufferTakesAnEmptyReply) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  int length = 0;
  EXPECT_GE(bus_method_call_sync(client.get(), "camera", "echo", nullptr, 0, nullptr, &length, 10), 0);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(bus_method_call_sync(client.get(), "camera", "echo", "x", 1, nullptr, &length, 10), -EMSGSIZE);
  EXPECT_EQ(length, 0);
}

TEST_F(BusCall, ReplyThatFitsExactlyArrivesAndNothingIsWrittenBehindIt) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  const std::string request = Bytes(100);
  std::string buffer(200, '#');
  int length = 100;
  EXPECT_GE(
      bus_method_call_sync(client.get(), "camera", "echo", request.data(), 100, buffer.data(), &length, 10), 0);
  EXPECT_EQ(length, 100);
  EXPECT_EQ(buffer, request + std::string(100, '#'));
}

TEST_F(BusCall, ShorterReplyTellsItsLengthAndLeavesTheRestOfTheBuffer) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::string buffer(10, '#');
  int length = 10;
  EXPECT_GE(bus_method_call_sync(client.get(), "camera", "echo", "abc", 3, buffer.data(), &length, 10), 0);
  EXPECT_EQ(length, 3);
  EXPECT_EQ(buffer, "abc#######");
}

TEST_F(BusCall, ReplyLongerThanTheCapacityIsRefusedAndLeavesEverythingUntouched) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  for (const int excess : {1, 2, 100, 60000}) {
    const std::string request = Bytes(100 + static_cast<std::size_t>(excess));
    std::string buffer(70000, '#');
    int length = 100;
    EXPECT_EQ(bus_method_call_sync(client.get(), "camera", "echo", request.data(), 100 + excess, buffer.data(),
                                   &length, 10),
              -EMSGSIZE);
    EXPECT_EQ(length, 100);
    EXPECT_EQ(buffer, std::string(70000, '#'));
  }
  EXPECT_EQ(Call(client.get(), "camera", "echo", "next").reply, "next");
}

TEST_F(BusCall, FailureLeavesTheReplyLengthUntouched) {
  const ClientPtr client = Connected();
  char reply[7];
  int length = sizeof reply;
  EXPECT_EQ(bus_method_call_sync(client.get(), "nobody", "echo", "x", 1, reply, &length, 10), -ESRCH);
  EXPECT_EQ(length, 7);
}

TEST_F(BusCall, RefusalOfTheServiceReachesTheCaller) {
  auto service = peer_->Serve(
      "camera", [](std::unique_ptr<PeerRequest> request) { request->Fail(-std::stoi(request->payload())); });
  const ClientPtr client = Connected();
  for (const int error : {EBUSY, EOPNOTSUPP, EIO}) {
    EXPECT_EQ(Call(client.get(), "camera", "refuse", std::to_string(error)).code, -error);
  }
}

TEST_F(BusCall, AbsentServiceIsToldAtOnce) {
  const auto other = Serve("other");
  const ClientPtr client = Connected();
  EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "echo", "x").code, -ESRCH); }), kAtOnce);
  EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "echo", "x").code, -ESRCH); }), kAtOnce);
}

TEST_F(BusCall, ServiceThatLeftIsAbsentAndOneThatCameBackAnswers) {
  const ClientPtr client = Connected();
  for (int round = 0; round < 3; ++round) {
    {
      const auto service = Serve();
      EXPECT_EQ(Call(client.get(), "camera", "echo", "here").reply, "here");
    }
    // A call that meets the service on its way out is told that it was lost.
    int code = 0;
    EXPECT_TRUE(WaitUntil([&] {
      EXPECT_LT(Took([&] { code = Call(client.get(), "camera", "echo", "gone").code; }), kAtOnce);
      return code != -ECONNRESET;
    }));
    EXPECT_EQ(code, -ESRCH);
  }
}

TEST_F(BusCall, RequestsOfOneCallerArriveInTheirOrder) {
  std::vector<std::string> order;
  auto service = peer_->Serve("camera", [&](std::unique_ptr<PeerRequest> request) {
    order.push_back(request->payload());
    request->Reply("");
  });
  const ClientPtr client = Connected();
  std::vector<std::string> expected;
  for (int i = 0; i < 200; ++i) {
    expected.push_back(std::to_string(i));
    ASSERT_EQ(CallAsync(client.get(), "camera", "count", expected.back(), TheReceiver(0).callback, 2), 0);
  }
  ASSERT_TRUE(TheReceiver(0).WaitFor(200));
  service.reset();
  EXPECT_EQ(order.size(), expected.size());
  EXPECT_TRUE(order == expected) << "first difference at "
                                 << std::mismatch(order.begin(), order.end(), expected.begin()).first -
                                        order.begin();
  for (const Delivery& delivery : TheReceiver(0).All()) EXPECT_EQ(delivery.length, 0);
}

TEST_F(BusCall, TwoClientsOfOneNameGetTheirOwnReplies) {
  const auto service = Serve();
  const ClientPtr first = Connected();
  const ClientPtr second = Connected();
  const auto repeat = [](bus_client* client, const std::string& text) {
    for (int i = 0; i < 200; ++i)
      ASSERT_EQ(Call(client, "camera", "echo", text + std::to_string(i)).reply, text + std::to_string(i));
  };
  Thread other([&] { repeat(second.get(), "second"); });
  repeat(first.get(), "first");
  other.join();
}

TEST_F(BusCall, ThreadsOfOneClientGetTheirOwnReplies) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::vector<Thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&client, number] {
      for (int i = 0; i < 200; ++i) {
        const std::string text = std::to_string(number * 1000 + i);
        ASSERT_EQ(Call(client.get(), "camera", "echo", text).reply, text);
      }
    });
  }
  for (Thread& thread : threads) thread.join();
}

TEST_F(BusCall, SlowCallHoldsUpNobody) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  CallResult slow{};
  Thread waiting([&] { slow = Call(client.get(), "camera", "slow", "", 20); });
  EXPECT_TRUE(service->WaitKept(1));
  for (int i = 0; i < 20; ++i) {
    EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "echo", "quick").reply, "quick"); }), kAtOnce);
  }
  service->Take()->Reply("done");
  waiting.join();
  EXPECT_EQ(slow.reply, "done");
}

TEST_F(BusCall, AnswersMayComeInAnotherOrderThanTheRequests) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::vector<CallResult> results(4);
  std::vector<Thread> threads;
  for (std::size_t i = 0; i < results.size(); ++i) {
    threads.emplace_back([&, i] { results[i] = Call(client.get(), "camera", "later", std::to_string(i), 20); });
  }
  EXPECT_TRUE(service->WaitKept(4));
  std::vector<std::unique_ptr<PeerRequest>> requests;
  for (int i = 0; i < 4; ++i) requests.push_back(service->Take());
  for (auto request = requests.rbegin(); request != requests.rend(); ++request) {
    (*request)->Reply("answer " + (*request)->payload());
  }
  for (Thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < results.size(); ++i) EXPECT_EQ(results[i].reply, "answer " + std::to_string(i));
}

}  // namespace
}  // namespace vptz_test
