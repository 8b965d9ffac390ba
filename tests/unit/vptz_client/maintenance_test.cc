#include <gmock/gmock.h>

#include "support/canary.h"
#include "vptz_client/command_test.h"
#include "vptz_device/rows.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz_test::ClientTest;
using vptz_test::CommandCase;
using vptz_test::CommandTest;
using vptz_test::ConnectedClientTest;
using vptz_test::Insert;
using vptz_test::StatusReply;

const CommandCase kMaintenance[] = {
    {"UpdateDeviceControlProtocol", "update_device_control_protocol",
     "device_command { protocol: 'NDIHX' device_id: 7 }",
     [](VptzClient& client, int timeout) { return client.UpdateDeviceControlProtocol(7, "NDIHX", timeout); }},
    {"Login", "login", "device_command { user: 'operator' password: '" VPTZ_TEST_CANARY "' device_id: 7 }",
     [](VptzClient& client, int timeout) { return client.Login(7, "operator", VPTZ_TEST_CANARY, timeout); }},
    {"Logout", "logout", "device_command { device_id: 7 }",
     [](VptzClient& client, int timeout) { return client.Logout(7, timeout); }},
    {"UpdateDeviceInfo", "update_device_info", "device_command { device_id: 7 }",
     [](VptzClient& client, int timeout) { return client.UpdateDeviceInfo(7, timeout); }},
    {"UpdateDeviceInfoFull", "update_device_info_full", "device_command { device_id: 4294967295 }",
     [](VptzClient& client, int timeout) { return client.UpdateDeviceInfoFull(4294967295u, timeout); }},
    {"UpdatePtzStatus", "update_ptz_status", "device_command { device_id: 0 }",
     [](VptzClient& client, int timeout) { return client.UpdatePtzStatus(0, timeout); }},
    {"UpdateDevicePresets", "update_device_presets", "device_command { device_id: 7 }",
     [](VptzClient& client, int timeout) { return client.UpdateDevicePresets(7, timeout); }},
    {"SetSlaveDevice", "set_slave_device",
     "slave_device_command { device_id: -7 address: 'a1' account: 'a2' credentials: 'a3' }",
     [](VptzClient& client, int timeout) { return client.SetSlaveDevice(-7, "a1", "a2", "a3", timeout); }},
    {"UpdateAllRS232Devices", "update_all_rs232_devices",
     "device_command { address: 'rs232://ttyS1/9600/3/-1' }",
     [](VptzClient& client, int timeout) {
       return client.UpdateAllRS232Devices("ttyS1", 9600, 3, -1, timeout);
     }},
};

INSTANTIATE_TEST_SUITE_P(Maintenance, CommandTest, testing::ValuesIn(kMaintenance), vptz_test::CommandName);

class MaintenanceTest : public ConnectedClientTest {
 protected:
  // SetSlaveDeviceById with device 2, whose credentials are that text, an SQL
  // literal.
  int SetSlaveWith(const std::string& authorization, int timeout = 0) {
    Store(Insert("device", {{"id", "2"}, {"address", "'198.51.100.4'"}, {"authorization", authorization}}));
    return client.SetSlaveDeviceById(5, 2, timeout);
  }

  int SetSlaveWithText(const std::string& authorization) { return SetSlaveWith("'" + authorization + "'"); }
};

TEST_F(MaintenanceTest, LoggingInToADeviceThatTheDatabaseDoesNotKnowIsLeftToTheService) {
  bus.ReplyWith(StatusReply(-1004));
  EXPECT_EQ(client.Login(99, "operator", VPTZ_TEST_CANARY), -1004);
  EXPECT_EQ(SentCommand().device_command().device_id(), 99u);
}

TEST_F(MaintenanceTest, TextsAreSentByteForByte) {
  const std::string odd = std::string(100000, '%') + std::string("\0\xc3\xa4\xff", 4);
  client.Login(7, odd, odd);
  EXPECT_EQ(SentCommand().device_command().user(), odd);
  EXPECT_EQ(SentCommand().device_command().password(), odd);
}

