#include <atomic>
#include <cerrno>
#include <vector>

#include "contract/bus_fixture.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BusSignal : public BusContract {
 protected:
  static std::vector<std::string> Payloads(int index) {
    std::vector<std::string> payloads;
    for (const Delivery& delivery : TheReceiver(index).All()) payloads.push_back(delivery.payload);
    return payloads;
  }

  static int Subscribe(const ClientPtr& client, const std::string& signal, int index) {
    return bus_signal_subscribe(client.get(), "camera", signal.c_str(), TheReceiver(index).callback);
  }
  static int SubscribeAll(const ClientPtr& client, int index) {
    return bus_signal_subscribe_all(client.get(), "camera", TheReceiver(index).callback);
  }
  static int Unsubscribe(const ClientPtr& client, const std::string& signal) {
    return bus_signal_unsubscribe(client.get(), "camera", signal.c_str());
  }
};

TEST_F(BusSignal, SignalsAndAnswersThatComeAfterACallWaitForNoOtherCall) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  for (std::size_t round = 1; round <= 100; ++round) {
    EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
    EXPECT_TRUE(service->Emit("moved"));
    ASSERT_TRUE(TheReceiver(0).WaitFor(round, kAtOnce));
    EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
    EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "y", TheReceiver(1).callback), 0);
    ASSERT_TRUE(TheReceiver(1).WaitFor(round, kAtOnce));
  }
}

TEST_F(BusSignal, SignalReachesItsSubscriber) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_TRUE(service->Emit("stopped", "other"));
  EXPECT_TRUE(service->Emit("moved", std::string("a\0b", 3)));
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  const Delivery delivery = TheReceiver(0).All()[0];
  EXPECT_EQ(delivery.client, client.get());
  EXPECT_EQ(delivery.user_data, nullptr);
  EXPECT_EQ(delivery.name, "moved");
  EXPECT_EQ(delivery.payload, std::string("a\0b", 3));
  EXPECT_EQ(delivery.length, 3);
  EXPECT_NE(delivery.thread, std::this_thread::get_id());
}

TEST_F(BusSignal, EmptySignalHasNoPayload) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_TRUE(service->Emit("moved"));
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].length, 0);
  EXPECT_TRUE(TheReceiver(0).All()[0].null_payload);
}

TEST_F(BusSignal, SignalOf64KiBArrivesWhole) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  const std::string bytes(65536, '\xa5');
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_TRUE(service->Emit("moved", bytes));
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].payload, bytes);
}

TEST_F(BusSignal, NamesMayHoldSlashesAndAnyLetters) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  const std::vector<std::string> names = {
      "finish/search_device", "/moved", "moved/", "a//b", "/", "with space", "höhe/度", std::string(255, 'n')};
  for (const std::string& name : names) EXPECT_EQ(Subscribe(client, name, 0), 0) << name;
  EXPECT_EQ(SubscribeAll(client, 1), 0);
  for (const std::string& name : names) EXPECT_TRUE(service->Emit(name, name));
  ASSERT_TRUE(TheReceiver(0).WaitFor(names.size()));
  ASSERT_TRUE(TheReceiver(1).WaitFor(names.size()));
  EXPECT_EQ(Payloads(0), names);
  EXPECT_EQ(Payloads(1), names);
  for (const Delivery& delivery : TheReceiver(1).All()) EXPECT_EQ(delivery.name, delivery.payload);
}

TEST_F(BusSignal, SubscriberOfAllGetsEverySignalOfThatServiceAlone) {
  const auto service = Serve();
  const auto other = Serve("other");
  const ClientPtr client = Connected();
  EXPECT_EQ(SubscribeAll(client, 0), 0);
  EXPECT_TRUE(other->Emit("moved", "wrong service"));
  EXPECT_TRUE(service->Emit("moved", "1"));
  EXPECT_TRUE(service->Emit("finish/search_device", "2"));
  ASSERT_TRUE(TheReceiver(0).WaitFor(2));
  EXPECT_EQ(Payloads(0), (std::vector<std::string>{"1", "2"}));
  EXPECT_EQ(TheReceiver(0).All()[1].name, "finish/search_device");
}

