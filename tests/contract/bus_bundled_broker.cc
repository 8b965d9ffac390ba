// Brokers that are reached over TCP, or that refuse things.
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <future>
#include <list>
#include <vector>

#include "contract/bundled_bus.h"
#include "contract/tcp_broker.h"
#include "support/broker.h"
#include "support/canary.h"
#include "support/passwords.h"
#include "support/temp_dir.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class BundledBroker : public BundledBus {
 protected:
  ~BundledBroker() override { unsetenv("DORV_BUS_SETTINGS"); }

  std::string Write(const std::string& name, const std::string& text) const {
    std::string path = folder_.path() + "/" + name;
    std::ofstream(path) << text;
    return path;
  }
  void UseSettings(const std::string& text) const {
    setenv("DORV_BUS_SETTINGS", Write("settings", text).c_str(), 1);
  }
  // Lines that make a broker ask for the password of the user "desk".
  std::vector<std::string> PasswordLines() const {
    const std::string path = folder_.path() + "/passwords";
    WritePasswords(path, {{"desk", kCanary}});
    return {"allow_anonymous false", "password_file " + path};
  }
  static int ConnectTo(const std::string& address) {
    const ClientPtr client(bus_client_new("contract"));
    return bus_connect(client.get(), address.c_str());
  }

  TempDir folder_;
};

TEST_F(BundledBroker, IsReachedOverTcp) {
  const TcpBroker broker;
  const ServedName service("camera", broker.address(), &Echo);
  ASSERT_EQ(service.result(), 0);
  const ClientPtr client = ConnectedTo(broker.address());
  EXPECT_EQ(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", std::string(65536, 'x')).reply, std::string(65536, 'x'));
  EXPECT_EQ(Emit(service.get(), "moved"), 0);
  EXPECT_TRUE(TheReceiver(0).WaitFor(1));
}

TEST_F(BundledBroker, CallsOverTcpAreNotDelayedByTheNetworkStack) {
  const TcpBroker broker;
  const ServedName service("camera", broker.address(), &Echo);
  const ClientPtr client = ConnectedTo(broker.address());
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  // With delayed acknowledgements each of them would take 40 ms.
  EXPECT_LT(Took([&] {
              for (int i = 0; i < 50; ++i) {
                EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
              }
            }),
            milliseconds(1500));
}

TEST_F(BundledBroker, NobodyListensOnAPort) {
  EXPECT_EQ(ConnectTo("mqtt://127.0.0.1:" + std::to_string(FreePort())), -ECONNREFUSED);
}

TEST_F(BundledBroker, UnknownHostIsToldInTime) {
  int result = 0;
  EXPECT_LE(Took([&] {
              const ClientPtr client(bus_client_new("contract"));
              result = bus_connect(client.get(), "mqtt://no-such-host.invalid");
              EXPECT_EQ(bus_disconnect(client.get()), 0);
            }),
            kDefaultTimeout + std::chrono::seconds(1) + kSlack);
  EXPECT_THAT(result, testing::AnyOf(-ENOENT, -ETIMEDOUT));
}

TEST_F(BundledBroker, PasswordComesFromTheSettingsFile) {
  const Broker broker(PasswordLines());
  UseSettings("[broker]\nuser=desk\npassword=" VPTZ_TEST_CANARY "\n");
  const ServedName service("camera", broker.address(), &Echo);
  EXPECT_EQ(service.result(), 0);
  const ClientPtr client = ConnectedTo(broker.address());
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BundledBroker, PasswordMayLieInAFileOfItsOwn) {
  const Broker broker(PasswordLines());
  UseSettings("[broker]\nuser=desk\npassword_file=" + Write("password", VPTZ_TEST_CANARY "\n") + "\n");
  EXPECT_EQ(ConnectTo(broker.address()), 0);
}

TEST_F(BundledBroker, WrongPasswordIsRefusedAndNotTheTimeOut) {
  const Broker broker(PasswordLines());
  EXPECT_LT(Took([&] { EXPECT_EQ(ConnectTo(broker.address()), -EKEYREJECTED); }), kAtOnce);
  UseSettings("[broker]\nuser=desk\npassword=another-" VPTZ_TEST_CANARY "\n");
  EXPECT_LT(Took([&] { EXPECT_EQ(ConnectTo(broker.address()), -EKEYREJECTED); }), kAtOnce);
  const ServedName service("camera", broker.address(), &Echo);
  EXPECT_EQ(service.result(), -EKEYREJECTED);
  EXPECT_EQ(service.get(), nullptr);
}

TEST_F(BundledBroker, SettingsThatCannotBeReadAreRefused) {
  const Broker broker;
  setenv("DORV_BUS_SETTINGS", (folder_.path() + "/missing").c_str(), 1);
  EXPECT_EQ(ConnectTo(broker.address()), -EINVAL);
  UseSettings("this is no key file");
  EXPECT_EQ(ConnectTo(broker.address()), -EINVAL);
  UseSettings("[broker]\nuser=desk\npassword_file=/nonexistent/password\n");
  EXPECT_EQ(ConnectTo(broker.address()), -EINVAL);
}

TEST_F(BundledBroker, ClientThatMayNotSendIsTold) {
  const Broker broker({"acl_file " + Write("acl", "topic read #\n")});
  const ClientPtr client = ConnectedTo(broker.address());
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").code, -EACCES);
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "x", TheReceiver(0).callback), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].length, -EACCES);
}

