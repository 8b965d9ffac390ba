#include <dirent.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <vector>

#include "contract/bus_fixture.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BusLifetime : public BusContract {
 protected:
  static int Entries(const char* folder) {
    int count = 0;
    DIR* stream = opendir(folder);
    while (readdir(stream) != nullptr) ++count;
    closedir(stream);
    return count;
  }
};

TEST_F(BusLifetime, ClientsComeAndGoWithoutConnecting) {
  for (int i = 0; i < 100; ++i) EXPECT_NE(NewClient(), nullptr);
}

TEST_F(BusLifetime, ManyClientsLiveAtOnce) {
  const auto service = Serve();
  std::vector<ClientPtr> clients;
  for (int i = 0; i < 30; ++i) clients.push_back(Connected());
  for (const ClientPtr& client : clients) EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BusLifetime, FreedClientsLeaveNoThreadsAndDescriptorsBehind) {
  const auto service = Serve();
  const auto use = [&] {
    const ClientPtr client = Connected();
    EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
    EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  };
  use();
  const int descriptors = Entries("/proc/self/fd");
  const int threads = Entries("/proc/self/task");
  for (int i = 0; i < 10; ++i) use();
  EXPECT_TRUE(WaitUntil([&] { return Entries("/proc/self/fd") <= descriptors; }));
  EXPECT_TRUE(WaitUntil([&] { return Entries("/proc/self/task") <= threads; }));
}

TEST_F(BusLifetime, FreeingAClientFailsTheCallsThatWaitInIt) {
  const auto service = Serve();
  ClientPtr client = Connected();
  std::vector<Thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back(
        [c = client.get()] { EXPECT_EQ(Call(c, "camera", "silent", "", 20).code, -ECONNRESET); });
  }
  EXPECT_EQ(CallAsync(client.get(), "camera", "silent", "", TheReceiver(0).callback, 20), 0);
  ASSERT_TRUE(service->WaitKept(4));
  EXPECT_LT(Took([&] {
              client.reset();
              for (Thread& thread : threads) thread.join();
            }),
            kAtOnce);
}

TEST_F(BusLifetime, FreeingAClientWhoseBrokerIsStoppedDoesNotHang) {
  const auto service = Serve();
  ClientPtr client = Connected();
  Thread waiting([c = client.get()] { EXPECT_EQ(Call(c, "camera", "silent", "", 20).code, -ECONNRESET); });
  ASSERT_TRUE(service->WaitKept(1));
  peer_->StopBroker();
  EXPECT_LT(Took([&] {
              client.reset();
              waiting.join();
            }),
            kAtOnce);
  peer_->ContinueBroker();
}

TEST_F(BusLifetime, DisconnectingEndsTheConnectionThatIsBeingMade) {
  peer_->StopBroker();
  const ClientPtr client = NewClient();
  Thread connecting([&] { EXPECT_EQ(bus_connect(client.get(), peer_->address().c_str()), -ECONNRESET); });
  EXPECT_LT(Took([&] {
              // Refused until the other thread has begun to connect.
              EXPECT_TRUE(WaitUntil([&] { return bus_disconnect(client.get()) == 0; }));
              connecting.join();
            }),
            kAtOnce);
  peer_->ContinueBroker();
}

TEST_F(BusLifetime, FreeingAClientEndsTheConnectionThatIsBeingMade) {
  peer_->StopBroker();
  const int threads = Entries("/proc/self/task");
  ClientPtr client = NewClient();
  Thread connecting([&, c = client.get()] { EXPECT_LT(bus_connect(c, peer_->address().c_str()), 0); });
  // The call has begun when the client has a thread of its own.
  ASSERT_TRUE(WaitUntil([&] { return Entries("/proc/self/task") >= threads + 2; }));
  EXPECT_LT(Took([&] {
              client.reset();
              connecting.join();
            }),
            kAtOnce);
  peer_->ContinueBroker();
}

TEST_F(BusLifetime, EveryFunctionMayBeCalledFromEveryThreadAtAnyTime) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  const std::string address = peer_->address();
  const std::vector<std::function<int()>> actions = {
      [&] { return bus_connect(client.get(), address.c_str()); },
      [&] { return bus_disconnect(client.get()); },
      [&] { return Call(client.get(), "camera", "echo", "x").code; },
      [&] { return Call(client.get(), "nobody", "echo", "x").code; },
      [&] { return CallAsync(client.get(), "camera", "echo", "x", TheReceiver(0).callback); },
      [&] { return bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(1).callback); },
      [&] { return bus_signal_subscribe_all(client.get(), "camera", TheReceiver(1).callback); },
      [&] { return bus_signal_unsubscribe(client.get(), "camera", "moved"); },
      [&] { return service->Emit("moved") ? 0 : -ENOTCONN; },
  };
  std::vector<Thread> threads;
  for (std::size_t number = 0; number < 4; ++number) {
    threads.emplace_back([&actions, number] {
      // Few enough that the broker's queue of new connections does not overflow;
      // each thread takes the actions in another order.
      for (std::size_t i = 0; i < 40; ++i) {
        const int result = actions[(i * (2 * number + 1) + number * i / 7) % actions.size()]();
        EXPECT_THAT(result, testing::AnyOf(testing::Ge(0), -ENOTCONN, -ECONNRESET, -ESRCH, -ENOENT));
      }
    });
  }
  for (Thread& thread : threads) thread.join();
  EXPECT_EQ(bus_connect(client.get(), address.c_str()), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BusLifetime, NoCallbackBeginsAfterFreeing) {
  std::atomic<bool> stop{false};
  const auto service = Serve();
  Thread emitter([&] {
    while (!stop) {
      service->Emit("moved");
      Breathe();
    }
  });
  for (int round = 0; round < 10 && !HasFailure(); ++round) {
    ClientPtr client = Connected();
    TheReceiver(0).Clear();
    EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
    EXPECT_TRUE(TheReceiver(0).WaitFor(2));
    client.reset();
    const std::size_t begun = TheReceiver(0).Count();
    // Another client's signals tell that time has passed.
    const ClientPtr other = Connected();
    TheReceiver(1).Clear();
    EXPECT_EQ(bus_signal_subscribe(other.get(), "camera", "moved", TheReceiver(1).callback), 0);
    EXPECT_TRUE(TheReceiver(1).WaitFor(2));
    EXPECT_EQ(TheReceiver(0).Count(), begun);
  }
  stop = true;
}