TEST_F(BusSignal, OneAndAllForTheSameNameAreCalledOnceEach) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_EQ(SubscribeAll(client, 1), 0);
  for (const char* payload : {"1", "2", "3"}) EXPECT_TRUE(service->Emit("moved", payload));
  EXPECT_TRUE(service->Emit("last", "4"));
  ASSERT_TRUE(TheReceiver(1).WaitFor(4));
  EXPECT_EQ(Payloads(0), (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_EQ(Payloads(1), (std::vector<std::string>{"1", "2", "3", "4"}));
}

TEST_F(BusSignal, SecondSubscriptionReplacesTheCallback) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_EQ(Subscribe(client, "moved", 1), 0);
  EXPECT_TRUE(service->Emit("moved", "x"));
  ASSERT_TRUE(TheReceiver(1).WaitFor(1));
  EXPECT_EQ(SubscribeAll(client, 1), 0);
  EXPECT_EQ(SubscribeAll(client, 2), 0);
  EXPECT_TRUE(service->Emit("moved", "y"));
  ASSERT_TRUE(TheReceiver(2).WaitFor(1));
  ASSERT_TRUE(TheReceiver(1).WaitFor(2));
  EXPECT_EQ(Payloads(0), std::vector<std::string>{});
  EXPECT_EQ(Payloads(1), (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(Payloads(2), std::vector<std::string>{"y"});
}

TEST_F(BusSignal, UnsubscribedSignalIsNoLongerDelivered) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Unsubscribe(client, "moved"), -ENOENT);
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_EQ(Subscribe(client, "stopped", 1), 0);
  EXPECT_EQ(Unsubscribe(client, "moved"), 0);
  EXPECT_EQ(Unsubscribe(client, "moved"), -ENOENT);
  EXPECT_TRUE(service->Emit("moved"));
  EXPECT_TRUE(service->Emit("stopped"));
  ASSERT_TRUE(TheReceiver(1).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_TRUE(service->Emit("moved"));
  EXPECT_TRUE(TheReceiver(0).WaitFor(1));
}

TEST_F(BusSignal, UnsubscribingOneLeavesTheSubscriptionOfAll) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(SubscribeAll(client, 1), 0);
  EXPECT_EQ(Unsubscribe(client, "moved"), -ENOENT);
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_EQ(Unsubscribe(client, "moved"), 0);
  EXPECT_TRUE(service->Emit("moved", "x"));
  ASSERT_TRUE(TheReceiver(1).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
}

TEST_F(BusSignal, SubscribingAllLaterLeavesTheSubscriptionOfOne) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_EQ(SubscribeAll(client, 1), 0);
  EXPECT_EQ(Unsubscribe(client, "moved"), 0);
  EXPECT_EQ(Subscribe(client, "moved", 2), 0);
  EXPECT_TRUE(service->Emit("moved", "x"));
  ASSERT_TRUE(TheReceiver(1).WaitFor(1));
  ASSERT_TRUE(TheReceiver(2).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
}

TEST_F(BusSignal, CallbackMayUnsubscribeItself) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([](const Delivery& delivery) {
    EXPECT_EQ(bus_signal_unsubscribe(delivery.client, "camera", "moved"), 0);
  });
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_EQ(Subscribe(client, "stopped", 1), 0);
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(service->Emit("moved", "x"));
  EXPECT_TRUE(service->Emit("stopped"));
  ASSERT_TRUE(TheReceiver(1).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).Count(), 1U);
}

TEST_F(BusSignal, CallbackMaySubscribe) {
  Event subscribed;
  const auto service = Serve();
  const ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([&](const Delivery& delivery) {
    EXPECT_EQ(bus_signal_subscribe(delivery.client, "camera", "stopped", TheReceiver(1).callback), 0);
    subscribed.Set();
  });
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_TRUE(service->Emit("moved"));
  ASSERT_TRUE(subscribed.Wait());
  EXPECT_TRUE(service->Emit("stopped"));
  EXPECT_TRUE(TheReceiver(1).WaitFor(1));
}

TEST_F(BusSignal, CallbackMayCallTheServiceThatSignals) {
  CallResult inside{};
  Event done;
  const auto service = Serve();
  const ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([&](const Delivery& delivery) {
    inside = Call(delivery.client, "camera", "echo", "x");
    done.Set();
  });
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_TRUE(service->Emit("moved"));
  ASSERT_TRUE(done.Wait());
  EXPECT_EQ(inside.reply, "x");
}

TEST_F(BusSignal, NoCallbackBeginsAfterUnsubscribing) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::atomic<bool> stop{false};
  Thread emitter([&] {
    while (!stop) {
      service->Emit("moved");
      Breathe();
    }
  });
  for (int round = 0; round < 20 && !HasFailure(); ++round) {
    TheReceiver(0).Clear();
    EXPECT_EQ(Subscribe(client, "moved", 0), 0);
    EXPECT_TRUE(TheReceiver(0).WaitFor(2));
    EXPECT_EQ(Unsubscribe(client, "moved"), 0);
    const std::size_t begun = TheReceiver(0).Count();
    TheReceiver(1).Clear();
    EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "x", TheReceiver(1).callback), 0);
    EXPECT_TRUE(TheReceiver(1).WaitFor(1));
    // One more may have begun and not yet have been recorded.
    EXPECT_LE(TheReceiver(0).Count(), begun + 1);
  }
  stop = true;
  emitter.join();
}

