// The service half: requests and how they end.
#include <atomic>
#include <cerrno>
#include <set>

#include "contract/served_name.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BusRequests : public BusContract {
 protected:
  // Keeps each request for the test.
  Handler Keeper() {
    return [this](bus_service*, bus_request* request) {
      const std::lock_guard<std::mutex> lock(mutex_);
      kept_.push_back(request);
    };
  }
  bus_request* Take(std::size_t index = 0) {
    EXPECT_TRUE(WaitUntil([&] {
      const std::lock_guard<std::mutex> lock(mutex_);
      return kept_.size() > index;
    }));
    const std::lock_guard<std::mutex> lock(mutex_);
    return kept_.at(index);
  }

  std::mutex mutex_;
  std::vector<bus_request*> kept_;
};

TEST_F(BusRequests, TellTheirMethodAndBytesUntilTheyEnd) {
  const ServedName service("camera", peer_->address(), Keeper());
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "a/b", std::string("x\0y", 3), TheReceiver(0).callback), 0);
  EXPECT_EQ(CallAsync(client.get(), "camera", "empty", "", TheReceiver(0).callback), 0);
  bus_request* empty = Take(1);
  bus_request* request = Take(0);
  int length = -1;
  EXPECT_EQ(bus_request_payload(empty, &length), nullptr);
  EXPECT_EQ(length, 0);
  EXPECT_STREQ(bus_request_method(request), "a/b");
  EXPECT_EQ(Payload(request), std::string("x\0y", 3));
  EXPECT_EQ(Reply(request, ""), 0);
  EXPECT_EQ(Reply(empty, ""), 0);
}

TEST_F(BusRequests, TellWhichClientObjectSentThem) {
  std::vector<std::uint64_t> callers;
  const ServedName service("camera", peer_->address(), [&](bus_service*, bus_request* request) {
    callers.push_back(bus_request_caller(request));
    Reply(request, "");
  });
  const ClientPtr first = Connected();
  const ClientPtr second = Connected();
  EXPECT_EQ(Call(first.get(), "camera", "move").code, 0);
  EXPECT_EQ(Call(second.get(), "camera", "query").code, 0);
  // Another connection of the same object, and another kind of call.
  EXPECT_EQ(bus_connect(first.get(), peer_->address().c_str()), 0);
  EXPECT_EQ(CallAsync(first.get(), "camera", "stop", "", TheReceiver(0).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  ASSERT_EQ(callers.size(), 3U);
  EXPECT_EQ(callers[2], callers[0]);
  EXPECT_NE(callers[1], callers[0]);
  EXPECT_NE(callers[0], 0U);
  EXPECT_NE(callers[1], 0U);
  EXPECT_EQ(bus_request_caller(nullptr), 0U);
}

TEST_F(BusRequests, TellHowLongTheirCallerStillWaits) {
  const ServedName service("camera", peer_->address(), Keeper());
  const ClientPtr client = Connected();
  const Clock::time_point before = Clock::now();
  EXPECT_EQ(CallAsync(client.get(), "camera", "slow", "", TheReceiver(0).callback, 10), 0);
  bus_request* request = Take();
  const int first = bus_request_time_left(request);
  EXPECT_LE(first, 10000);
  EXPECT_GE(first, (std::chrono::seconds(10) - (Clock::now() - before)) / milliseconds(1));
  EXPECT_TRUE(WaitUntil([&] { return bus_request_time_left(request) < first; }));
  EXPECT_GT(bus_request_time_left(request), 0);
  EXPECT_EQ(Reply(request, ""), 0);
}

TEST_F(BusRequests, HaveTimeLeftAsLongAsTheirAnswerIsTaken) {
  const ServedName service("camera", peer_->address(), Keeper());
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "slow", "", TheReceiver(0).callback, 1), 0);
  bus_request* request = Take();
  EXPECT_LE(bus_request_time_left(request), 1000);
  EXPECT_TRUE(WaitUntil([&] { return bus_request_time_left(request) <= 0; }));
  EXPECT_EQ(Reply(request, "late"), -ETIMEDOUT);
}

TEST_F(BusRequests, WithoutATimeOutOfTheirOwnHaveTheDefaultTime) {
  const ServedName service("camera", peer_->address(), Keeper());
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "slow", "", TheReceiver(0).callback, 0), 0);
  bus_request* request = Take();
  const int left = bus_request_time_left(request);
  EXPECT_LE(left, kDefaultTimeout / milliseconds(1));
  EXPECT_GT(left, (kDefaultTimeout - kAtOnce) / milliseconds(1));
  EXPECT_EQ(bus_request_fail(request, -EIO), 0);
  EXPECT_EQ(bus_request_time_left(nullptr), 0);
}

