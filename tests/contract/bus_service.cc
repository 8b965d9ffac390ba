// The service half: serving a name.
#include <dirent.h>

#include <atomic>
#include <cerrno>

#include "contract/served_name.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BusService : public BusContract {
 protected:
  static int New(const char* name, const std::string& address, bus_method_handler handler) {
    bus_service* service = reinterpret_cast<bus_service*>(&service);
    const int result = bus_service_new(name, address.c_str(), handler, nullptr, &service);
    EXPECT_EQ(service, nullptr);
    return result;
  }
  static void Ignore(bus_service*, bus_request* request, void*) { bus_request_fail(request, -EIO); }
};

TEST_F(BusService, ArgumentsAreChecked) {
  for (const char* name :
       {static_cast<const char*>(nullptr), "", "a/b", "+", "#", "a+b", "$camera", "a\nb", "\xff"}) {
    EXPECT_EQ(New(name, peer_->address(), &Ignore), -EINVAL);
  }
  EXPECT_EQ(New(std::string(256, 'n').c_str(), peer_->address(), &Ignore), -EINVAL);
  EXPECT_EQ(New("camera", peer_->address(), nullptr), -EINVAL);
  EXPECT_EQ(New("camera", "nonsense", &Ignore), -EINVAL);
  EXPECT_EQ(bus_service_new("camera", peer_->address().c_str(), &Ignore, nullptr, nullptr), -EINVAL);
  EXPECT_GE(bus_service_free(nullptr), 0);
}

TEST_F(BusService, FailureToConnectIsToldAndLeavesNothingBehind) {
  const auto threads = [] {
    int count = 0;
    DIR* folder = opendir("/proc/self/task");
    while (readdir(folder) != nullptr) ++count;
    closedir(folder);
    return count;
  };
  EXPECT_EQ(New("camera", "unix:/missing/bus.sock", &Ignore), -ENOENT);
  const int before = threads();
  peer_->KillBroker();
  EXPECT_EQ(New("camera", peer_->address(), &Ignore), -ECONNREFUSED);
  EXPECT_TRUE(WaitUntil([&] { return threads() <= before; }));
  peer_->StartBroker();
  const ClientPtr client = Connected();
  EXPECT_EQ(Call(client.get(), "camera", "echo").code, -ESRCH);
}

TEST_F(BusService, StoppedBrokerIsNotWaitedForLongerThanTheDefaultTimeOut) {
  peer_->StopBroker();
  EXPECT_LE(Took([&] { EXPECT_EQ(New("camera", peer_->address(), &Ignore), -ETIMEDOUT); }),
            kDefaultTimeout + kSlack);
  peer_->ContinueBroker();
}

TEST_F(BusService, CallsReachItAsSoonAsItIsThere) {
  for (int round = 0; round < 20; ++round) {
    const ClientPtr client = Connected();
    const ServedName service("camera", peer_->address(), &Echo);
    ASSERT_EQ(service.result(), 0);
    EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  }
}

TEST_F(BusService, NameThatSomebodyServesIsRefused) {
  ServedName service("camera", peer_->address(), &Echo);
  EXPECT_EQ(New("camera", peer_->address(), &Ignore), -EADDRINUSE);
  const ClientPtr client = Connected();
  EXPECT_EQ(Call(client.get(), "camera", "echo", "the first").reply, "the first");
  service.Free();
  // The client has heard then that the first one has gone.
  EXPECT_LT(Call(client.get(), "camera", "echo").code, 0);
  const ServedName next("camera", peer_->address(), &Echo);
  EXPECT_EQ(next.result(), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "the next").reply, "the next");
}

TEST_F(BusService, NameOfAKilledServiceIsTakenOver) {
  const auto killed = peer_->ServeApart("camera");
  EXPECT_EQ(New("camera", peer_->address(), &Ignore), -EADDRINUSE);
  killed->Kill();
  ASSERT_TRUE(WaitUntil([&] {
    const ServedName service("camera", peer_->address(), &Echo);
    if (service.result() != 0) return false;
    EXPECT_EQ(Call(Connected().get(), "camera", "echo", "x").reply, "x");
    return true;
  }));
}