// ---- slave devices ---------------------------------------------------------

TEST_F(MaintenanceTest, SlaveZeroSendsEmptyTextsWithTheConfiguredTimeout) {
  EXPECT_EQ(client.SetSlaveDeviceById(5, 0, 7), 0);
  const tutorial::SlaveDeviceCommand slave = SentCommand().slave_device_command();
  EXPECT_EQ(OnlyCall().name, "set_slave_device");
  EXPECT_EQ(slave.device_id(), 5);
  EXPECT_TRUE(slave.has_address());
  EXPECT_TRUE(slave.has_account());
  EXPECT_TRUE(slave.has_credentials());
  EXPECT_EQ(slave.address() + slave.account() + slave.credentials(), "");
  EXPECT_EQ(OnlyCall().timeout, 4);
}

TEST_F(MaintenanceTest, ASlaveIsSentWithItsStoredAddressAndCredentialsAndTheConfiguredTimeout) {
  bus.ReplyWith(StatusReply(3));
  EXPECT_EQ(SetSlaveWith(R"('{"account": "operator", "credentials": ")" VPTZ_TEST_CANARY R"("}')", 7), 3);
  EXPECT_THAT(Sent(), ElementsAre("set_slave_device slave_device_command { address: \"198.51.100.4\" account: "
                                  "\"operator\" credentials: \"" VPTZ_TEST_CANARY "\" device_id: 5 }"));
  EXPECT_EQ(OnlyCall().timeout, 4);
}

TEST_F(MaintenanceTest, ASlavesRefusalAndTransportFailureComeBackUnchanged) {
  bus.ReplyWith(StatusReply(-1004));
  EXPECT_EQ(SetSlaveWithText(R"({"account":"a","credentials":")" VPTZ_TEST_CANARY R"("})"), -1004);
  bus.FailCalls(-110);
  EXPECT_EQ(client.SetSlaveDeviceById(5, 2), -110);
  EXPECT_EQ(client.SetSlaveDeviceById(5, 0), -110);
}

