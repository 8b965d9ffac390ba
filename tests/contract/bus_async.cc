#include <atomic>
#include <cerrno>
#include <set>
#include <vector>

#include "contract/bus_fixture.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BusAsync : public BusContract {
 protected:
  // Whatever was under way when this is called has been delivered afterwards.
  static void Settle(bus_client* client) {
    TheReceiver(2).Clear();
    EXPECT_EQ(CallAsync(client, "camera", "echo", "settle", TheReceiver(2).callback), 0);
    EXPECT_TRUE(TheReceiver(2).WaitFor(1));
  }
};

TEST_F(BusAsync, AnswerReachesTheCallbackOnce) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "hello", TheReceiver(0).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  Settle(client.get());
  ASSERT_EQ(TheReceiver(0).Count(), 1U);
  const Delivery delivery = TheReceiver(0).All()[0];
  EXPECT_EQ(delivery.client, client.get());
  EXPECT_EQ(delivery.user_data, nullptr);
  EXPECT_EQ(delivery.name, "echo");
  EXPECT_EQ(delivery.payload, "hello");
  EXPECT_EQ(delivery.length, 5);
  EXPECT_NE(delivery.thread, std::this_thread::get_id());
}

TEST_F(BusAsync, EmptyAnswerHasNoPayload) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "", TheReceiver(0).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].length, 0);
  EXPECT_TRUE(TheReceiver(0).All()[0].null_payload);
}

TEST_F(BusAsync, AnswerOf64KiBArrivesWhole) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  const std::string bytes(65536, '\xa5');
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", bytes, TheReceiver(0).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].payload, bytes);
}

TEST_F(BusAsync, FailureReachesTheCallbackAsNegativeLength) {
  auto service = peer_->Serve("camera", [](std::unique_ptr<PeerRequest> request) {
    if (request->method() == "echo") {
      request->Reply(request->payload());
    } else {
      request->Fail(-EBUSY);
    }
  });
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "refuse", "", TheReceiver(0).callback), 0);
  EXPECT_EQ(CallAsync(client.get(), "nobody", "echo", "", TheReceiver(1).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  ASSERT_TRUE(TheReceiver(1).WaitFor(1, kAtOnce));
  Settle(client.get());
  ASSERT_EQ(TheReceiver(0).Count(), 1U);
  EXPECT_EQ(TheReceiver(0).All()[0].length, -EBUSY);
  EXPECT_EQ(TheReceiver(0).All()[0].name, "refuse");
  EXPECT_TRUE(TheReceiver(0).All()[0].null_payload);
  ASSERT_EQ(TheReceiver(1).Count(), 1U);
  EXPECT_EQ(TheReceiver(1).All()[0].length, -ESRCH);
}

TEST_F(BusAsync, ManyMayBeUnderWay) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::multiset<std::string> expected;
  for (int i = 0; i < 50; ++i) {
    expected.insert(std::to_string(i));
    EXPECT_EQ(CallAsync(client.get(), "camera", "later", std::to_string(i), TheReceiver(0).callback), 0);
  }
  ASSERT_TRUE(service->WaitKept(50));
  EXPECT_EQ(Call(client.get(), "camera", "echo", "between").reply, "between");
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
  for (int i = 0; i < 50; ++i) {
    const auto request = service->Take();
    request->Reply(request->payload());
  }
  ASSERT_TRUE(TheReceiver(0).WaitFor(50));
  Settle(client.get());
  std::multiset<std::string> payloads;
  for (const Delivery& delivery : TheReceiver(0).All()) payloads.insert(delivery.payload);
  EXPECT_EQ(payloads, expected);
}

TEST_F(BusAsync, CallbacksOfAClientRunOnOneThreadAndNeverAtOnce) {
  std::atomic<int> running{0};
  std::atomic<int> overlaps{0};
  const auto service = Serve();
  const ClientPtr client = Connected();
  const auto watch = [&](const Delivery&) {
    if (++running > 1) ++overlaps;
    Breathe();
    --running;
  };
  TheReceiver(0).OnDelivery(watch);
  TheReceiver(1).OnDelivery(watch);
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(1).callback), 0);
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "x", TheReceiver(0).callback), 0);
    EXPECT_TRUE(service->Emit("moved", "y"));
    EXPECT_EQ(Call(client.get(), "camera", "echo", "z").reply, "z");
  }
  ASSERT_TRUE(TheReceiver(0).WaitFor(20));
  ASSERT_TRUE(TheReceiver(1).WaitFor(20));
  EXPECT_EQ(overlaps, 0);
  std::set<std::thread::id> threads;
  for (const int index : {0, 1}) {
    for (const Delivery& delivery : TheReceiver(index).All()) threads.insert(delivery.thread);
  }
  EXPECT_EQ(threads.size(), 1U);
  EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
  Settle(client.get());
}

TEST_F(BusAsync, CallbackMayCallSynchronously) {
  CallResult inside{};
  Event done;
  const auto service = Serve();
  const ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([&](const Delivery& delivery) {
    inside = Call(delivery.client, "camera", "echo", "from the callback");
    done.Set();
  });
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "x", TheReceiver(0).callback), 0);
  ASSERT_TRUE(done.Wait());
  EXPECT_EQ(inside.reply, "from the callback");
}

TEST_F(BusAsync, CallbackMayCallWhileItsClientsOtherThreadWaits) {
  CallResult inside{};
  Event done;
  const auto service = Serve();
  const ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([&](const Delivery& delivery) {
    inside = Call(delivery.client, "camera", "echo", "from the callback");
    done.Set();
  });
  CallResult outside{};
  Thread waiting([&] { outside = Call(client.get(), "camera", "slow", "", 20); });
  EXPECT_TRUE(service->WaitKept(1));
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "x", TheReceiver(0).callback), 0);
  EXPECT_TRUE(done.Wait());
  service->Take()->Reply("done");
  waiting.join();
  EXPECT_EQ(inside.reply, "from the callback");
  EXPECT_EQ(outside.reply, "done");
}

TEST_F(BusAsync, CallbackMayCallAsynchronouslyAgain) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([&](const Delivery& delivery) {
    const int next = std::stoi(delivery.payload) + 1;
    if (next > 20) return;
    EXPECT_EQ(CallAsync(delivery.client, "camera", "echo", std::to_string(next), TheReceiver(0).callback), 0);
  });
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "1", TheReceiver(0).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(20));
  EXPECT_EQ(TheReceiver(0).All()[19].payload, "20");
}

TEST_F(BusAsync, BlockedCallbackDelaysOnlyCallbacks) {
  Event entered;
  Event leave;
  const auto service = Serve();
  const ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([&](const Delivery&) {
    entered.Set();
    leave.Wait();
  });
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "x", TheReceiver(0).callback), 0);
  ASSERT_TRUE(entered.Wait());
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(1).callback), 0);
  EXPECT_TRUE(service->Emit("moved", "y"));
  for (int i = 0; i < 10; ++i) {
    EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "echo", "z").reply, "z"); }), kAtOnce);
  }
  EXPECT_EQ(TheReceiver(1).Count(), 0U);
  leave.Set();
  EXPECT_TRUE(TheReceiver(1).WaitFor(1));
}

}  // namespace
}  // namespace vptz_test