TEST_F(BusSignal, SignalsOfOneServiceKeepTheirOrder) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  std::vector<std::string> expected;
  for (int i = 0; i < 300; ++i) {
    expected.push_back(std::to_string(i));
    EXPECT_TRUE(service->Emit("moved", expected.back()));
  }
  ASSERT_TRUE(TheReceiver(0).WaitFor(300));
  EXPECT_EQ(Payloads(0), expected);
}

TEST_F(BusSignal, SignalsKeepTheirOrderWhileCallsAreMade) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  std::vector<std::string> expected;
  for (int i = 0; i < 300; ++i) expected.push_back(std::to_string(i));
  Thread emitter([&] {
    for (const std::string& payload : expected) EXPECT_TRUE(service->Emit("moved", payload));
  });
  const Clock::time_point end = Clock::now() + std::chrono::seconds(20);
  while (TheReceiver(0).Count() < expected.size()) {
    ASSERT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
    ASSERT_LT(Clock::now(), end);
  }
  emitter.join();
  EXPECT_EQ(Payloads(0), expected);
}

TEST_F(BusSignal, SignalIsDeliveredWhileACallWaits) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  Thread waiting([&] { Call(client.get(), "camera", "slow", "", 20); });
  EXPECT_TRUE(service->WaitKept(1));
  EXPECT_TRUE(service->Emit("moved"));
  EXPECT_TRUE(TheReceiver(0).WaitFor(1, kAtOnce));
  service->Take()->Reply("");
  waiting.join();
}

TEST_F(BusSignal, EverySubscriberGetsTheSignal) {
  const auto service = Serve();
  std::vector<ClientPtr> clients;
  for (int i = 0; i < 20; ++i) {
    clients.push_back(Connected());
    EXPECT_EQ(Subscribe(clients.back(), "moved", 0), 0);
  }
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(service->Emit("moved", std::to_string(i)));
  ASSERT_TRUE(TheReceiver(0).WaitFor(100));
  for (const ClientPtr& client : clients) {
    std::vector<std::string> payloads;
    for (const Delivery& delivery : TheReceiver(0).All()) {
      if (delivery.client == client.get()) payloads.push_back(delivery.payload);
    }
    EXPECT_EQ(payloads, (std::vector<std::string>{"0", "1", "2", "3", "4"}));
  }
}

TEST_F(BusSignal, SubscriptionMayComeBeforeTheService) {
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  const auto service = Serve();
  EXPECT_TRUE(service->Emit("moved"));
  EXPECT_TRUE(TheReceiver(0).WaitFor(1));
}

TEST_F(BusSignal, SubscriptionsAreRestoredAfterTheBrokerRestarts) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_EQ(SubscribeAll(client, 1), 0);
  EXPECT_EQ(Subscribe(client, "ended", 2), 0);
  EXPECT_EQ(Unsubscribe(client, "ended"), 0);
  peer_->KillBroker();
  peer_->StartBroker();
  ASSERT_TRUE(WaitUntil([&] {
    service->Emit("ended");
    service->Emit("moved");
    return TheReceiver(0).Count() > 0;
  }));
  const std::size_t before = TheReceiver(0).Count();
  EXPECT_TRUE(service->Emit("moved", "once each"));
  ASSERT_TRUE(TheReceiver(0).WaitFor(before + 1));
  EXPECT_TRUE(WaitUntil([&] { return TheReceiver(1).All().back().payload == "once each"; }));
  EXPECT_EQ(TheReceiver(2).Count(), 0U);
}

TEST_F(BusSignal, SubscriptionsAreRememberedOverADisconnect) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Subscribe(client, "moved", 0), 0);
  EXPECT_EQ(Subscribe(client, "ended", 2), 0);
  EXPECT_EQ(SubscribeAll(client, 1), 0);
  EXPECT_EQ(bus_disconnect(client.get()), 0);
  EXPECT_EQ(Unsubscribe(client, "ended"), 0);
  EXPECT_EQ(Unsubscribe(client, "ended"), -ENOENT);
  EXPECT_TRUE(service->Emit("moved", "missed"));
  EXPECT_EQ(bus_connect(client.get(), peer_->address().c_str()), 0);
  EXPECT_TRUE(service->Emit("ended", "x"));
  EXPECT_TRUE(service->Emit("moved", "x"));
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  ASSERT_TRUE(TheReceiver(1).WaitFor(2));
  EXPECT_EQ(Payloads(0), std::vector<std::string>{"x"});
  EXPECT_EQ(TheReceiver(2).Count(), 0U);
}

}  // namespace
}  // namespace vptz_test
