#include <gmock/gmock.h>
#include <google/protobuf/text_format.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "support/canary.h"
#include "vptz_device/device_test.h"

namespace {

using testing::IsEmpty;
using vptz_test::StatusReply;
using vptz_test::TwoProfilesTest;

// What the id in a command is: the device's, that of a PTZ profile or that of a
// media profile.
enum class Addressed { kDevice, kPtz, kMedia };

struct HandleCase {
  std::string operation;
  Addressed addressed;
  std::string method;
  std::string fields;  // in text format, with ID where the id is
  std::function<int(CVptzDevice&, unsigned int idx, int timeout)> call;
};

std::ostream& operator<<(std::ostream& out, const HandleCase& row) { return out << row.operation; }

constexpr char kUnshifted[] = "ptz_command { ptz_id: ID preset_name: 'door' preset_token: 'token5' }";

// Settings of which only one is commanded.
std::string OneSetting(const std::string& setting, const std::string& mode) {
  std::string fields = "media_command { media_id: ID";
  for (const char* const name : {"brightness", "contrast", "sharpness", "backlight_mode", "auto_focus"}) {
    fields += std::string(" ") + name + (name == setting ? ": 40" : ": -9999999");
  }
  return fields + " auto_focus_mode: '" + mode + "' }";
}

const HandleCase kCases[] = {
    {"Login", Addressed::kDevice, "login",
     "device_command { user: 'u' password: '" VPTZ_TEST_CANARY "' device_id: ID }",
     [](CVptzDevice& d, unsigned, int t) { return d.Login("u", VPTZ_TEST_CANARY, t); }},
    {"Logout", Addressed::kDevice, "logout", "device_command { device_id: ID }",
     [](CVptzDevice& d, unsigned, int t) { return d.Logout(t); }},
    {"SetSlaveDevice", Addressed::kDevice, "set_slave_device",
     "slave_device_command { device_id: ID address: 'a1' account: 'a2' credentials: 'a3' }",
     [](CVptzDevice& d, unsigned, int t) { return d.SetSlaveDevice("a1", "a2", "a3", t); }},
    {"UpdateDeviceControlProtocol", Addressed::kDevice, "update_device_control_protocol",
     "device_command { protocol: 'NDI' device_id: ID }",
     [](CVptzDevice& d, unsigned, int t) { return d.UpdateDeviceControlProtocol("NDI", t); }},
    {"UpdateDeviceInfo", Addressed::kDevice, "update_device_info", "device_command { device_id: ID }",
     [](CVptzDevice& d, unsigned, int t) { return d.UpdateDeviceInfo(t); }},
    {"UpdateDeviceInfoFull", Addressed::kDevice, "update_device_info_full", "device_command { device_id: ID }",
     [](CVptzDevice& d, unsigned, int t) { return d.UpdateDeviceInfoFull(t); }},
    {"UpdatePtzStatus", Addressed::kDevice, "update_ptz_status", "device_command { device_id: ID }",
     [](CVptzDevice& d, unsigned, int t) { return d.UpdatePtzStatus(t); }},
    {"UpdateDevicePresets", Addressed::kDevice, "update_device_presets", "device_command { device_id: ID }",
     [](CVptzDevice& d, unsigned, int t) { return d.UpdateDevicePresets(t); }},
    {"UpdateCapabilities", Addressed::kDevice, "get_capabilities", "device_command { device_id: ID }",
     [](CVptzDevice& d, unsigned, int t) { return d.UpdateCapabilities(t); }},
    {"EnableNAT", Addressed::kDevice, "enable_nat",
     "nat_command { device_id: ID nat_type: 1 params { text1: 'a' text2: 'b' text3: 'c' text4: 'd' text5: 'e'"
     " text6: 'f' number1: 1 number2: 2 } }",
     [](CVptzDevice& d, unsigned, int t) {
       std::vector<VptzNATData> mappings = {{"a", "b", "c", "d", "e", "f", 1, 2}};
       return d.EnableNAT(NAT_MEDIA, &mappings, t);
     }},
    {"DisableNAT", Addressed::kDevice, "disable_nat", "nat_command { device_id: ID nat_type: 1 }",
     [](CVptzDevice& d, unsigned, int t) { return d.DisableNAT(NAT_MEDIA, t); }},
    {"QueryNATuri", Addressed::kDevice, "query_nat_uri",
     "nat_command { device_id: ID nat_type: 3 address: 'in' }",
     [](CVptzDevice& d, unsigned, int t) {
       std::string uri = "in";
       return d.QueryNATuri(NAT_HTTP, uri, t);
     }},
    {"AbsoluteMove", Addressed::kPtz, "absolute_move",
     "ptz_command { ptz_id: ID pan_position: 1 tilt_position: 2 zoom_position: 3 pan_speed: 4 tilt_speed: 5"
     " zoom_speed: 6 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.AbsoluteMove(1, 2, 3, 4, 5, 6, idx, t); }},
    {"AbsolutePanMove", Addressed::kPtz, "absolute_move",
     "ptz_command { ptz_id: ID pan_position: 1 tilt_position: -9999999 zoom_position: -9999999 pan_speed: 2"
     " tilt_speed: -9999999 zoom_speed: -9999999 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.AbsolutePanMove(1, 2, idx, t); }},
    {"AbsoluteTiltMove", Addressed::kPtz, "absolute_move",
     "ptz_command { ptz_id: ID pan_position: -9999999 tilt_position: 1 zoom_position: -9999999"
     " pan_speed: -9999999 tilt_speed: 2 zoom_speed: -9999999 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.AbsoluteTiltMove(1, 2, idx, t); }},
    {"AbsoluteZoomMove", Addressed::kPtz, "absolute_move",
     "ptz_command { ptz_id: ID pan_position: -9999999 tilt_position: -9999999 zoom_position: 1"
     " pan_speed: -9999999 tilt_speed: -9999999 zoom_speed: 2 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.AbsoluteZoomMove(1, 2, idx, t); }},
    {"AbsolutePanTiltMove", Addressed::kPtz, "absolute_move",
     "ptz_command { ptz_id: ID pan_position: 1 tilt_position: 2 zoom_position: -9999999 pan_speed: 3"
     " tilt_speed: 4 zoom_speed: -9999999 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.AbsolutePanTiltMove(1, 2, 3, 4, idx, t); }},
    {"ContinuousMove", Addressed::kPtz, "continuous_move",
     "ptz_command { ptz_id: ID pan_velocity: 1 tilt_velocity: 2 zoom_velocity: 3 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.ContinuousMove(1, 2, 3, idx, t); }},
    {"ContinuousPanMove", Addressed::kPtz, "continuous_move",
     "ptz_command { ptz_id: ID pan_velocity: 1 tilt_velocity: -9999999 zoom_velocity: -9999999 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.ContinuousPanMove(1, idx, t); }},
    {"ContinuousTiltMove", Addressed::kPtz, "continuous_move",
     "ptz_command { ptz_id: ID pan_velocity: -9999999 tilt_velocity: 1 zoom_velocity: -9999999 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.ContinuousTiltMove(1, idx, t); }},
    {"ContinuousZoomMove", Addressed::kPtz, "continuous_move",
     "ptz_command { ptz_id: ID pan_velocity: -9999999 tilt_velocity: -9999999 zoom_velocity: 1 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.ContinuousZoomMove(1, idx, t); }},
    {"ContinuousPanTiltMove", Addressed::kPtz, "continuous_move",
     "ptz_command { ptz_id: ID pan_velocity: 1 tilt_velocity: 2 zoom_velocity: -9999999 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.ContinuousPanTiltMove(1, 2, idx, t); }},
    {"PtzStop", Addressed::kPtz, "ptz_stop",
     "ptz_command { ptz_id: ID stop_pan: true stop_tilt: false stop_zoom: true }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.PtzStop(idx, true, false, true, t); }},
    {"PanTiltStop", Addressed::kPtz, "ptz_stop",
     "ptz_command { ptz_id: ID stop_pan: true stop_tilt: true stop_zoom: false }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.PanTiltStop(idx, t); }},
    {"ZoomStop", Addressed::kPtz, "ptz_stop",
     "ptz_command { ptz_id: ID stop_pan: false stop_tilt: false stop_zoom: true }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.ZoomStop(idx, t); }},
    {"GotoHome", Addressed::kPtz, "goto_home",
     "ptz_command { ptz_id: ID pan_speed: 1 tilt_speed: 2 zoom_speed: 3 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.GotoHome(1, 2, 3, idx, t); }},
    {"SetHome", Addressed::kPtz, "set_home", "ptz_command { ptz_id: ID }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetHome(idx, t); }},
    {"SetTrackMode", Addressed::kPtz, "set_track_mode", "ptz_command { ptz_id: ID track_mode: 9 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetTrackMode(9, idx, t); }},
    {"UpdatePresets", Addressed::kPtz, "update_presets", "ptz_command { ptz_id: ID }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.UpdatePresets(idx, t); }},
    {"SetPreset", Addressed::kPtz, "set_preset", kUnshifted,
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetPreset("door", "token5", idx, t); }},
    {"SetPresetById", Addressed::kPtz, "set_preset", kUnshifted,
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetPresetById(5, idx, t); }},
    {"GotoPreset", Addressed::kPtz, "goto_preset",
     "ptz_command { ptz_id: ID preset_token: 'token5' pan_speed: 1 tilt_speed: 2 zoom_speed: 3 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.GotoPreset("token5", 1, 2, 3, idx, t); }},
    {"GotoPresetById", Addressed::kPtz, "goto_preset",
     "ptz_command { ptz_id: ID preset_token: 'token5' pan_speed: 1 tilt_speed: 2 zoom_speed: 3 }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.GotoPresetById(5, 1, 2, 3, idx, t); }},
    {"RemovePreset", Addressed::kPtz, "remove_preset", "ptz_command { ptz_id: ID preset_token: 'token5' }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.RemovePreset("token5", idx, t); }},
    {"RemovePresetById", Addressed::kPtz, "remove_preset", "ptz_command { ptz_id: ID preset_token: 'token5' }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.RemovePresetById(5, idx, t); }},
    {"SetImagingSettings", Addressed::kMedia, "set_imaging_settings",
     "media_command { media_id: ID brightness: 1 contrast: 2 sharpness: 3 backlight_mode: 4 auto_focus: 5"
     " auto_focus_mode: 'ONCE' }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetImagingSettings(1, 2, 3, 4, 5, "ONCE", idx, t); }},
    {"SetBrightness", Addressed::kMedia, "set_imaging_settings", OneSetting("brightness", "DEFAULT"),
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetBrightness(40, idx, t); }},
    {"SetContrast", Addressed::kMedia, "set_imaging_settings", OneSetting("contrast", "DEFAULT"),
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetContrast(40, idx, t); }},
    {"SetSharpness", Addressed::kMedia, "set_imaging_settings", OneSetting("sharpness", "DEFAULT"),
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetSharpness(40, idx, t); }},
    {"SetBacklightMode", Addressed::kMedia, "set_imaging_settings", OneSetting("backlight_mode", "DEFAULT"),
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetBacklightMode(40, idx, t); }},
    {"SetAutoFocusMode", Addressed::kMedia, "set_imaging_settings", OneSetting("auto_focus", "ONCE"),
     [](CVptzDevice& d, unsigned idx, int t) { return d.SetAutoFocusMode(40, "ONCE", idx, t); }},
    {"SwitchFocusMode", Addressed::kMedia, "switch_focus_mode", "media_command { media_id: ID }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.SwitchFocusMode(idx, t); }},
    {"FocusFar", Addressed::kMedia, "focus_far", "device_command { token: 'slow' device_id: ID }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.FocusFar("slow", idx, t); }},
    {"FocusNear", Addressed::kMedia, "focus_near", "device_command { token: 'slow' device_id: ID }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.FocusNear("slow", idx, t); }},
    {"FocusStop", Addressed::kMedia, "focus_stop", "device_command { token: 'slow' device_id: ID }",
     [](CVptzDevice& d, unsigned idx, int t) { return d.FocusStop("slow", idx, t); }},
};

class HandleCommandTest : public TwoProfilesTest, public testing::WithParamInterface<HandleCase> {
 protected:
  int Call(unsigned int idx, int timeout = 0) { return GetParam().call(device, idx, timeout); }

  void ExpectSent(const std::string& id) {
    const std::string fields = std::regex_replace(GetParam().fields, std::regex("ID"), id);
    tutorial::VptzCommand expected;
    ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(fields, &expected));
    expected.set_method_name(GetParam().method);
    EXPECT_EQ(SentCommand().DebugString(), expected.DebugString());
    bus.calls.clear();
  }

  // With index 0 these address every profile.
  bool ForEveryProfile() const { return GetParam().method == "set_imaging_settings"; }
};

std::string CaseName(const testing::TestParamInfo<HandleCase>& info) { return info.param.operation; }

INSTANTIATE_TEST_SUITE_P(Device, HandleCommandTest, testing::ValuesIn(kCases), CaseName);

TEST_P(HandleCommandTest, SendsTheIdOfTheProfileAtThatPlace) {
  const std::map<Addressed, std::vector<std::string>> ids = {
      {Addressed::kDevice, {"7", "7"}}, {Addressed::kPtz, {"31", "32"}}, {Addressed::kMedia, {"41", "42"}}};
  EXPECT_EQ(Call(1), 0);
  ExpectSent(ids.at(GetParam().addressed)[0]);
  EXPECT_EQ(Call(2), 0);
  ExpectSent(ids.at(GetParam().addressed)[1]);
}

TEST_P(HandleCommandTest, SendsAnIdThatNoProfileHasForAPlaceThatIsNotThere) {
  if (GetParam().addressed == Addressed::kDevice) return;
  for (const unsigned int idx : {0u, 3u, 4294967295u}) {
    if (idx == 0 && ForEveryProfile()) continue;
    EXPECT_EQ(Call(idx), 0);
    ExpectSent("4294967295");
  }
}

TEST_P(HandleCommandTest, WithoutProfilesNoPlaceIsThere) {
  if (GetParam().addressed == Addressed::kDevice) return;
  device.ptz_list.clear();
  device.media_list.clear();
  EXPECT_EQ(Call(1), 0);
  ExpectSent("4294967295");
}

TEST_P(HandleCommandTest, HandsOnItsTimeout) {
  Call(1, 9);
  EXPECT_EQ(OnlyCall().timeout, 9);
  bus.calls.clear();
  Call(1, 0);
  EXPECT_EQ(OnlyCall().timeout, 4);
}

TEST_P(HandleCommandTest, ReturnsWhatTheClientReturns) {
  for (const int status_code : {0, 1, 42, -1004}) {
    bus.ReplyWith(StatusReply(status_code));
    EXPECT_EQ(Call(1), status_code);
  }
  bus.FailCalls(-110);
  EXPECT_EQ(Call(1), -110);
}

TEST_P(HandleCommandTest, WithoutAClientReturnsMinusOneAndSendsNothing) {
  device.SetVptzClient(nullptr);
  EXPECT_EQ(Call(1), -1);
  device.media_list.clear();  // for all of none, too
  EXPECT_EQ(Call(0), -1);
  EXPECT_THAT(bus.calls, IsEmpty());
}

// ---- that nothing is missing -----------------------------------------------

std::set<std::string> Declared() {
  std::ifstream file(VPTZ_DEVICE_HEADER);
  std::ostringstream text;
  text << file.rdbuf();
  const std::string code = std::regex_replace(text.str(), std::regex("//[^\n]*"), "");
  const std::regex operation(R"(\n  int (\w+)\()");
  std::set<std::string> names;
  for (std::sregex_iterator match(code.begin(), code.end(), operation), end; match != end; ++match) {
    names.insert((*match)[1]);
  }
  return names;
}

TEST(HandleOperationsTest, EveryOneHasARowOrIsTestedOnItsOwn) {
  std::set<std::string> tested = {"LoadDeviceInfo",    "LoadPtzInfo",        "LoadMediaInfo", "LoadPtzProfiles",
                                  "LoadMediaProfiles", "SetSlaveDeviceById", "UpdateDevice"};
  for (const HandleCase& row : kCases) tested.insert(row.operation);
  EXPECT_EQ(Declared(), tested);
}

}  // namespace
