#include <gmock/gmock.h>

#include "support/canary.h"
#include "vptz_device/device_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz_test::AddressReply;
using vptz_test::BusCall;
using vptz_test::DeviceTest;
using vptz_test::Insert;
using vptz_test::StatusReply;
using vptz_test::TwoProfilesTest;

// ---- imaging of every profile ----------------------------------------------

TEST_F(TwoProfilesTest, PlaceZeroSetsTheImageOfEveryMediaProfileInOrder) {
  EXPECT_EQ(device.SetContrast(40, 0, 9), 0);
  ASSERT_EQ(bus.calls.size(), 2u);
  EXPECT_EQ(CommandOf(bus.calls[0]).media_command().media_id(), 41u);
  EXPECT_EQ(CommandOf(bus.calls[1]).media_command().media_id(), 42u);
  for (const BusCall& call : bus.calls) {
    EXPECT_EQ(call.name, "set_imaging_settings");
    EXPECT_EQ(call.timeout, 9);
    EXPECT_EQ(CommandOf(call).media_command().contrast(), 40);
    EXPECT_EQ(CommandOf(call).media_command().auto_focus_mode(), "DEFAULT");
  }
}

TEST_F(TwoProfilesTest, EverySingleSettingMayGoToAllMediaProfiles) {
  const double leave = kVptzNotCommanded;
  EXPECT_EQ(device.SetImagingSettings(leave, leave, leave, leave, leave, "", 0), 0);
  EXPECT_EQ(device.SetBrightness(1, 0), 0);
  EXPECT_EQ(device.SetSharpness(1, 0), 0);
  EXPECT_EQ(device.SetBacklightMode(1, 0), 0);
  EXPECT_EQ(device.SetAutoFocusMode(1, "ONCE", 0), 0);
  EXPECT_EQ(bus.calls.size(), 10u);
}

TEST_F(TwoProfilesTest, OneNegativeResultMakesTheWholeMinusOneButAllAreSent) {
  for (const int failing : {0, 1}) {
    bus.calls.clear();
    bus.on_call = [&](const BusCall&) {
      bus.ReplyWith(StatusReply(static_cast<int>(bus.calls.size()) == failing + 1 ? -1006 : 0));
    };
    EXPECT_EQ(device.SetBrightness(40, 0), -1);
    EXPECT_EQ(bus.calls.size(), 2u);
  }
}

TEST_F(TwoProfilesTest, APositiveStatusOfAMediaProfileIsNoFailure) {
  bus.ReplyWith(StatusReply(3));
  EXPECT_EQ(device.SetBrightness(40, 0), 0);
}

TEST_F(TwoProfilesTest, AMediaProfileThatTheDatabaseLostCountsAsAFailure) {
  device.media_list[0].id = 99;
  EXPECT_EQ(device.SetBrightness(40, 0), -1);
  EXPECT_EQ(SentCommand().media_command().media_id(), 42u);
}

TEST_F(TwoProfilesTest, WithoutMediaProfilesAllOfThemIsZeroWithoutACall) {
  device.media_list.clear();
  EXPECT_EQ(device.SetImagingSettings(1, 2, 3, 4, 5, "ONCE", 0), 0);
  EXPECT_EQ(device.SetBrightness(40, 0), 0);
  EXPECT_THAT(bus.calls, IsEmpty());
}

// ---- presets of NDI|HX devices ---------------------------------------------

class PresetShiftTest : public TwoProfilesTest {
 protected:
  PresetShiftTest() {
    std::string rows;
    for (const char* preset_id : {"0", "3", "13", "8", "2", "4294967294", "4294967295"}) {
      rows += InsertPreset("31", preset_id, preset_id);
    }
    Store(rows);
  }

  // The tokens that storing, recalling and removing that preset send.
  std::vector<std::string> Tokens(int shift, const std::string& protocol, unsigned int preset_id) {
    vptz_test::WriteConfigFile("[VPTZ]\nndi_preset_shift=" + std::to_string(shift) + "\n");
    VptzClient shifting;
    shifting.Connect("shifting", nullptr);
    device.SetVptzClient(&shifting);
    device.protocol = protocol;
    return {TokenOf([&] { return device.SetPresetById(preset_id, 1); }),
            TokenOf([&] { return device.GotoPresetById(preset_id, 1, 1, 1, 1); }),
            TokenOf([&] { return device.RemovePresetById(preset_id, 1); })};
  }

  template <class Operation>
  std::string TokenOf(Operation operation) {
    bus.calls.clear();
    EXPECT_EQ(operation(), 0);
    return SentCommand().ptz_command().preset_token();
  }
};