TEST_F(BusService, NameOfAServiceThatDoesNotAnswerIsTakenOver) {
  const auto stopped = peer_->ServeApart("camera");
  stopped->Stop();
  const ServedName service("camera", peer_->address(), &Echo);
  EXPECT_EQ(service.result(), 0);
  EXPECT_EQ(Call(Connected().get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BusService, OneProcessServesSeveralNames) {
  const ServedName first("first", peer_->address(), [](bus_service*, bus_request* r) { Reply(r, "1"); });
  const ServedName second("second", peer_->address(), [](bus_service*, bus_request* r) { Reply(r, "2"); });
  const ClientPtr client = Connected();
  EXPECT_EQ(Call(client.get(), "first", "who").reply, "1");
  EXPECT_EQ(Call(client.get(), "second", "who").reply, "2");
}

TEST_F(BusService, ServesAgainAfterTheBrokerRestarts) {
  const ServedName service("camera", peer_->address(), &Echo);
  peer_->KillBroker();
  EXPECT_TRUE(WaitUntil([&] { return Emit(service.get(), "moved") == -ENOTCONN; }));
  peer_->StartBroker();
  const ClientPtr client = Connected();
  EXPECT_TRUE(WaitUntil([&] { return Call(client.get(), "camera", "echo", "x").reply == "x"; }));
  EXPECT_EQ(Emit(service.get(), "moved"), 0);
}

TEST_F(BusService, SignalForNobodyIsNoFailure) {
  const ServedName service("camera", peer_->address(), &Echo);
  EXPECT_EQ(Emit(service.get(), "moved", "x"), 0);
  // It is not kept for later either.
  const ClientPtr client = Connected();
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
  EXPECT_EQ(Emit(service.get(), "moved", "y"), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].payload, "y");
}

TEST_F(BusService, SignalsAreChecked) {
  const ServedName service("camera", peer_->address(), &Echo);
  for (const char* name : {"", "+", "#", "a#", "$moved", "a\nb", "\xff"})
    EXPECT_EQ(Emit(service.get(), name), -EINVAL);
  EXPECT_EQ(bus_service_emit(nullptr, "moved", "x", 1), -EINVAL);
  EXPECT_EQ(bus_service_emit(service.get(), nullptr, "x", 1), -EINVAL);
  EXPECT_EQ(bus_service_emit(service.get(), "moved", nullptr, 1), -EINVAL);
  EXPECT_EQ(bus_service_emit(service.get(), "moved", "x", -1), -EINVAL);
  EXPECT_EQ(bus_service_emit(service.get(), "moved", nullptr, 0), 0);
}

TEST_F(BusService, FreeingItFromItsHandlerIsRefused) {
  std::atomic<int> freed{0};
  const ServedName service("camera", peer_->address(), [&](bus_service* self, bus_request* request) {
    freed = bus_service_free(self);
    Reply(request, "still here");
  });
  const ClientPtr client = Connected();
  EXPECT_EQ(Call(client.get(), "camera", "free").reply, "still here");
  EXPECT_EQ(freed, -EDEADLK);
  EXPECT_EQ(Call(client.get(), "camera", "free").reply, "still here");
}

TEST_F(BusService, FreeingItWaitsForItsHandler) {
  Event entered;
  Event leave;
  std::atomic<bool> left{false};
  ServedName service("camera", peer_->address(), [&](bus_service*, bus_request* request) {
    entered.Set();
    leave.Wait();
    left = true;
    Reply(request, "");
  });
  const ClientPtr client = Connected();
  EXPECT_EQ(CallAsync(client.get(), "camera", "slow", "", TheReceiver(0).callback), 0);
  ASSERT_TRUE(entered.Wait());
  Thread freeing([&] {
    service.Free();
    EXPECT_TRUE(left);
  });
  leave.Set();
}

TEST_F(BusService, FreeingItFailsTheCallsThatWaitForIt) {
  std::vector<bus_request*> kept;
  Event received;
  ServedName service("camera", peer_->address(), [&](bus_service*, bus_request* request) {
    kept.push_back(request);
    received.Set();
  });
  const ClientPtr client = Connected();
  CallResult result{};
  Thread waiting([&] { result = Call(client.get(), "camera", "slow", "", 20); });
  EXPECT_TRUE(received.Wait());
  EXPECT_LT(Took([&] {
              service.Free();
              waiting.join();
            }),
            kAtOnce);
  EXPECT_EQ(result.code, -ECONNRESET);
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_STREQ(bus_request_method(kept[0]), "slow");
  EXPECT_LT(Reply(kept[0], "too late"), 0);
}

}  // namespace
}  // namespace vptz_test