TEST_F(BusRequests, AreHandledInOrderOnOneThread) {
  std::vector<std::string> order;
  std::set<std::thread::id> threads;
  ServedName service("camera", peer_->address(), [&](bus_service*, bus_request* request) {
    order.push_back(Payload(request));
    threads.insert(std::this_thread::get_id());
    Reply(request, "");
  });
  const ClientPtr client = Connected();
  std::vector<std::string> expected;
  for (int i = 0; i < 200; ++i) {
    expected.push_back(std::to_string(i));
    EXPECT_EQ(CallAsync(client.get(), "camera", "count", expected.back(), TheReceiver(0).callback), 0);
  }
  ASSERT_TRUE(TheReceiver(0).WaitFor(200));
  service.Free();
  EXPECT_EQ(order, expected);
  EXPECT_EQ(threads.size(), 1U);
  EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

TEST_F(BusRequests, MayBeAnsweredLaterFromAnotherThread) {
  const ServedName service("camera", peer_->address(), Keeper());
  const ClientPtr client = Connected();
  CallResult result{};
  Thread waiting([&] { result = Call(client.get(), "camera", "slow", "", 20); });
  bus_request* request = Take();
  Thread answering([&] { EXPECT_EQ(Reply(request, "done"), 0); });
  answering.join();
  waiting.join();
  EXPECT_EQ(result.reply, "done");
}

TEST_F(BusRequests, KeptOnesDoNotHoldUpOthers) {
  const ServedName service("camera", peer_->address(), [&](bus_service*, bus_request* request) {
    if (Payload(request).empty()) {
      const std::lock_guard<std::mutex> lock(mutex_);
      kept_.push_back(request);
    } else {
      Reply(request, Payload(request));
    }
  });
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "slow", "", TheReceiver(0).callback, 20), 0);
  bus_request* request = Take();
  EXPECT_EQ(Call(client.get(), "camera", "quick", "x").reply, "x");
  EXPECT_EQ(Reply(request, ""), 0);
  EXPECT_TRUE(TheReceiver(0).WaitFor(1));
}

TEST_F(BusRequests, FailuresReachTheCaller) {
  const ServedName service("camera", peer_->address(), [](bus_service*, bus_request* request) {
    bus_request_fail(request, std::stoi(Payload(request)));
  });
  const ClientPtr client = Connected();
  for (const int error : {-EBUSY, -EIO, -ENOSYS, -EINVAL, -ETIMEDOUT, -ESRCH, -1, -4095}) {
    EXPECT_EQ(Call(client.get(), "camera", "fail", std::to_string(error)).code, error);
  }
  for (const int error : {0, 1, EBUSY, 2147483647}) {
    EXPECT_EQ(Call(client.get(), "camera", "fail", std::to_string(error)).code, -EPROTO) << error;
  }
}

TEST_F(BusRequests, ArgumentsAreChecked) {
  EXPECT_EQ(bus_request_reply(nullptr, "x", 1), -EINVAL);
  EXPECT_EQ(bus_request_fail(nullptr, -EIO), -EINVAL);
  const ServedName service("camera", peer_->address(), [](bus_service*, bus_request* request) {
    if (Payload(request) == "null") {
      EXPECT_EQ(bus_request_reply(request, nullptr, 1), -EINVAL);
    } else {
      EXPECT_EQ(bus_request_reply(request, "x", -1), -EINVAL);
    }
  });
  const ClientPtr client = Connected();
  EXPECT_LT(Call(client.get(), "camera", "reply", "null", 1).code, 0);
  EXPECT_LT(Call(client.get(), "camera", "reply", "negative", 1).code, 0);
}

TEST_F(BusRequests, AnswerAfterTheDeadlineIsRefused) {
  const ServedName service("camera", peer_->address(), Keeper());
  const ClientPtr client = Connected();
  EXPECT_EQ(Call(client.get(), "camera", "slow", "", 1).code, -ETIMEDOUT);
  EXPECT_EQ(Reply(Take(), "late"), -ETIMEDOUT);
}

TEST_F(BusRequests, AnswerOverALostConnectionIsRefused) {
  const ServedName service("camera", peer_->address(), Keeper());
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "slow", "", TheReceiver(0).callback, 60), 0);
  bus_request* first = Take();
  EXPECT_EQ(CallAsync(client.get(), "camera", "slow", "", TheReceiver(0).callback, 60), 0);
  bus_request* second = Take(1);
  peer_->KillBroker();
  EXPECT_TRUE(WaitUntil([&] { return Emit(service.get(), "moved") == -ENOTCONN; }));
  EXPECT_EQ(Reply(first, "x"), -ENOTCONN);
  peer_->StartBroker();
  EXPECT_TRUE(WaitUntil([&] { return Emit(service.get(), "moved") == 0; }));
  EXPECT_EQ(Reply(second, "x"), -ENOTCONN) << "its connection has gone, though there is another";
}

TEST_F(BusRequests, HandlerMayEmitAndCallOthers) {
  const ServedName inner("inner", peer_->address(), &Echo);
  const ClientPtr own = Connected();
  const ServedName outer("outer", peer_->address(), [&](bus_service* self, bus_request* request) {
    EXPECT_EQ(Emit(self, "asked", Payload(request)), 0);
    Reply(request, Call(own.get(), "inner", "echo", Payload(request)).reply);
  });
  const ClientPtr client = Connected();
  EXPECT_EQ(bus_signal_subscribe(client.get(), "outer", "asked", TheReceiver(0).callback), 0);
  EXPECT_EQ(Call(client.get(), "outer", "ask", "x").reply, "x");
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].payload, "x");
}

TEST_F(BusRequests, SignalsAndAnswersOfManyThreadsArrive) {
  const ServedName service("camera", peer_->address(), &Echo);
  const ClientPtr client = Connected();
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
  std::vector<Thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&] {
      for (int i = 0; i < 50; ++i) EXPECT_EQ(Emit(service.get(), "moved", "x"), 0);
    });
  }
  for (int i = 0; i < 50; ++i) EXPECT_EQ(Call(client.get(), "camera", "echo", "y").reply, "y");
  EXPECT_TRUE(TheReceiver(0).WaitFor(200));
}

}  // namespace
}  // namespace vptz_test
