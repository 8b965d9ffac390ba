// Names that would leave our topics, or that a broker does not survive.
#include <vector>

#include "reliability/bus_reliability.h"
#include "support/raw_mqtt.h"

namespace vptz_test {
namespace {

void AddAround(std::vector<std::string>& names, const std::string& part) {
  names.push_back(part);
  names.push_back("a" + part);
  names.push_back(part + "b");
  names.push_back("a" + part + "b");
}

std::vector<std::string> HostileNames() {
  std::vector<std::string> names = {"",
                                    std::string(1, '\0'),
                                    std::string("\0vptz", 5),
                                    "$",
                                    "$SYS",
                                    "$SYS/broker/uptime",
                                    "$share/group/dorv",
                                    std::string(256, 'n'),
                                    std::string(65535, 'n'),
                                    std::string(65536, 'n')};
  for (const char* part : {"+",
                           "#",
                           "/+/",
                           "/#",
                           "\xff",
                           "\xfe",
                           "\x80",
                           "\xbf",
                           "\xc0\xaf",
                           "\xc1\xbf",
                           "\xc0\x80",
                           "\xe0\x80\xaf",
                           "\xe0\x9f\xbf",
                           "\xf0\x80\x80\xaf",
                           "\xed\xa0\x80",
                           "\xed\xbf\xbf",
                           "\xf4\x90\x80\x80",
                           "\xf8\x88\x80\x80\x80",
                           "\xe2\x28\xa1",
                           "\xf5\x80\x80\x80",
                           "\xe1\x80+",
                           "\xc2#"}) {
    AddAround(names, part);
  }
  for (const char* part : {"\xc3", "\xe2\x82", "\xf0\x9f\x98"}) {
    names.emplace_back(part);
    names.push_back("a" + std::string(part));
  }
  for (char control = 1; control < 0x20; ++control) {
    names.emplace_back(1, control);
    names.push_back(std::string("a") + control + "b");
  }
  AddAround(names, "\x7f");
  for (int second = 0x80; second < 0xa0; ++second) {
    names.push_back("\xc2" + std::string(1, static_cast<char>(second)));
  }
  return names;
}

class HostileName : public BusReliability {
 protected:
  void ExpectRefusedAsMember(VptzClient& client, bus_client* bus, bus_service* service, const char* name) {
    char reply[16];
    int length = sizeof reply;
    const bus_callback callback = TheReceiver(0).callback;
    EXPECT_EQ(client.CallSync(name, "x", 1, reply, &length, 10), -EINVAL);
    EXPECT_EQ(client.CallAsync(name, "x", 1, callback, 10), -EINVAL);
    EXPECT_EQ(client.SubscribeSignal(name, callback), -EINVAL);
    EXPECT_EQ(client.UnsubscribeSignal(name), -EINVAL);
    EXPECT_EQ(bus_method_call_sync(bus, "vptz", name, "x", 1, reply, &length, 10), -EINVAL);
    EXPECT_EQ(bus_service_emit(service, name, "x", 1), -EINVAL);
  }
  void ExpectRefusedAsService(bus_client* bus, const char* name) {
    char reply[16];
    int length = sizeof reply;
    const bus_callback callback = TheReceiver(0).callback;
    EXPECT_EQ(bus_method_call_sync(bus, name, "echo", "x", 1, reply, &length, 10), -EINVAL);
    EXPECT_EQ(bus_method_call_async(bus, name, "echo", "x", 1, callback, 10), -EINVAL);
    EXPECT_EQ(bus_signal_subscribe(bus, name, "moved", callback), -EINVAL);
    EXPECT_EQ(bus_signal_subscribe_all(bus, name, callback), -EINVAL);
    EXPECT_EQ(bus_signal_unsubscribe(bus, name, "moved"), -EINVAL);
    EXPECT_EQ(ServedName(name, broker_.address(), &Echo).result(), -EINVAL);
  }
  void ExpectRefusedAsClient(const std::string& name) {
    EXPECT_EQ(bus_client_new(name.c_str()), nullptr);
    VptzClient client;
    EXPECT_EQ(client.Connect(name, broker_.address().c_str()), -1);
  }
};

TEST_F(HostileName, AreRefusedBeforeAnyTraffic) {
  const std::vector<std::string> names = HostileNames();
  EXPECT_GE(names.size(), 200U);
  const auto service = Serve();
  const auto client = Connected();
  const ClientPtr bus = ConnectedTo(broker_.address());
  EXPECT_EQ(CallOnce(*client, "echo", "x", 10).reply, "x");
  RawMqtt watcher(broker_.socket_path(), "#");
  watcher.WaitFor("dorv/presence/");  // kept by the broker
  watcher.Clear();

  for (const std::string& name : names) {
    SCOPED_TRACE(testing::PrintToString(name.substr(0, 40)));
    ExpectRefusedAsMember(*client, bus.get(), service->get(), name.c_str());
    ExpectRefusedAsService(bus.get(), name.c_str());
    ExpectRefusedAsClient(name);
  }
  for (const char* name : {"a/b", "/", "vptz/", "/vptz"}) ExpectRefusedAsService(bus.get(), name);

  // Whatever had been sent would have come before these.
  EXPECT_EQ(CallOnce(*client, "last", "x", 10).reply, "x");
  watcher.WaitFor("dorv/reply/");
  const std::vector<RawMessage> seen = watcher.All();
  EXPECT_EQ(seen.size(), 2U) << "the last request and its reply";
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
  RecordProperty("names", static_cast<int>(names.size()));
}

TEST_F(HostileName, NothingGoesOutsideOurTopics) {
  RawMqtt watcher(broker_.socket_path(), "#");
  {
    const auto service = Serve();
    const auto client = Connected();
    EXPECT_EQ(client->SubscribeAllSignal(TheReceiver(0).callback), 0);
    for (const char* name : {"../up", "a//b", "/a", "a/", " ", "%c", "dorv/ping", "\xc3\xa4"}) {
      CallOnce(*client, name, "x", 10);
      EXPECT_EQ(Emit(service->get(), name), 0);
    }
    EXPECT_TRUE(TheReceiver(0).WaitFor(8));
  }
  watcher.WaitFor("dorv/presence/", 2);  // taken back, the last that the service sends
  for (const RawMessage& message : watcher.All())
    EXPECT_EQ(message.topic.rfind("dorv/", 0), 0U) << message.topic;
  EXPECT_GE(watcher.All().size(), 3 * 8U) << "requests, replies and signals";
}

}  // namespace
}  // namespace vptz_test
