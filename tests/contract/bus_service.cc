// The bundled service half: serving a name.
#include <dirent.h>
#include <signal.h>

#include <atomic>
#include <cerrno>

#include "contract/bundled_bus.h"
#include "support/broker.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BundledService : public BundledBus {
 protected:
  static int New(const char* name, const std::string& address, bus_method_handler handler) {
    bus_service* service = reinterpret_cast<bus_service*>(&service);
    const int result = bus_service_new(name, address.c_str(), handler, nullptr, &service);
    EXPECT_EQ(service, nullptr);
    return result;
  }
  static void Ignore(bus_service*, bus_request* request, void*) { bus_request_fail(request, -EIO); }

  Process ServeApart() const { return Process({VPTZ_CONTRACT_BUS_SERVER, "camera", broker_.address()}); }
  static bool Serves(const Process& process) {
    return WaitUntil([&] { return !process.Output().empty(); });
  }

  Broker broker_;
};

TEST_F(BundledService, ArgumentsAreChecked) {
  for (const char* name :
       {static_cast<const char*>(nullptr), "", "a/b", "+", "#", "a+b", "$camera", "a\nb", "\xff"}) {
    EXPECT_EQ(New(name, broker_.address(), &Ignore), -EINVAL);
  }
  EXPECT_EQ(New(std::string(256, 'n').c_str(), broker_.address(), &Ignore), -EINVAL);
  EXPECT_EQ(New("camera", broker_.address(), nullptr), -EINVAL);
  EXPECT_EQ(New("camera", "nonsense", &Ignore), -EINVAL);
  EXPECT_EQ(bus_service_new("camera", broker_.address().c_str(), &Ignore, nullptr, nullptr), -EINVAL);
  EXPECT_GE(bus_service_free(nullptr), 0);
}

TEST_F(BundledService, FailureToConnectIsToldAndLeavesNothingBehind) {
  const auto threads = [] {
    int count = 0;
    DIR* folder = opendir("/proc/self/task");
    while (readdir(folder) != nullptr) ++count;
    closedir(folder);
    return count;
  };
  EXPECT_EQ(New("camera", "unix:" + broker_.folder() + "/missing", &Ignore), -ENOENT);
  const int before = threads();
  broker_.Kill();
  EXPECT_EQ(New("camera", broker_.address(), &Ignore), -ECONNREFUSED);
  EXPECT_TRUE(WaitUntil([&] { return threads() <= before; }));
  broker_.Start();
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "echo").code, -ESRCH);
}

TEST_F(BundledService, StoppedBrokerIsNotWaitedForLongerThanTheDefaultTimeOut) {
  broker_.Stop();
  EXPECT_LE(Took([&] { EXPECT_EQ(New("camera", broker_.address(), &Ignore), -ETIMEDOUT); }),
            kDefaultTimeout + kSlack);
  broker_.Continue();
}

TEST_F(BundledService, CallsReachItAsSoonAsItIsThere) {
  for (int round = 0; round < 20; ++round) {
    const ClientPtr client = ConnectedTo(broker_.address());
    const ServedName service("camera", broker_.address(), &Echo);
    ASSERT_EQ(service.result(), 0);
    EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  }
}

TEST_F(BundledService, NameThatSomebodyServesIsRefused) {
  ServedName service("camera", broker_.address(), &Echo);
  EXPECT_EQ(New("camera", broker_.address(), &Ignore), -EADDRINUSE);
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "echo", "the first").reply, "the first");
  service.Free();
  // The client has heard then that the first one has gone.
  EXPECT_LT(Call(client.get(), "camera", "echo").code, 0);
  const ServedName next("camera", broker_.address(), &Echo);
  EXPECT_EQ(next.result(), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "the next").reply, "the next");
}

TEST_F(BundledService, NameOfAKilledServiceIsTakenOver) {
  Process killed = ServeApart();
  ASSERT_TRUE(Serves(killed));
  EXPECT_EQ(New("camera", broker_.address(), &Ignore), -EADDRINUSE);
  killed.Signal(SIGKILL);
  killed.Wait();
  ASSERT_TRUE(WaitUntil([&] {
    const ServedName service("camera", broker_.address(), &Echo);
    if (service.result() != 0) return false;
    EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "echo", "x").reply, "x");
    return true;
  }));
}