TEST_F(PresetShiftTest, APositiveShiftIsAddedToStoreAndRecallButNotToRemove) {
  EXPECT_THAT(Tokens(10, "NDIHX", 3), ElementsAre("13", "13", "3"));
}

TEST_F(PresetShiftTest, ANegativeShiftThatLeadsBelowZeroWrapsToStoreAndIsLeftOutToRecall) {
  EXPECT_THAT(Tokens(-5, "NDIHX", 3), ElementsAre("4294967294", "3", "3"));
}

TEST_F(PresetShiftTest, ANegativeShiftThatStaysAtZeroOrAboveIsAdded) {
  EXPECT_THAT(Tokens(-5, "NDIHX", 13), ElementsAre("8", "8", "13"));
  EXPECT_THAT(Tokens(-3, "NDIHX", 3), ElementsAre("0", "0", "3"));
}

TEST_F(PresetShiftTest, APositiveShiftWrapsAroundAtTheTop) {
  EXPECT_THAT(Tokens(4, "NDIHX", 4294967295u), ElementsAre("3", "3", "4294967295"));
}

TEST_F(PresetShiftTest, ALargePresetIdIsNoNegativeNumber) {
  EXPECT_THAT(Tokens(-1, "NDIHX", 4294967295u), ElementsAre("4294967294", "4294967294", "4294967295"));
}

TEST_F(PresetShiftTest, WithoutAShiftOrWithAnotherProtocolNothingIsShifted) {
  EXPECT_THAT(Tokens(0, "NDIHX", 3), ElementsAre("3", "3", "3"));
  for (const char* const protocol : {"NDI", "ndihx", "NDIHX ", "NDIHX2", ""}) {
    EXPECT_THAT(Tokens(10, protocol, 3), ElementsAre("3", "3", "3")) << protocol;
  }
}

TEST_F(PresetShiftTest, PresetsByTokenAreNeverShifted) {
  vptz_test::WriteConfigFile("[VPTZ]\nndi_preset_shift=10\n");
  VptzClient shifting;
  shifting.Connect("shifting", nullptr);
  device.SetVptzClient(&shifting);
  device.protocol = "NDIHX";
  EXPECT_EQ(TokenOf([&] { return device.SetPreset("name", "3", 1); }), "3");
  EXPECT_EQ(TokenOf([&] { return device.GotoPreset("3", 1, 1, 1, 1); }), "3");
  EXPECT_EQ(TokenOf([&] { return device.RemovePreset("3", 1); }), "3");
}

// ---- tracking --------------------------------------------------------------

class TrackModeTest : public TwoProfilesTest {
 protected:
  TrackModeTest() {
    Store(Insert("ptz", {{"id", "31"}, {"device", "7"}, {"node", "'ptz0'"}}) +
          Insert("ptz", {{"id", "32"}, {"device", "7"}, {"node", "'ptz1'"}}));
  }
};

TEST_F(TrackModeTest, AnAcceptedModeReloadsTheProfiles) {
  EXPECT_EQ(device.SetTrackMode(9, 2, 8), 0);
  EXPECT_THAT(Sent(), ElementsAre("set_track_mode ptz_command { ptz_id: 32 track_mode: 9 }",
                                  "get_ptz_profiles device_command { token: \"ptz0\" device_id: 7 }",
                                  "get_ptz_profiles device_command { token: \"ptz1\" device_id: 7 }"));
  EXPECT_EQ(bus.calls.at(0).timeout, 8);
  EXPECT_EQ(bus.calls.at(1).timeout, 4);
}

TEST_F(TrackModeTest, ARefusalOrFailureReloadsNothing) {
  for (const int status_code : {-1004, 3}) {
    bus.calls.clear();
    bus.ReplyWith(StatusReply(status_code));
    EXPECT_EQ(device.SetTrackMode(9, 1), status_code);
    EXPECT_EQ(OnlyCall().name, "set_track_mode");
  }
  bus.calls.clear();
  bus.FailCalls(-110);
  EXPECT_EQ(device.SetTrackMode(9, 1), -110);
  EXPECT_EQ(OnlyCall().name, "set_track_mode");
}

TEST_F(TrackModeTest, HowTheReloadEndsDoesNotChangeTheResult) {
  device.ptz_list[0].id = 99;
  bus.on_call = [&](const BusCall& call) {
    bus.ReplyWith(StatusReply(call.name == "set_track_mode" ? 0 : -1004));
  };
  EXPECT_EQ(device.SetTrackMode(9, 1), 0);
}