TEST_F(MaintenanceTest, ASlaveThatIsNotStoredReturnsMinusOneAndSendsNothing) {
  EXPECT_EQ(client.SetSlaveDeviceById(5, 2), -1);
  EXPECT_EQ(client.SetSlaveDeviceById(5, -1), -1);
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(MaintenanceTest, OtherKeysAndWhiteSpaceAroundTheCredentialsDoNotMatter) {
  EXPECT_EQ(SetSlaveWithText(" {\"more\":[1,{}],\n\"credentials\":\"\",\t\"account\":\"\\u00e4\"} \n"), 0);
  EXPECT_EQ(SentCommand().slave_device_command().account(), "\xc3\xa4");
  EXPECT_EQ(SentCommand().slave_device_command().credentials(), "");
}

TEST_F(MaintenanceTest, PercentSignsInAddressAndCredentialsAreOrdinaryCharacters) {
  Store(Insert("device", {{"id", "2"},
                          {"address", "'%s%n%99999d'"},
                          {"authorization", R"('{"account":"%s","credentials":"%n"}')"}}));
  EXPECT_EQ(client.SetSlaveDeviceById(5, 2), 0);
  EXPECT_EQ(SentCommand().slave_device_command().address(), "%s%n%99999d");
  EXPECT_EQ(SentCommand().slave_device_command().account(), "%s");
}

TEST_F(MaintenanceTest, CredentialsOf100kBAreSentWhole) {
  const std::string text(100000, '%');
  EXPECT_EQ(SetSlaveWithText(R"({"account":")" + text + R"(","credentials":")" VPTZ_TEST_CANARY R"("})"), 0);
  EXPECT_EQ(SentCommand().slave_device_command().account(), text);
}

class BadCredentialsTest : public MaintenanceTest, public testing::WithParamInterface<const char*> {};

TEST_P(BadCredentialsTest, ReturnMinusOneAndSendNothing) {
  EXPECT_EQ(SetSlaveWith(GetParam()), -1);
  EXPECT_THAT(Sent(), IsEmpty());
}

// SQL expressions.
constexpr const char* kBadCredentials[] = {
    "''",
    "' '",
    "'not JSON'",
    "'{'",
    R"('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"("')",
    R"('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"(}')",
    R"('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"("} x')",
    R"('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"("}{}')",
    R"('{"account":"a"}')",
    R"('{"credentials":")" VPTZ_TEST_CANARY R"("}')",
    R"('{"Account":"a","credentials":")" VPTZ_TEST_CANARY R"("}')",
    R"('{"account":"a","CREDENTIALS":"c"}')",
    R"('{"account":1,"credentials":")" VPTZ_TEST_CANARY R"("}')",
    R"('{"account":"a","credentials":2.5}')",
    R"('{"account":"a","credentials":null}')",
    R"('{"account":true,"credentials":")" VPTZ_TEST_CANARY R"("}')",
    R"('{"account":["a"],"credentials":{"c":"c"}}')",
    R"('["account","a","credentials","c"]')",
    R"('"account"')",
    "'7'",
    "'null'",
    R"('{"account":"a","credentials":"\ud800"}')",
    R"(CAST(x'00' || '{"account":"a","credentials":")" VPTZ_TEST_CANARY R"("}' AS TEXT))",
    R"(CAST('{"account":"a",' || x'00' || '"credentials":")" VPTZ_TEST_CANARY R"("}' AS TEXT))",
    R"(CAST('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"(' || x'00' || 'd"}' AS TEXT))",
    R"(CAST('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"("}' || x'00' AS TEXT))",
    R"(CAST('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"("}' || x'0000' || '{}' AS TEXT))",
    R"(replace(hex(zeroblob(50000)), '00', '['))",
    R"('{"account":' || replace(hex(zeroblob(50000)), '00', '{"a":'))",
    R"('{"account":"' || replace(hex(zeroblob(50000)), '0', 'a'))",
};

INSTANTIATE_TEST_SUITE_P(Maintenance, BadCredentialsTest, testing::ValuesIn(kBadCredentials));

// ---- serial lines ----------------------------------------------------------

TEST_F(MaintenanceTest, ALineOf127BytesIsSentWholeAndALongerOneIsNot) {
  const std::string port(127 - 14, 'p');
  EXPECT_EQ(client.UpdateAllRS232Devices(port, 1, 2, 3), 0);
  EXPECT_EQ(SentCommand().device_command().address(), "rs232://" + port + "/1/2/3");
  bus.calls.clear();
  EXPECT_EQ(client.UpdateAllRS232Devices(port + "p", 1, 2, 3), -1);
  EXPECT_EQ(client.UpdateAllRS232Devices(std::string(100000, 'p'), 1, 2, 3), -1);
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(MaintenanceTest, PercentSignsInAPortAreOrdinaryCharacters) {
  client.UpdateAllRS232Devices("%n%s%99999d", 1, 2, 3);
  EXPECT_EQ(SentCommand().device_command().address(), "rs232://%n%s%99999d/1/2/3");
}

using UnconnectedMaintenanceTest = ClientTest;

TEST_F(UnconnectedMaintenanceTest, SetSlaveDeviceByIdReturnsMinusOneAndTouchesNoBus) {
  Store(Insert("device", {{"id", "2"},
                          {"service_uri", "'http://198.51.100.4'"},
                          {"authorization", R"('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"("}')"}}));
  VptzClient client;
  CVptzDevice* const slave = client.QueryDeviceById(2);
  ASSERT_NE(slave, nullptr);
  slave->model_name = "a mark that loading the registry again would remove";
  bus.calls.clear();
  log.lines.clear();
  EXPECT_EQ(client.SetSlaveDeviceById(5, 2), -1);
  EXPECT_EQ(client.SetSlaveDeviceById(5, 0), -1);
  EXPECT_THAT(bus.calls, IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
  EXPECT_EQ(slave->model_name, "a mark that loading the registry again would remove");
}

}  // namespace
