#include <atomic>
#include <cerrno>
#include <vector>

#include "contract/bus_fixture.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BusLoss : public BusContract {
 protected:
  // Calls until the service answers again.
  static bool Recovers(bus_client* client, const std::string& service = "camera") {
    return WaitUntil([&] { return Call(client, service, "echo", "back").reply == "back"; });
  }
};

TEST_F(BusLoss, NothingIsSentBeforeConnecting) {
  const auto service = Serve();
  const ClientPtr client = NewClient();
  EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "keep").code, -ENOTCONN); }), kAtOnce);
  EXPECT_EQ(CallAsync(client.get(), "camera", "keep", "", TheReceiver(0).callback), -ENOTCONN);
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), -ENOTCONN);
  EXPECT_EQ(bus_signal_subscribe_all(client.get(), "camera", TheReceiver(0).callback), -ENOTCONN);
  EXPECT_EQ(bus_disconnect(client.get()), -ENOTCONN);

  EXPECT_EQ(bus_connect(client.get(), peer_->address().c_str()), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  EXPECT_FALSE(service->WaitKept(1, milliseconds(0)));
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
}

TEST_F(BusLoss, NothingIsSentAfterDisconnecting) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(bus_disconnect(client.get()), 0);
  EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "keep").code, -ENOTCONN); }), kAtOnce);
  EXPECT_EQ(CallAsync(client.get(), "camera", "keep", "", TheReceiver(0).callback), -ENOTCONN);
  EXPECT_EQ(bus_disconnect(client.get()), -ENOTCONN);

  EXPECT_EQ(bus_connect(client.get(), peer_->address().c_str()), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  EXPECT_FALSE(service->WaitKept(1, milliseconds(0)));
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
}

TEST_F(BusLoss, ConnectingAgainReplacesTheConnection) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(bus_connect(client.get(), peer_->address().c_str()), 0);
    EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  }
}

TEST_F(BusLoss, CallsAfterTheBrokerIsKilledFailWithoutWaiting) {
  const auto service = Serve();
  // Of so many clients some call before they have noticed the loss: every
  // second one for the first time.
  std::vector<ClientPtr> clients;
  for (int i = 0; i < 40; ++i) {
    clients.push_back(Connected());
    if (i % 2 == 0) {
      EXPECT_EQ(Call(clients.back().get(), "camera", "echo", "x").reply, "x");
    }
  }
  peer_->KillBroker();
  EXPECT_LT(Took([&] {
              for (const ClientPtr& client : clients) {
                EXPECT_THAT(Call(client.get(), "camera", "echo").code, testing::AnyOf(-ENOTCONN, -ECONNRESET));
                EXPECT_EQ(Call(client.get(), "camera", "echo").code, -ENOTCONN);
                EXPECT_EQ(CallAsync(client.get(), "camera", "keep", "", TheReceiver(0).callback), -ENOTCONN);
              }
            }),
            kAtOnce);
}

TEST_F(BusLoss, AsynchronousCallThatMeetsTheLossIsToldOfItOneWay) {
  const auto service = Serve();
  // Of so many clients some call before they have noticed the loss.
  std::vector<ClientPtr> clients;
  for (int i = 0; i < 40; ++i) {
    clients.push_back(Connected());
    EXPECT_EQ(Call(clients.back().get(), "camera", "echo", "x").reply, "x");
  }
  peer_->KillBroker();
  std::size_t sent = 0;
  for (const ClientPtr& client : clients) {
    const int result = CallAsync(client.get(), "camera", "echo", "y", TheReceiver(0).callback, 2);
    EXPECT_THAT(result, testing::AnyOf(0, -ENOTCONN, -ECONNRESET));
    if (result == 0) ++sent;
  }
  EXPECT_TRUE(TheReceiver(0).WaitFor(sent, kAtOnce));
  // Freeing a client ends what is still on its way to a callback.
  clients.clear();
  EXPECT_EQ(TheReceiver(0).Count(), sent);
}

TEST_F(BusLoss, WaitingCallsFailAtOnceWhenTheBrokerIsKilled) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::vector<Thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back(
        [&client] { EXPECT_EQ(Call(client.get(), "camera", "silent", "", 20).code, -ECONNRESET); });
  }
  EXPECT_EQ(CallAsync(client.get(), "camera", "silent", "", TheReceiver(0).callback, 20), 0);
  ASSERT_TRUE(service->WaitKept(4));
  EXPECT_LT(Took([&] {
              peer_->KillBroker();
              for (Thread& thread : threads) thread.join();
              EXPECT_TRUE(TheReceiver(0).WaitFor(1));
            }),
            kAtOnce);
  EXPECT_EQ(TheReceiver(0).All()[0].length, -ECONNRESET);
}