TEST_F(BundledService, NameOfAServiceThatDoesNotAnswerIsTakenOver) {
  Process stopped = ServeApart();
  ASSERT_TRUE(Serves(stopped));
  stopped.Signal(SIGSTOP);
  const ServedName service("camera", broker_.address(), &Echo);
  EXPECT_EQ(service.result(), 0);
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BundledService, OneProcessServesSeveralNames) {
  const ServedName first("first", broker_.address(), [](bus_service*, bus_request* r) { Reply(r, "1"); });
  const ServedName second("second", broker_.address(), [](bus_service*, bus_request* r) { Reply(r, "2"); });
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "first", "who").reply, "1");
  EXPECT_EQ(Call(client.get(), "second", "who").reply, "2");
}

TEST_F(BundledService, ServesAgainAfterTheBrokerRestarts) {
  const ServedName service("camera", broker_.address(), &Echo);
  broker_.Kill();
  EXPECT_TRUE(WaitUntil([&] { return Emit(service.get(), "moved") == -ENOTCONN; }));
  broker_.Start();
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_TRUE(WaitUntil([&] { return Call(client.get(), "camera", "echo", "x").reply == "x"; }));
  EXPECT_EQ(Emit(service.get(), "moved"), 0);
}

TEST_F(BundledService, SignalForNobodyIsNoFailure) {
  const ServedName service("camera", broker_.address(), &Echo);
  EXPECT_EQ(Emit(service.get(), "moved", "x"), 0);
  // It is not kept for later either.
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
  EXPECT_EQ(Emit(service.get(), "moved", "y"), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].payload, "y");
}

TEST_F(BundledService, SignalsAreChecked) {
  const ServedName service("camera", broker_.address(), &Echo);
  for (const char* name : {"", "+", "#", "a#", "$moved", "a\nb", "\xff"})
    EXPECT_EQ(Emit(service.get(), name), -EINVAL);
  EXPECT_EQ(bus_service_emit(nullptr, "moved", "x", 1), -EINVAL);
  EXPECT_EQ(bus_service_emit(service.get(), nullptr, "x", 1), -EINVAL);
  EXPECT_EQ(bus_service_emit(service.get(), "moved", nullptr, 1), -EINVAL);
  EXPECT_EQ(bus_service_emit(service.get(), "moved", "x", -1), -EINVAL);
  EXPECT_EQ(bus_service_emit(service.get(), "moved", nullptr, 0), 0);
}

TEST_F(BundledService, FreeingItFromItsHandlerIsRefused) {
  std::atomic<int> freed{0};
  const ServedName service("camera", broker_.address(), [&](bus_service* self, bus_request* request) {
    freed = bus_service_free(self);
    Reply(request, "still here");
  });
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "free").reply, "still here");
  EXPECT_EQ(freed, -EDEADLK);
  EXPECT_EQ(Call(client.get(), "camera", "free").reply, "still here");
}

TEST_F(BundledService, FreeingItWaitsForItsHandler) {
  Event entered;
  Event leave;
  std::atomic<bool> left{false};
  ServedName service("camera", broker_.address(), [&](bus_service*, bus_request* request) {
    entered.Set();
    leave.Wait();
    left = true;
    Reply(request, "");
  });
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(CallAsync(client.get(), "camera", "slow", "", TheReceiver(0).callback), 0);
  ASSERT_TRUE(entered.Wait());
  Thread freeing([&] {
    service.Free();
    EXPECT_TRUE(left);
  });
  leave.Set();
}

TEST_F(BundledService, FreeingItFailsTheCallsThatWaitForIt) {
  std::vector<bus_request*> kept;
  Event received;
  ServedName service("camera", broker_.address(), [&](bus_service*, bus_request* request) {
    kept.push_back(request);
    received.Set();
  });
  const ClientPtr client = ConnectedTo(broker_.address());
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
