#include <gmock/gmock.h>

#include "allocations.h"
#include "support/canary.h"
#include "vptz_client/command_test.h"

namespace {

using testing::IsEmpty;
using vptz_test::ClientTest;
using vptz_test::CommandCase;
using vptz_test::CommandTest;
using vptz_test::ConnectedClientTest;
using vptz_test::StatusReply;

VptzNetworkDeviceParams NetworkBlock() {
  return {"00:1b:44:11:3a:b7", "stage left", "ONVIF", "198.51.100.4", "operator", VPTZ_TEST_CANARY};
}

VptzSerialDeviceParams SerialBlock() { return {"stage right", "rs485", 9600, 3, "ttyS1"}; }

constexpr char kNetworkFields[] =
    "device_command { mac: '00:1b:44:11:3a:b7' name: 'stage left' protocol: 'VISCA_OVER_IP'"
    " address: '198.51.100.4' user: 'operator' password: '" VPTZ_TEST_CANARY "' }";

constexpr char kSerialFields[] =
    "device_command { mac: 'ttyS1' name: 'stage right' protocol: 'RS232'"
    " address: 'rs232://ttyS1/rs485/9600/3' user: '' password: '' }";

const CommandCase kDiscovery[] = {
    {"GetStatus", "get_status", "", [](VptzClient& client, int timeout) { return client.GetStatus(timeout); }},
    {"SearchDevice", "search_device", "device_command { search_scope: 'eth0' protocol: 'NDI' }",
     [](VptzClient& client, int timeout) { return client.SearchDevice("eth0", "NDI", timeout); }},
    {"SearchDeviceOfEveryProtocol", "search_device",
     "device_command { search_scope: '' protocol: 'ONVIF,QX310,NDI' }",
     [](VptzClient& client, int timeout) { return client.SearchDevice("", "", timeout); }},
    {"AddDevice", "add_device",
     "device_command { mac: 'a1' name: 'a2' protocol: 'a3' address: 'a4' user: 'a5' password: 'a6' }",
     [](VptzClient& client, int timeout) {
       return client.AddDevice("a1", "a2", "a3", "a4", "a5", "a6", timeout);
     }},
    {"AddDeviceFromANetworkBlock", "add_device", kNetworkFields,
     [](VptzClient& client, int timeout) {
       VptzNetworkDeviceParams block = NetworkBlock();
       return client.AddDevice("ONVIF", &block, timeout);
     }},
    {"AddDeviceFromASerialBlock", "add_device", kSerialFields,
     [](VptzClient& client, int timeout) {
       VptzSerialDeviceParams block = SerialBlock();
       return client.AddDevice("RS232", &block, timeout);
     }},
    {"AddRS232Device", "add_device", kSerialFields,
     [](VptzClient& client, int timeout) {
       return client.AddRS232Device("ttyS1", "stage right", "rs485", 9600, 3, timeout);
     }},
    {"AddOnvifDeviceManually", "add_onvif_device_manually",
     "device_command { address: 'http://198.51.100.4/onvif' user: 'operator' password: '" VPTZ_TEST_CANARY
     "' }",
     [](VptzClient& client, int timeout) {
       return client.AddOnvifDeviceManually("http://198.51.100.4/onvif", "operator", VPTZ_TEST_CANARY, timeout);
     }},
    {"RemoveDevice", "remove_device", "device_command { device_id: 4294967295 }",
     [](VptzClient& client, int timeout) { return client.RemoveDevice(4294967295u, timeout); }},
};

INSTANTIATE_TEST_SUITE_P(Discovery, CommandTest, testing::ValuesIn(kDiscovery), vptz_test::CommandName);

using DiscoveryTest = ConnectedClientTest;
using UnconnectedDiscoveryTest = ClientTest;

// ---- searching and removing ------------------------------------------------

TEST_F(DiscoveryTest, AProtocolListThatIsNotEmptyIsSentUnchanged) {
  for (const char* const protocols : {" ", ",", "onvif", "ONVIF,QX310,NDI,RS232"}) {
    bus.calls.clear();
    client.SearchDevice("", protocols);
    EXPECT_EQ(SentCommand().device_command().protocol(), protocols);
  }
}

TEST_F(DiscoveryTest, RemovingADeviceThatTheDatabaseDoesNotKnowIsLeftToTheService) {
  bus.ReplyWith(StatusReply(-1004));
  EXPECT_EQ(client.RemoveDevice(99), -1004);
  EXPECT_EQ(SentCommand().device_command().device_id(), 99u);
}

TEST_F(DiscoveryTest, NothingIsWrittenToTheDatabaseOrTheRegistry) {
  client.AddDevice("a1", "a2", "a3", "a4", "a5", "a6");
  EXPECT_EQ(client.QueryDeviceCount(), 0);
  EXPECT_THAT(*client.QueryDeviceAll(), IsEmpty());
}

// ---- parameter blocks ------------------------------------------------------

TEST_F(DiscoveryTest, EveryNetworkBlockIsDeclaredAsViscaOverIpWhateverItsProtocol) {
  for (const char* const protocol : {"ONVIF", "NDI", "NDIHX", "QX310", "rs232", "RS232 ", ""}) {
    bus.calls.clear();
    VptzNetworkDeviceParams block = NetworkBlock();
    block.protocol = protocol;
    client.AddDevice(protocol, &block);
    EXPECT_EQ(SentCommand().device_command().protocol(), "VISCA_OVER_IP") << protocol;
  }
}

TEST_F(DiscoveryTest, ABlockIsOnlyRead) {
  VptzNetworkDeviceParams block = NetworkBlock();
  client.AddDevice("ONVIF", &block);
  EXPECT_EQ(block.mac + block.name + block.protocol + block.address + block.user + block.password,
            "00:1b:44:11:3a:b7stage leftONVIF198.51.100.4operator" VPTZ_TEST_CANARY);
}

TEST_F(DiscoveryTest, ANullBlockReturnsMinusOneAndSendsNothing) {
  EXPECT_EQ(client.AddDevice("RS232", nullptr), -1);
  EXPECT_EQ(client.AddDevice("ONVIF", nullptr), -1);
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(DiscoveryTest, ABlockThatCannotBeCopiedIsLoggedAndReturnsMinusOne) {
  VptzSerialDeviceParams serial = SerialBlock();
  VptzNetworkDeviceParams network = NetworkBlock();
  serial.line = network.password = std::string(100000, 'x');
  {
    const vptz_test::AllocationSizeLimit limit(50000);
    EXPECT_EQ(client.AddDevice("RS232", &serial), -1);
    EXPECT_EQ(client.AddDevice("ONVIF", &network), -1);
  }
  EXPECT_THAT(Sent(), IsEmpty());
  ASSERT_EQ(log.lines.size(), 2u);
  for (const vptz_test::LogLine& line : log.lines) {
    EXPECT_EQ(line.module, 42);
    EXPECT_EQ(line.level, 2);
    EXPECT_EQ(line.file, "vptz_client.cc");
    EXPECT_EQ(line.function, "AddDevice");
    EXPECT_EQ(line.message, "AddDevice exception");
  }
}

// ---- serial addresses ------------------------------------------------------

// The text that makes "rs232://TEXT/1/2/3" that long.
std::string Port(std::size_t address_length) { return std::string(address_length - 14, 'p'); }

TEST_F(DiscoveryTest, ASerialAddressOf127BytesIsSentWhole) {
  EXPECT_EQ(client.AddRS232Device(Port(127), "name", "1", 2, 3), 0);
  const std::string address = SentCommand().device_command().address();
  EXPECT_EQ(address.size(), 127u);
  EXPECT_EQ(address, "rs232://" + Port(127) + "/1/2/3");
}

TEST_F(DiscoveryTest, ASerialAddressOf128BytesReturnsMinusOneAndSendsNothing) {
  EXPECT_EQ(client.AddRS232Device(Port(128), "name", "1", 2, 3), -1);
  EXPECT_EQ(client.AddRS232Device("p", "name", Port(128), 2, 3), -1);
  VptzSerialDeviceParams block = SerialBlock();
  block.port = std::string(100000, 'p');
  EXPECT_EQ(client.AddDevice("RS232", &block), -1);
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(DiscoveryTest, TheNameOfASerialDeviceMayBeLongerThanItsAddress) {
  const std::string name(100000, 'n');
  client.AddRS232Device("p", name, "line", -2147483647 - 1, 2147483647);
  EXPECT_EQ(SentCommand().device_command().name(), name);
  EXPECT_EQ(SentCommand().device_command().address(), "rs232://p/line/-2147483648/2147483647");
}

TEST_F(DiscoveryTest, PercentSignsInASerialAddressAreOrdinaryCharacters) {
  client.AddRS232Device("%s%n%d", "%s", "%99999d%%", 2, 3);
  EXPECT_EQ(SentCommand().device_command().address(), "rs232://%s%n%d/%99999d%%/2/3");
}

TEST_F(DiscoveryTest, TextsOfAnyLengthAndContentAreSentByteForByte) {
  const std::string odd = std::string(100000, '%') + std::string("\0\xc3\xa4\xff", 4);
  client.AddDevice(odd, odd, odd, odd, odd, odd);
  const tutorial::DeviceCommand device = SentCommand().device_command();
  for (const std::string* text : {&device.mac(), &device.name(), &device.protocol(), &device.address(),
                                  &device.user(), &device.password()}) {
    EXPECT_EQ(*text, odd);
  }
}

TEST_F(UnconnectedDiscoveryTest, ABlockWithoutABusClientReturnsMinusOne) {
  VptzClient client;
  VptzNetworkDeviceParams block = NetworkBlock();
  EXPECT_EQ(client.AddDevice("ONVIF", &block, 7), -1);
  EXPECT_THAT(Sent(), IsEmpty());
}

}  // namespace