// ---- the log line of a continuous move -------------------------------------

TEST_F(TwoProfilesTest, ContinuousMoveLogsTheServiceAddressUnderTheLineThatFiltersKnow) {
  device.service_uri = "http://%s%n/onvif";
  device.ContinuousMove(1, 2, 3, 1);
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(log.lines[0].module, 42);
  EXPECT_EQ(log.lines[0].level, 2);
  EXPECT_EQ(log.lines[0].file, "vptz_device.cc");
  EXPECT_EQ(log.lines[0].line, 505);
  EXPECT_EQ(log.lines[0].function, "ContinuousMove");
  EXPECT_EQ(log.lines[0].message, "ContinuousMove, service_uri is http://%s%n/onvif");
}

TEST_F(TwoProfilesTest, MovesOfSingleAxesLogNothing) {
  device.ContinuousPanMove(1, 1);
  device.ContinuousTiltMove(1, 1);
  device.ContinuousPanTiltMove(1, 1, 1);
  device.ContinuousZoomMove(1, 1);
  EXPECT_THAT(log.lines, IsEmpty());
}

// ---- declaring a device anew -----------------------------------------------

class UpdateDeviceTest : public DeviceTest {
 protected:
  UpdateDeviceTest() : device(Handle(7)) {
    Store(Insert("device", {{"id", "7"}, {"mac", "'stored'"}}));
    device.mac = "the handle's";
  }

  CVptzDevice device;
};

TEST_F(UpdateDeviceTest, WritesTheHandlesMacIntoANetworkBlockAndSendsIt) {
  VptzNetworkDeviceParams block = {"mac", "name", "protocol", "address", "user", "password"};
  device.protocol = "ONVIF";
  EXPECT_EQ(device.UpdateDevice(&block, 9), 0);
  EXPECT_EQ(block.mac, "the handle's");
  EXPECT_EQ(block.name + block.protocol + block.address + block.user + block.password,
            "nameprotocoladdressuserpassword");
  const tutorial::DeviceCommand sent = SentCommand().device_command();
  EXPECT_EQ(OnlyCall().name, "add_device");
  EXPECT_EQ(OnlyCall().timeout, 9);
  EXPECT_EQ(sent.mac(), "the handle's");
  EXPECT_EQ(sent.protocol(), "VISCA_OVER_IP");
  EXPECT_EQ(sent.address(), "address");
}

TEST_F(UpdateDeviceTest, WritesTheHandlesMacIntoASerialBlockAsItsPort) {
  VptzSerialDeviceParams block = {"name", "line", 9600, 3, "port"};
  device.protocol = "RS232";
  EXPECT_EQ(device.UpdateDevice(&block), 0);
  EXPECT_EQ(block.port, "the handle's");
  EXPECT_EQ(block.name + block.line, "nameline");
  EXPECT_EQ(SentCommand().device_command().mac(), "the handle's");
  EXPECT_EQ(SentCommand().device_command().address(), "rs232://the handle's/line/9600/3");
}

TEST_F(UpdateDeviceTest, AnAcceptedDeviceLoadsTheRecordAnewAndReturnsItsResult) {
  VptzNetworkDeviceParams block;
  for (const int status_code : {0, 3}) {
    device.mac = "the handle's";
    bus.ReplyWith(StatusReply(status_code));
    EXPECT_EQ(device.UpdateDevice(&block), 0);
    EXPECT_EQ(device.mac, "stored");
  }
  device = Handle(8);
  EXPECT_EQ(device.UpdateDevice(&block), -1);
}

TEST_F(UpdateDeviceTest, ARefusalOrFailureComesBackAndLoadsNothing) {
  VptzNetworkDeviceParams block;
  bus.ReplyWith(StatusReply(-1008));
  EXPECT_EQ(device.UpdateDevice(&block), -1008);
  bus.FailCalls(-110);
  EXPECT_EQ(device.UpdateDevice(&block), -110);
  EXPECT_EQ(device.mac, "the handle's");
  EXPECT_EQ(block.mac, "the handle's");
}

TEST_F(UpdateDeviceTest, ANullBlockOrNoClientReturnsMinusOneAndSendsNothing) {
  VptzNetworkDeviceParams block;
  EXPECT_EQ(device.UpdateDevice(nullptr), -1);
  device.protocol = "RS232";
  EXPECT_EQ(device.UpdateDevice(nullptr), -1);
  device.protocol = "";
  device.SetVptzClient(nullptr);
  EXPECT_EQ(device.UpdateDevice(&block), -1);
  EXPECT_THAT(bus.calls, IsEmpty());
}

