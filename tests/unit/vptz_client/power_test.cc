#include "vptz_client/command_test.h"

namespace {

using vptz_test::ClientTest;
using vptz_test::CommandCase;
using vptz_test::CommandTest;
using vptz_test::ConnectedClientTest;

const CommandCase kPower[] = {
    {"ConfigDevices", "config_devices", "",
     [](VptzClient& client, int timeout) { return client.ConfigDevices(timeout); }},
    {"AddUSBttyDevice", "add_usb_tty_device", "usb_tty_device_params { tty_device: '/dev/ttyUSB0' }",
     [](VptzClient& client, int timeout) { return client.AddUSBttyDevice("/dev/ttyUSB0", timeout); }},
    {"RemoveUSBttyDevice", "remove_usb_tty_device", "usb_tty_device_params { tty_device: '/dev/ttyUSB1' }",
     [](VptzClient& client, int timeout) { return client.RemoveUSBttyDevice("/dev/ttyUSB1", timeout); }},
    {"FlushUSBttydevices", "flush_usb_tty_devices", "",
     [](VptzClient& client, int timeout) { return client.FlushUSBttydevices(timeout); }},
    {"EnableReset2P0", "enable_reset2P0", "",
     [](VptzClient& client, int timeout) { return client.EnableReset2P0(timeout); }},
    {"DisableReset2P0", "disable_reset2P0", "",
     [](VptzClient& client, int timeout) { return client.DisableReset2P0(timeout); }},
    {"PowerOnDevices", "power_on_devices", "",
     [](VptzClient& client, int timeout) { return client.PowerOnDevices(timeout); }},
    {"PowerOffDevices", "power_off_devices", "",
     [](VptzClient& client, int timeout) { return client.PowerOffDevices(timeout); }},
    {"GetDevicesPowerStatus", "get_devices_power_status", "",
     [](VptzClient& client, int timeout) { return client.GetDevicesPowerStatus(timeout); }},
};

INSTANTIATE_TEST_SUITE_P(Power, CommandTest, testing::ValuesIn(kPower), vptz_test::CommandName);

using PowerTest = ConnectedClientTest;
using UnconnectedPowerTest = ClientTest;

TEST_F(PowerTest, AddUSBttyDeviceWithAnEmptyTextSendsAPresentAndEmptyField) {
  client.AddUSBttyDevice("");
  EXPECT_TRUE(SentCommand().has_usb_tty_device_params());
  EXPECT_TRUE(SentCommand().usb_tty_device_params().has_tty_device());
  EXPECT_EQ(SentCommand().usb_tty_device_params().tty_device(), "");
}

TEST_F(PowerTest, RemoveUSBttyDeviceWithAnEmptyTextSendsAPresentAndEmptyField) {
  client.RemoveUSBttyDevice("");
  EXPECT_TRUE(SentCommand().usb_tty_device_params().has_tty_device());
  EXPECT_EQ(SentCommand().usb_tty_device_params().tty_device(), "");
}

TEST_F(PowerTest, TheTtyDeviceIsSentByteForByte) {
  const std::string odd("/dev/tty USB\0\xc3\xa4\xff", 16);
  client.AddUSBttyDevice(odd);
  EXPECT_EQ(SentCommand().usb_tty_device_params().tty_device(), odd);
}

TEST_F(PowerTest, ThePowerStatusIsTheStatusCodeItself) {
  bus.ReplyWith(vptz_test::StatusReply(1));
  EXPECT_EQ(client.GetDevicesPowerStatus(), 1);
}

TEST_F(PowerTest, AnEmptyReplyToGetDevicesPowerStatusYieldsZero) {
  bus.ReplyWithBytes("");
  EXPECT_EQ(client.GetDevicesPowerStatus(), 0);
}

TEST_F(UnconnectedPowerTest, GetDevicesPowerStatusOfAClientThatNeverConnectedIsMinusOne) {
  VptzClient client;
  EXPECT_EQ(client.GetDevicesPowerStatus(), -1);
  EXPECT_TRUE(bus.CallsOf("bus_method_call_sync").empty());
}

}  // namespace