TEST_F(BusLifetime, FreeingWaitsForACallback) {
  Event entered;
  Event leave;
  std::atomic<bool> left{false};
  const auto service = Serve();
  ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([&](const Delivery&) {
    entered.Set();
    leave.Wait();
    left = true;
  });
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "x", TheReceiver(0).callback), 0);
  ASSERT_TRUE(entered.Wait());
  Thread freeing([&] { client.reset(); });
  leave.Set();
  freeing.join();
  EXPECT_TRUE(left);
}

TEST_F(BusLifetime, FreeingWaitsAtMostASecondForACallbackWhichMayUseItsClient) {
  struct Shared {
    Event entered;
    Event leave;
    Event left;
    CallResult inside{};
  };
  // Nobody waits for the end of this callback, so it holds what it uses.
  const auto shared = std::make_shared<Shared>();
  const auto service = Serve();
  ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([shared](const Delivery& delivery) {
    shared->entered.Set();
    shared->leave.Wait();
    shared->inside = Call(delivery.client, "camera", "echo", "x", 1);
    EXPECT_LT(bus_signal_subscribe(delivery.client, "camera", "moved", TheReceiver(1).callback), 0);
    bus_disconnect(delivery.client);
    shared->left.Set();
  });
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "x", TheReceiver(0).callback), 0);
  ASSERT_TRUE(shared->entered.Wait());
  EXPECT_LE(Took([&] { client.reset(); }), milliseconds(1000) + kSlack);
  shared->leave.Set();
  ASSERT_TRUE(shared->left.Wait());
  EXPECT_LT(shared->inside.code, 0);
}

TEST_F(BusLifetime, CallbackOfASignalMayFreeItsClient) {
  const auto service = Serve();
  for (int round = 0; round < 10; ++round) {
    // Nobody waits for this callback, so it holds what it uses.
    const auto freed = std::make_shared<Event>();
    bus_client* client = Connected().release();
    TheReceiver(0).OnDelivery([freed](const Delivery& delivery) {
      bus_client_free(delivery.client);
      freed->Set();
    });
    ASSERT_EQ(bus_signal_subscribe(client, "camera", "moved", TheReceiver(0).callback), 0);
    EXPECT_TRUE(service->Emit("moved"));
    ASSERT_TRUE(freed->Wait());
    TheReceiver(0).Clear();
  }
}

TEST_F(BusLifetime, CallbackOfAnAnswerMayFreeItsClientWhileOthersWait) {
  const auto freed = std::make_shared<Event>();
  const auto service = Serve();
  bus_client* client = Connected().release();
  TheReceiver(0).OnDelivery([freed](const Delivery& delivery) {
    bus_client_free(delivery.client);
    freed->Set();
  });
  Thread waiting([&] { EXPECT_EQ(Call(client, "camera", "silent", "", 20).code, -ECONNRESET); });
  ASSERT_TRUE(service->WaitKept(1));
  ASSERT_EQ(CallAsync(client, "camera", "echo", "x", TheReceiver(0).callback), 0);
  EXPECT_LT(Took([&] {
              EXPECT_TRUE(freed->Wait());
              waiting.join();
            }),
            kAtOnce);
}

TEST_F(BusLifetime, CallbackMayDisconnectAndConnectAgain) {
  Event done;
  int disconnected = -1;
  int connected = -1;
  const auto service = Serve();
  const ClientPtr client = Connected();
  TheReceiver(0).OnDelivery([&](const Delivery& delivery) {
    disconnected = bus_disconnect(delivery.client);
    connected = bus_connect(delivery.client, peer_->address().c_str());
    done.Set();
  });
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
  EXPECT_TRUE(service->Emit("moved"));
  ASSERT_TRUE(done.Wait());
  EXPECT_EQ(disconnected, 0);
  EXPECT_EQ(connected, 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BusLifetime, ClientsOutliveTheCleanup) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(bus_init(), 0);
  bus_cleanup();
  bus_cleanup();
  bus_cleanup();
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  EXPECT_EQ(bus_init(), 0);
  EXPECT_EQ(Call(Connected().get(), "camera", "echo", "x").reply, "x");
}

}  // namespace
}  // namespace vptz_test
