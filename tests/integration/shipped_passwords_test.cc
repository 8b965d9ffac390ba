// The shipped configuration for users who must not trust each other.
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <set>

#include "contract/bundled_bus.h"
#include "integration/shipped_broker.h"
#include "support/canary.h"
#include "support/raw_mqtt.h"

namespace vptz_test {
namespace {

std::string PasswordOf(const std::string& user) { return VPTZ_TEST_CANARY "-of-" + user; }

class ShippedPasswords : public BundledBus {
 protected:
  ~ShippedPasswords() override { unsetenv("DORV_BUS_SETTINGS"); }

  // What is connected from now on, is connected as that user.
  std::string Become(const std::string& user, const std::string& password) {
    std::string path = folder_.path() + "/" + user + ".conf";
    std::ofstream(path) << "[broker]\nuser=" << user << "\npassword=" << password << '\n';
    setenv("DORV_BUS_SETTINGS", path.c_str(), 1);
    return path;
  }
  std::string Become(const std::string& user) { return Become(user, PasswordOf(user)); }
  int Connect() const {
    const ClientPtr client(bus_client_new("contract"));
    return bus_connect(client.get(), broker_.address().c_str());
  }
  ClientPtr ConnectedAs(const std::string& user) {
    Become(user);
    return ConnectedTo(broker_.address());
  }
  std::unique_ptr<ServedName> ServedBy(const std::string& user) {
    Become(user);
    return std::make_unique<ServedName>("vptz", broker_.address(), &Echo);
  }
  std::unique_ptr<RawMqtt> RawAs(const std::string& user, const std::string& filter = "",
                                 const std::string& client_id = "") {
    return std::make_unique<RawMqtt>(broker_.socket_path(), filter,
                                     RawIdentity{user, PasswordOf(user), client_id, ""});
  }

  // As somebody whom the broker loses.
  void LeaveWithWill(const std::string& user, const std::string& topic) const {
    RawMqtt(broker_.socket_path(), "", {user, PasswordOf(user), "", topic}).LeaveWithWill();
  }