TEST_F(BundledBroker, RulesOfTheReadmeSuffice) {
  const Broker broker({"acl_file " + Write("acl",
                                           "topic write dorv/call/#\n"
                                           "pattern read dorv/reply/%c\n"
                                           "topic read dorv/signal/#\n"
                                           "topic read dorv/call/camera/#\n"
                                           "topic write dorv/reply/#\n"
                                           "topic write dorv/signal/camera/#\n"
                                           "topic readwrite dorv/presence/#\n")});
  const ServedName service("camera", broker.address(), &Echo);
  ASSERT_EQ(service.result(), 0);
  const ClientPtr client = ConnectedTo(broker.address());
  EXPECT_EQ(bus_signal_subscribe_all(client.get(), "camera", TheReceiver(0).callback), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  EXPECT_EQ(Emit(service.get(), "moved"), 0);
  EXPECT_TRUE(TheReceiver(0).WaitFor(1));
}

TEST_F(BundledBroker, RequestThatTheBrokerFindsTooLargeIsRefused) {
  for (const char* line : {"max_packet_size 4096", "message_size_limit 4096"}) {
    const Broker broker({line});
    const ServedName service("camera", broker.address(), &Echo);
    const ClientPtr client = ConnectedTo(broker.address());
    for (int round = 0; round < 3; ++round) {
      EXPECT_LT(Took([&] {
                  EXPECT_EQ(Call(client.get(), "camera", "echo", std::string(8192, 'x'), 2).code, -EMSGSIZE)
                      << line << ", round " << round;
                }),
                kAtOnce);
      EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
    }
  }
}

TEST_F(BundledBroker, ReplyThatTheBrokerFindsTooLargeIsToldToBothSides) {
  const Broker broker({"max_packet_size 4096"});
  int replied = 0;
  const ServedName service("camera", broker.address(), [&](bus_service*, bus_request* request) {
    const std::string method = bus_request_method(request);
    const int result = Reply(request, std::string(method == "large" ? 8192 : 8, 'x'));
    if (method == "large") replied = result;
  });
  const ClientPtr client = ConnectedTo(broker.address());
  EXPECT_LT(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "large").code, -EMSGSIZE); }), kAtOnce);
  EXPECT_EQ(Call(client.get(), "camera", "small").reply, "xxxxxxxx");
  EXPECT_EQ(replied, -EMSGSIZE);
}

sockaddr_un UnixAddress(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

// Connects to a stopped broker until it has room for no more.
std::list<Descriptor> FillQueue(const std::string& path) {
  const sockaddr_un address = UnixAddress(path);
  std::list<Descriptor> sockets;
  int result = 0;
  while (result == 0) {
    sockets.emplace_back(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    result = connect(sockets.back().get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  EXPECT_EQ(errno, EAGAIN);
  return sockets;
}

TEST_F(BundledBroker, QueueThatIsFullForAMomentIsWaitedFor) {
  Broker broker;
  broker.Stop();
  const std::list<Descriptor> queue = FillQueue(broker.socket_path());
  std::future<int> result = std::async(std::launch::async, [&] { return ConnectTo(broker.address()); });
  EXPECT_EQ(result.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
  broker.Continue();
  EXPECT_EQ(result.get(), 0);
}

// Each takes one place in the queue and no more.
TEST_F(BundledBroker, EightyClientsFindPlaceInTheQueueAtOnce) {
  Broker broker;
  broker.Stop();
  std::vector<std::future<int>> results;
  for (int i = 0; i < 80; ++i) {
    results.push_back(std::async(std::launch::async, [&] { return ConnectTo(broker.address()); }));
  }
  EXPECT_EQ(results.back().wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
  broker.Continue();
  for (std::future<int>& result : results) EXPECT_EQ(result.get(), 0);
}

TEST_F(BundledBroker, QueueThatStaysFullIsTold) {
  Broker broker;
  broker.Stop();
  const std::list<Descriptor> queue = FillQueue(broker.socket_path());
  EXPECT_EQ(ConnectTo(broker.address()), -ETIMEDOUT);
  broker.Continue();
}

// Listens on a Unix socket, takes one connection and answers its first bytes
// with the given ones.
class FakeBroker {
 public:
  explicit FakeBroker(std::string answer)
      : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), answer_(std::move(answer)) {
    const sockaddr_un address = UnixAddress(path());
    EXPECT_EQ(bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(listener_.get(), 8), 0);
    thread_ = std::thread([this] { Answer(); });
  }
  ~FakeBroker() {
    shutdown(listener_.get(), SHUT_RDWR);
    thread_.join();
  }

  std::string path() const { return folder_.path() + "/fake.sock"; }

 private:
  void Answer() {
    for (;;) {
      const Descriptor connection(accept(listener_.get(), nullptr, nullptr));
      if (connection.get() < 0) return;
      char bytes[512];
      if (read(connection.get(), bytes, sizeof bytes) <= 0) continue;
      send(connection.get(), answer_.data(), answer_.size(), MSG_NOSIGNAL);
      while (read(connection.get(), bytes, sizeof bytes) > 0) {
      }
    }
  }

  TempDir folder_;
  Descriptor listener_;
  std::string answer_;
  std::thread thread_;
};

TEST_F(BundledBroker, SomebodyWhoSpeaksNoMqttIsTold) {
  const FakeBroker fake("HTTP/1.1 400 Bad Request\r\n\r\n" + std::string(500, ' '));
  EXPECT_EQ(ConnectTo("unix:" + fake.path()), -EPROTO);
}

TEST_F(BundledBroker, BrokerOfAnOlderMqttIsTold) {
  const FakeBroker fake(std::string("\x20\x02\x00\x01", 4));
  EXPECT_EQ(ConnectTo("unix:" + fake.path()), -EPROTO);
}

}  // namespace
}  // namespace vptz_test
