// What others may do on the broker: watch everything, repeat what they saw,
// send nonsense.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <vector>

#include "contract/bundled_bus.h"
#include "support/broker.h"
#include "support/raw_mqtt.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BundledWire : public BundledBus {
 protected:
  // Remembers what it executes; answers everything but "silent".
  Handler Recorder() {
    return [this](bus_service*, bus_request* request) {
      const std::string method = bus_request_method(request);
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        executed_.push_back(method + ":" + Payload(request));
      }
      if (method == "silent") {
        bus_request_fail(request, -ECANCELED);
      } else {
        Reply(request, Payload(request));
      }
    };
  }
  std::vector<std::string> Executed() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return executed_;
  }

  Broker broker_;
  std::mutex mutex_;
  std::vector<std::string> executed_;
};

TEST_F(BundledWire, WatcherOfEverythingDoesNotHideAnAbsentService) {
  const RawMqtt watcher(broker_.socket_path(), "#");
  const ClientPtr client = ConnectedTo(broker_.address());
  for (int i = 0; i < 3; ++i) {
    EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "echo").code, -ESRCH); }), kAtOnce);
  }
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "", TheReceiver(0).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1, kAtOnce));
  EXPECT_EQ(TheReceiver(0).All()[0].length, -ESRCH);
}

TEST_F(BundledWire, WatcherOfEverythingDoesNotHideAServiceThatCame) {
  const RawMqtt watcher(broker_.socket_path(), "#");
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "echo").code, -ESRCH);
  const ServedName service("camera", broker_.address(), Recorder());
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "echo", "y").reply, "y");
}

TEST_F(BundledWire, RequestSeenTwiceIsExecutedOnce) {
  RawMqtt watcher(broker_.socket_path(), "#");
  const ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "move", "1").reply, "1");
  const RawMessage request = watcher.WaitFor("move");
  ASSERT_NE(request.correlation, "");
  for (int i = 0; i < 3; ++i) watcher.Send(request);
  watcher.WaitFor("move", 4);
  EXPECT_EQ(Call(client.get(), "camera", "move", "2").reply, "2");
  watcher.Send(request);
  EXPECT_EQ(Call(client.get(), "camera", "move", "3").reply, "3");
  EXPECT_EQ(Executed(), (std::vector<std::string>{"move:1", "move:2", "move:3"}));
}

TEST_F(BundledWire, RepeatedRequestsOfSeveralCallersAreToldApart) {
  RawMqtt watcher(broker_.socket_path(), "#");
  const ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr first = ConnectedTo(broker_.address());
  const ClientPtr second = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(first.get(), "camera", "from_first", "1").reply, "1");
  EXPECT_EQ(Call(second.get(), "camera", "from_second", "1").reply, "1");
  watcher.Send(watcher.WaitFor("from_first"));
  watcher.Send(watcher.WaitFor("from_second"));
  EXPECT_EQ(Call(second.get(), "camera", "from_second", "2").reply, "2");
  EXPECT_EQ(Call(first.get(), "camera", "from_first", "2").reply, "2");
  EXPECT_EQ(Executed(),
            (std::vector<std::string>{"from_first:1", "from_second:1", "from_second:2", "from_first:2"}));
}

TEST_F(BundledWire, RequestPastItsDeadlineIsDropped) {
  RawMqtt watcher(broker_.socket_path(), "#");
  const ClientPtr client = ConnectedTo(broker_.address());
  RawMessage request;
  {
    const ServedName first("camera", broker_.address(), Recorder());
    EXPECT_EQ(CallAsync(client.get(), "camera", "move", "1", TheReceiver(0).callback, 1), 0);
    request = watcher.WaitFor("move");
    ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  }
  const Clock::time_point sent = Clock::now();
  // A service that has never seen it executes it as long as it is due ...
  {
    const ServedName fresh("camera", broker_.address(), Recorder());
    watcher.Send(request);
    ASSERT_TRUE(WaitUntil([&] { return Executed().size() == 2; })) << "the deadline of a second came too early";
  }
  // ... and not afterwards.
  ASSERT_TRUE(WaitUntil([&] { return Clock::now() > sent + milliseconds(1100); }));
  const ServedName fresh("camera", broker_.address(), Recorder());
  watcher.Send(request);
  EXPECT_EQ(Call(client.get(), "camera", "move", "2").reply, "2");
  EXPECT_EQ(Executed(), (std::vector<std::string>{"move:1", "move:1", "move:2"}));
}