  ShippedBroker broker_{
      "broker-passwords.conf",
      {{"vptzd", PasswordOf("vptzd")}, {"left", PasswordOf("left")}, {"right", PasswordOf("right")}}};
  TempDir folder_;
};

TEST_F(ShippedPasswords, LetInWhoKnowsHis) {
  Become("left");
  EXPECT_EQ(Connect(), 0);
  Become("left", PasswordOf("right"));
  EXPECT_EQ(Connect(), -EKEYREJECTED);
  Become("nobody");
  EXPECT_EQ(Connect(), -EKEYREJECTED);
  unsetenv("DORV_BUS_SETTINGS");
  EXPECT_EQ(Connect(), -EKEYREJECTED);
  EXPECT_THROW(RawMqtt(broker_.socket_path(), "#"), std::runtime_error);
}

TEST_F(ShippedPasswords, ServiceAndToolsWorkWithTheRules) {
  const std::string settings = Become("vptzd");
  broker_.StartService({"DORV_BUS_SETTINGS=" + settings});
  const ClientPtr client = ConnectedAs("left");
  EXPECT_EQ(bus_signal_subscribe_all(client.get(), "vptz", TheReceiver(0).callback), 0);
  EXPECT_GE(Call(client.get(), "vptz", "update_device").code, 0);
}

TEST_F(ShippedPasswords, NobodyReadsRequestsAndRepliesOfOthers) {
  const auto service = ServedBy("vptzd");
  const auto all_requests = RawAs("vptzd", "dorv/call/vptz/#");
  const ClientPtr right = ConnectedAs("right");
  EXPECT_EQ(Call(right.get(), "vptz", "echo", "first").reply, "first");
  const std::string replies = all_requests->WaitFor("echo").response_topic;
  ASSERT_EQ(replies.rfind("dorv/reply/", 0), 0u);

  std::vector<std::unique_ptr<RawMqtt>> spies;
  // A client's name with wildcards in it would widen the rules.
  for (const char* client_id : {"", "#", "+", "+/x", "a/#"}) {
    spies.push_back(RawAs("left", "dorv/reply/#", client_id));
    for (const std::string& filter :
         {replies, std::string("#"), std::string("dorv/#"), std::string("dorv/reply/+"),
          std::string("dorv/call/#"), std::string("+/+/+"), std::string("$SYS/#"), "$share/all/" + replies,
          std::string("$share/all/dorv/call/#")}) {
      spies.back()->Subscribe(filter);
    }
  }
  EXPECT_EQ(Call(right.get(), "vptz", "echo", "second").reply, "second");
  all_requests->WaitFor("echo", 2);
  EXPECT_EQ(Emit(service->get(), "end"), 0);
  spies.front()->WaitFor("dorv/signal/vptz/end");
  for (const auto& spy : spies) {
    spy->Subscribe("dorv/reply/#");  // its answer comes after what the broker has sent before
    for (const RawMessage& message : spy->All()) {
      EXPECT_THAT(message.topic, testing::AnyOf("dorv/signal/vptz/end", "dorv/presence/vptz"));
    }
  }
}

TEST_F(ShippedPasswords, OnlyTheServicesUserRepliesSignalsAndIsPresent) {
  const auto watcher = RawAs("vptzd", "dorv/call/vptz/#");
  const auto service = ServedBy("vptzd");
  const ClientPtr right = ConnectedAs("right");
  EXPECT_EQ(bus_signal_subscribe_all(right.get(), "vptz", TheReceiver(0).callback), 0);
  EXPECT_EQ(Call(right.get(), "vptz", "echo", "first").reply, "first");
  const RawMessage request = watcher->WaitFor("echo");
  const auto presence = RawAs("right", "dorv/presence/#");

  const auto left = RawAs("left");
  left->Send({request.response_topic, "forged", "", request.correlation});
  left->Send({"dorv/signal/vptz/forged", "", "", ""});
  left->Send({"dorv/presence/vptz", "forged", "", ""}, true);
  left->Send({"dorv/presence/vptz", "", "", ""}, true);
  LeaveWithWill("left", "dorv/presence/vptz");

  EXPECT_EQ(Call(right.get(), "vptz", "echo", "second").reply, "second");
  EXPECT_EQ(Emit(service->get(), "true"), 0);
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_THAT(TheReceiver(0).All()[0].name, testing::HasSubstr("true"));
  EXPECT_EQ(presence->WaitFor("vptz").payload, RawAs("right", "dorv/presence/vptz")->WaitFor("vptz").payload);
  EXPECT_EQ(presence->All().size(), 1u);
  LeaveWithWill("vptzd", "dorv/presence/vptz");
  EXPECT_EQ(presence->WaitFor("vptz", 2).payload, "");
}

// A client that connects with another one's client id throws that one off the broker.
TEST_F(ShippedPasswords, NothingThatACallerReadsIsAClientIdOfOthers) {
  const auto service = ServedBy("vptzd");
  const auto presence = RawAs("right", "dorv/presence/#");
  const ClientPtr right = ConnectedAs("right");
  const auto spy = RawAs("left", "#");
  for (const char* filter : {"dorv/#", "dorv/presence/#", "dorv/call/#", "dorv/reply/#", "$SYS/#"}) {
    spy->Subscribe(filter);
  }
  EXPECT_EQ(Call(right.get(), "vptz", "echo", "first").reply, "first");
  EXPECT_EQ(Emit(service->get(), "moved", "payload"), 0);
  spy->WaitFor("dorv/signal/vptz/moved");
  spy->WaitFor("dorv/presence/vptz");

  std::set<std::string> words;
  for (const RawMessage& message : spy->All()) {
    words.insert({message.payload, message.response_topic, message.correlation, message.topic});
    words.insert(message.topic.substr(message.topic.rfind('/') + 1));
  }
  words.erase("");
  EXPECT_GE(words.size(), 5u);
  for (const std::string& word : words) RawAs("left", "", word);

  EXPECT_EQ(Call(right.get(), "vptz", "echo", "second").reply, "second");
  presence->Subscribe("dorv/presence/none");  // its answer comes after what the broker has sent before
  EXPECT_EQ(presence->All().size(), 1u) << "the service has lost its connection";
}

TEST_F(ShippedPasswords, AnotherUserServesNothing) {
  const auto impostor = ServedBy("left");
  const ClientPtr right = ConnectedAs("right");
  EXPECT_EQ(Call(right.get(), "vptz", "echo", "first", 2).code, -ESRCH);
}

}  // namespace
}  // namespace vptz_test