TEST_F(BusLoss, WaitingCallsFailAtOnceWhenTheServiceIsKilled) {
  const auto service = peer_->ServeApart("camera");
  const ClientPtr client = Connected();
  std::vector<Thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back(
        [&client] { EXPECT_EQ(Call(client.get(), "camera", "silent", "", 20).code, -ECONNRESET); });
  }
  EXPECT_EQ(CallAsync(client.get(), "camera", "silent", "", TheReceiver(0).callback, 20), 0);
  ASSERT_TRUE(WaitUntil([&] { return service->Received().size() == 4; }));
  EXPECT_LT(Took([&] {
              service->Kill();
              for (Thread& thread : threads) thread.join();
              EXPECT_TRUE(TheReceiver(0).WaitFor(1));
            }),
            kAtOnce);
  EXPECT_EQ(TheReceiver(0).All()[0].length, -ECONNRESET);
  EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "echo").code, -ESRCH); }), kAtOnce);
}

TEST_F(BusLoss, LossOfOneServiceLeavesCallsOfAnotherAlone) {
  const auto killed = peer_->ServeApart("killed");
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Call(client.get(), "killed", "echo", "x").reply, "x");
  CallResult result{};
  Thread waiting([&] { result = Call(client.get(), "camera", "slow", "", 20); });
  EXPECT_TRUE(service->WaitKept(1));
  killed->Kill();
  EXPECT_TRUE(WaitUntil([&] { return Call(client.get(), "killed", "echo").code == -ESRCH; }));
  service->Take()->Reply("unharmed");
  waiting.join();
  EXPECT_EQ(result.reply, "unharmed");
}

TEST_F(BusLoss, WaitingCallsFailAtOnceWhenTheClientDisconnects) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  Thread waiting([&] { EXPECT_EQ(Call(client.get(), "camera", "silent", "", 20).code, -ECONNRESET); });
  EXPECT_EQ(CallAsync(client.get(), "camera", "silent", "", TheReceiver(0).callback, 20), 0);
  ASSERT_TRUE(service->WaitKept(2));
  EXPECT_LT(Took([&] {
              EXPECT_EQ(bus_disconnect(client.get()), 0);
              waiting.join();
              EXPECT_TRUE(TheReceiver(0).WaitFor(1));
            }),
            kAtOnce);
  EXPECT_EQ(TheReceiver(0).All()[0].length, -ECONNRESET);
}

TEST_F(BusLoss, CallsSucceedAgainWhenTheBrokerIsBack) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  for (int round = 0; round < 2; ++round) {
    peer_->KillBroker();
    EXPECT_LT(Call(client.get(), "camera", "echo").code, 0);
    peer_->StartBroker();
    EXPECT_TRUE(Recovers(client.get()));
  }
}

TEST_F(BusLoss, CallsSucceedAgainWhenTheBrokerWasOnlyStopped) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  peer_->StopBroker();
  EXPECT_EQ(Call(client.get(), "camera", "echo", "lost", 1).code, -ETIMEDOUT);
  peer_->ContinueBroker();
  EXPECT_TRUE(Recovers(client.get()));
}

TEST_F(BusLoss, ClientThatCouldNotConnectKeepsTrying) {
  peer_->KillBroker();
  const ClientPtr client = NewClient();
  EXPECT_EQ(bus_connect(client.get(), peer_->address().c_str()), -ECONNREFUSED);
  EXPECT_EQ(Call(client.get(), "camera", "echo").code, -ENOTCONN);
  peer_->StartBroker();
  const auto service = Serve();
  EXPECT_TRUE(Recovers(client.get()));
}

TEST_F(BusLoss, DisconnectingEndsTheAttempts) {
  peer_->KillBroker();
  const ClientPtr client = NewClient();
  EXPECT_EQ(bus_connect(client.get(), peer_->address().c_str()), -ECONNREFUSED);
  EXPECT_EQ(bus_disconnect(client.get()), 0);
  EXPECT_EQ(bus_disconnect(client.get()), -ENOTCONN);
  peer_->StartBroker();
  const auto service = Serve();
  // Another client that tries each second marks the time.
  const ClientPtr other = Connected();
  peer_->KillBroker();
  peer_->StartBroker();
  EXPECT_TRUE(Recovers(other.get()));
  EXPECT_EQ(Call(client.get(), "camera", "echo").code, -ENOTCONN);
}

TEST_F(BusLoss, CallsInTheMiddleOfBrokerRestartsEndInTimeAndKeepTheirReplies) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::atomic<bool> stop{false};
  std::atomic<int> answered{0};
  std::vector<Thread> threads;
  for (int number = 0; number < 3; ++number) {
    threads.emplace_back([&, number] {
      for (int i = 0; !stop; ++i) {
        const std::string text = std::to_string(number) + "/" + std::to_string(i);
        CallResult result{};
        EXPECT_LE(Took([&] { result = Call(client.get(), "camera", "echo", text, 1); }),
                  milliseconds(1000) + kSlack);
        if (result.code < 0) {
          EXPECT_THAT(result.code, testing::AnyOf(-ENOTCONN, -ECONNRESET, -ESRCH));
          Breathe();
          continue;
        }
        EXPECT_EQ(result.reply, text);
        ++answered;
      }
    });
  }
  for (int round = 0; round < 2; ++round) {
    const int before = answered;
    EXPECT_TRUE(WaitUntil([&] { return answered > before + 50; }));
    peer_->KillBroker();
    peer_->StartBroker();
  }
  const int before = answered;
  EXPECT_TRUE(WaitUntil([&] { return answered > before + 50; }));
  stop = true;
  for (Thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace vptz_test