// ---- handles that lie in the registry --------------------------------------

class RegistryHandleTest : public DeviceTest {
 protected:
  RegistryHandleTest() {
    Store(
        Insert("device", {{"id", "7"}, {"http_uri", "'http://h7'"}}) +
        Insert("device", {{"id", "8"},
                          {"address", "'198.51.100.8'"},
                          {"authorization", R"('{"account":"a","credentials":")" VPTZ_TEST_CANARY R"("}')"}}));
  }
};

// That the handle that is gone is not touched is what the address sanitizer
// watches.
TEST_F(RegistryHandleTest, OperationsThatRebuildTheRegistryMayBeCalledOnAHandleInIt) {
  EXPECT_EQ(client.QueryDeviceById(7)->EnableNAT(NAT_HTTP, nullptr), 0);
  EXPECT_EQ(client.QueryDeviceById(7)->DisableNAT(NAT_HTTP), 0);
  EXPECT_EQ(client.QueryDeviceById(7)->SetSlaveDeviceById(8), 0);
  EXPECT_EQ(client.QueryDeviceById(7)->SetSlaveDeviceById(0), 0);
  EXPECT_EQ(client.QueryDeviceById(7)->SetSlaveDeviceById(99), -1);
  EXPECT_THAT(Sent(),
              ElementsAre("enable_nat 7 3 ", "query_nat_uri 7 3 http://h7", "disable_nat 7 3 ",
                          "query_nat_uri 7 3 http://h7",
                          "set_slave_device slave_device_command { address: \"198.51.100.8\" account: \"a\" "
                          "credentials: \"" VPTZ_TEST_CANARY "\" device_id: 7 }",
                          "set_slave_device slave_device_command { address: \"\" account: \"\" "
                          "credentials: \"\" device_id: 7 }"));
}

TEST_F(RegistryHandleTest, SetSlaveDeviceByIdUsesTheConfiguredTimeoutAndNeedsAClient) {
  CVptzDevice device = Handle(7);
  device.SetSlaveDeviceById(8, 9);
  EXPECT_EQ(OnlyCall().timeout, 4);
  device.SetVptzClient(nullptr);
  EXPECT_EQ(device.SetSlaveDeviceById(0), -1);
  EXPECT_EQ(device.SetSlaveDeviceById(8), -1);
}

TEST_F(RegistryHandleTest, AHandlesOwnAddressMayBeAskedFor) {
  bus.ReplyWith(AddressReply("http://out"));
  CVptzDevice* const device = client.QueryDeviceById(7);
  EXPECT_EQ(device->QueryNATuri(NAT_HTTP, device->http_uri), 0);
  EXPECT_EQ(device->http_uri, "http://out");
}

// ---- the handle itself -----------------------------------------------------

TEST_F(TwoProfilesTest, ProfilesAreFoundByTheirIds) {
  EXPECT_EQ(device.GetPtzById(32), &device.ptz_list[1]);
  EXPECT_EQ(device.GetMediaById(41), &device.media_list[0]);
  EXPECT_EQ(device.GetPtzById(41), nullptr);
  EXPECT_EQ(device.GetMediaById(0), nullptr);
  device.ptz_list[1].id = 31;
  EXPECT_EQ(device.GetPtzById(31), &device.ptz_list[0]);
  device.media_list[1].id = 4294967295u;
  EXPECT_EQ(device.GetMediaById(-1), &device.media_list[1]);
}

TEST_F(TwoProfilesTest, ACopyIsIndependentAndSendsThroughTheSameClient) {
  CVptzDevice copy = device;
  device.ptz_list.clear();
  device.media_list[0].url = "changed";
  EXPECT_EQ(copy.ptz_list.size(), 2u);
  EXPECT_EQ(copy.media_list[0].url, "");
  copy.SetHome(2);
  EXPECT_EQ(SentCommand().ptz_command().ptz_id(), 32u);
}

TEST_F(TwoProfilesTest, InitAndDeinitDoNothing) {
  device.Init();
  device.Deinit();
  EXPECT_EQ(device.ptz_list.size(), 2u);
  EXPECT_THAT(bus.calls, IsEmpty());
}

TEST(FreshHandleTest, IsEmptyAndHasNoClient) {
  CVptzDevice device;
  EXPECT_EQ(device.id, 0u);
  EXPECT_EQ(device.service_uri + device.mac + device.protocol, "");
  EXPECT_THAT(device.ptz_list, IsEmpty());
  EXPECT_THAT(device.media_list, IsEmpty());
  EXPECT_EQ(device.SetHome(1), -1);
}

}  // namespace