TEST_F(BundledWire, RequestWithoutIdentityIsDropped) {
  RawMqtt watcher(broker_.socket_path(), "#");
  const ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "move", "1").reply, "1");
  RawMessage request = watcher.WaitFor("move");
  const std::string correlation = request.correlation;
  for (const std::string& wrong : {std::string(), correlation.substr(1), correlation + "x"}) {
    request.correlation = wrong;
    watcher.Send(request);
  }
  EXPECT_EQ(Call(client.get(), "camera", "move", "2").reply, "2");
  EXPECT_EQ(Executed(), (std::vector<std::string>{"move:1", "move:2"}));
}

TEST_F(BundledWire, LateAndRepeatedRepliesAreDropped) {
  RawMqtt watcher(broker_.socket_path(), "#");
  const ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(CallAsync(client.get(), "camera", "move", "old", TheReceiver(0).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  const RawMessage reply = watcher.WaitFor("reply");
  ASSERT_NE(reply.correlation, "");
  for (int i = 0; i < 20; ++i) {
    watcher.Send(reply);
    EXPECT_EQ(Call(client.get(), "camera", "move", "new").reply, "new");
  }
  EXPECT_EQ(TheReceiver(0).Count(), 1U);
}

TEST_F(BundledWire, RepliesThatBelongToNothingAreDropped) {
  RawMqtt watcher(broker_.socket_path(), "#");
  const ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "move", "1").reply, "1");
  RawMessage reply = watcher.WaitFor("reply");
  const std::string correlation = reply.correlation;
  for (const std::string& wrong : {std::string(), correlation.substr(1), correlation + "x"}) {
    reply.correlation = wrong;
    watcher.Send(reply);
  }
  EXPECT_EQ(Call(client.get(), "camera", "move", "2").reply, "2");
}

// A signal that the broker was made to keep tells of something that is over.
TEST_F(BundledWire, KeptSignalsAreNoNews) {
  RawMqtt other(broker_.socket_path(), "");
  other.Send({"dorv/signal/camera/finish/search_device", "kept", "", ""}, true);
  const ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  const auto subscribe = [&] {
    EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "finish/search_device", TheReceiver(0).callback), 0);
    EXPECT_EQ(bus_signal_subscribe_all(client.get(), "camera", TheReceiver(1).callback), 0);
  };
  subscribe();
  EXPECT_EQ(bus_signal_unsubscribe(client.get(), "camera", "finish/search_device"), 0);
  subscribe();
  EXPECT_EQ(bus_connect(client.get(), broker_.address().c_str()), 0);
  EXPECT_EQ(Emit(service.get(), "finish/search_device", "new"), 0);
  for (const int index : {0, 1}) {
    ASSERT_TRUE(TheReceiver(index).WaitFor(1));
    EXPECT_EQ(TheReceiver(index).All()[0].payload, "new");
    EXPECT_EQ(TheReceiver(index).Count(), 1U);
  }
}

TEST_F(BundledWire, EveryConnectionHasAnIdOfItsOwn) {
  const ServedName service("camera", broker_.address(), Recorder());
  std::vector<ClientPtr> clients;
  for (int i = 0; i < 20; ++i) clients.push_back(ConnectedTo(broker_.address()));
  for (const ClientPtr& client : clients) EXPECT_EQ(Call(client.get(), "camera", "move", "x").reply, "x");
}

// A program that the application starts would keep the connection open when
// the application dies, and nobody would notice its death.
TEST_F(BundledWire, ConnectionsAreNotInherited) {
  const ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  for (int descriptor = 3; descriptor < 256; ++descriptor) {
    sockaddr_un peer{};
    socklen_t size = sizeof peer;
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) != 0) continue;
    if (peer.sun_path != broker_.socket_path()) continue;
    EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
  }
}

TEST_F(BundledWire, ClientsNameIsTheBeginningOfItsId) {
  const ClientPtr client(bus_client_new("desk-2"));
  EXPECT_EQ(bus_connect(client.get(), broker_.address().c_str()), 0);
  EXPECT_TRUE(WaitUntil([&] { return broker_.Log().find(" as desk-2") != std::string::npos; }));
}

}  // namespace
}  // namespace vptz_test
