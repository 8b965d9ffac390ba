// The client's operations, the bus methods and this table name each other:
// whoever adds one of them is told what else is missing.
#include <gmock/gmock.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include <vptz/method_names.h>
#include "vptz_client/command_test.h"
#include "vptz_device/rows.h"

namespace {

using testing::ElementsAreArray;
using vptz_test::ConnectedClientTest;
using vptz_test::Insert;

using Names = std::set<std::string>;

struct Operation {
  const char* name;
  const char* method;  // the one that it sends; null when it sends none
  std::function<void(VptzClient&)> call;
};

void Callback(bus_client*, void*, const char*, const void*, std::int32_t) {}

// Every public member function once, in the order of the header.
const Operation kOperations[] = {
    {"Version", nullptr, [](VptzClient& c) { c.Version(); }},
    {"Connect", nullptr, [](VptzClient& c) { c.Connect("test", nullptr); }},
    {"Disconnect", nullptr, [](VptzClient& c) { c.Disconnect(); }},
    {"Release", nullptr, [](VptzClient& c) { c.Release(); }},
    {"Init", nullptr, [](VptzClient& c) { c.Init(); }},
    {"GetVptzTimeout", nullptr, [](VptzClient& c) { c.GetVptzTimeout(0); }},
    {"CallSync", "anything",
     [](VptzClient& c) {
       char reply[8];
       int length = sizeof reply;
       c.CallSync("anything", "", 0, reply, &length, 1);
     }},
    {"CallAsync", nullptr, [](VptzClient& c) { c.CallAsync("anything", "", 0, Callback, 1); }},
    {"SubscribeSignal", nullptr, [](VptzClient& c) { c.SubscribeSignal("signal", Callback); }},
    {"SubscribeAllSignal", nullptr, [](VptzClient& c) { c.SubscribeAllSignal(Callback); }},
    {"SubscribeSearchDeviceFinishSignal", nullptr,
     [](VptzClient& c) { c.SubscribeSearchDeviceFinishSignal(Callback); }},
    {"SubscribeUpdateDevicesSignal", nullptr, [](VptzClient& c) { c.SubscribeUpdateDevicesSignal(Callback); }},
    {"UnsubscribeSignal", nullptr, [](VptzClient& c) { c.UnsubscribeSignal("signal"); }},
    {"UnSubscribeSearchDeviceFinishSignal", nullptr,
     [](VptzClient& c) { c.UnSubscribeSearchDeviceFinishSignal(); }},
    {"UnSubscribeUpdateDevicesSignal", nullptr, [](VptzClient& c) { c.UnSubscribeUpdateDevicesSignal(); }},
    {"HandleUpdateSignal", nullptr, [](VptzClient& c) { c.HandleUpdateSignal(); }},
    {"GetStatus", "get_status", [](VptzClient& c) { c.GetStatus(); }},
    {"SearchDevice", "search_device", [](VptzClient& c) { c.SearchDevice("", ""); }},
    {"AddDevice", "add_device", [](VptzClient& c) { c.AddDevice("", "", "", "", "", ""); }},
    {"AddDevice", "add_device",
     [](VptzClient& c) {
       VptzNetworkDeviceParams block;
       c.AddDevice("ONVIF", &block);
     }},
    {"AddRS232Device", "add_device", [](VptzClient& c) { c.AddRS232Device("", "", "", 0, 0); }},
    {"AddOnvifDeviceManually", "add_onvif_device_manually",
     [](VptzClient& c) { c.AddOnvifDeviceManually("", "", ""); }},
    {"RemoveDevice", "remove_device", [](VptzClient& c) { c.RemoveDevice(1); }},
    {"LoadDevices", nullptr, [](VptzClient& c) { c.LoadDevices(); }},
    {"ClearDevices", nullptr, [](VptzClient& c) { c.ClearDevices(); }},
    {"QueryDeviceById", nullptr, [](VptzClient& c) { c.QueryDeviceById(1); }},
    {"QueryDeviceAll", nullptr, [](VptzClient& c) { c.QueryDeviceAll(); }},
    {"QueryDeviceByProtocol", nullptr, [](VptzClient& c) { c.QueryDeviceByProtocol(""); }},
    {"QueryDeviceCount", nullptr, [](VptzClient& c) { c.QueryDeviceCount(); }},
    {"QueryPtzCountByDevice", nullptr, [](VptzClient& c) { c.QueryPtzCountByDevice(1); }},
    {"QueryMediaCountByDevice", nullptr, [](VptzClient& c) { c.QueryMediaCountByDevice(1); }},
    {"QueryPresetCountByPtz", nullptr, [](VptzClient& c) { c.QueryPresetCountByPtz(1); }},
    {"UpdateDeviceControlProtocol", "update_device_control_protocol",
     [](VptzClient& c) { c.UpdateDeviceControlProtocol(1, ""); }},
    {"Login", "login", [](VptzClient& c) { c.Login(1, "", ""); }},
    {"Logout", "logout", [](VptzClient& c) { c.Logout(1); }},
    {"UpdateDeviceInfo", "update_device_info", [](VptzClient& c) { c.UpdateDeviceInfo(1); }},
    {"UpdateDeviceInfoFull", "update_device_info_full", [](VptzClient& c) { c.UpdateDeviceInfoFull(1); }},
    {"UpdatePtzStatus", "update_ptz_status", [](VptzClient& c) { c.UpdatePtzStatus(1); }},
    {"UpdateDevicePresets", "update_device_presets", [](VptzClient& c) { c.UpdateDevicePresets(1); }},
    {"SetSlaveDevice", "set_slave_device", [](VptzClient& c) { c.SetSlaveDevice(1, "", "", ""); }},
    {"SetSlaveDeviceById", "set_slave_device", [](VptzClient& c) { c.SetSlaveDeviceById(1, 0); }},
    {"UpdateAllRS232Devices", "update_all_rs232_devices",
     [](VptzClient& c) { c.UpdateAllRS232Devices("", 0, 0, 0); }},
    {"AbsoluteMove", "absolute_move", [](VptzClient& c) { c.AbsoluteMove(1, 0, 0, 0, 0, 0, 0); }},
    {"AbsolutePanMove", "absolute_move", [](VptzClient& c) { c.AbsolutePanMove(1, 0, 0); }},
    {"AbsoluteTiltMove", "absolute_move", [](VptzClient& c) { c.AbsoluteTiltMove(1, 0, 0); }},
    {"AbsolutePanTiltMove", "absolute_move", [](VptzClient& c) { c.AbsolutePanTiltMove(1, 0, 0, 0, 0); }},
    {"AbsoluteZoomMove", "absolute_move", [](VptzClient& c) { c.AbsoluteZoomMove(1, 0, 0); }},
    {"ContinuousMove", "continuous_move", [](VptzClient& c) { c.ContinuousMove(1, 0, 0, 0); }},
    {"ContinuousPanMove", "continuous_move", [](VptzClient& c) { c.ContinuousPanMove(1, 0); }},
    {"ContinuousTiltMove", "continuous_move", [](VptzClient& c) { c.ContinuousTiltMove(1, 0); }},
    {"ContinuousPanTiltMove", "continuous_move", [](VptzClient& c) { c.ContinuousPanTiltMove(1, 0, 0); }},
    {"ContinuousZoomMove", "continuous_move", [](VptzClient& c) { c.ContinuousZoomMove(1, 0); }},
    {"PtzStop", "ptz_stop", [](VptzClient& c) { c.PtzStop(1, true, true, true); }},
    {"PanTiltStop", "ptz_stop", [](VptzClient& c) { c.PanTiltStop(1); }},
    {"ZoomStop", "ptz_stop", [](VptzClient& c) { c.ZoomStop(1); }},
    {"GotoHome", "goto_home", [](VptzClient& c) { c.GotoHome(1, 0, 0, 0); }},
    {"SetHome", "set_home", [](VptzClient& c) { c.SetHome(1); }},
    {"SetTrackMode", "set_track_mode", [](VptzClient& c) { c.SetTrackMode(1, 0); }},
    {"UpdatePresets", "update_presets", [](VptzClient& c) { c.UpdatePresets(1); }},
    {"SetPreset", "set_preset", [](VptzClient& c) { c.SetPreset(1, "", ""); }},
    {"SetPresetById", "set_preset", [](VptzClient& c) { c.SetPresetById(1, 1); }},
    {"GotoPreset", "goto_preset", [](VptzClient& c) { c.GotoPreset(1, "", 0, 0, 0); }},
    {"GotoPresetById", "goto_preset", [](VptzClient& c) { c.GotoPresetById(1, 1, 0, 0, 0); }},
    {"RemovePreset", "remove_preset", [](VptzClient& c) { c.RemovePreset(1, ""); }},
    {"RemovePresetById", "remove_preset", [](VptzClient& c) { c.RemovePresetById(1, 1); }},
    {"UpdateCapabilities", "get_capabilities", [](VptzClient& c) { c.UpdateCapabilities(1); }},
    {"SetImagingSettings", "set_imaging_settings",
     [](VptzClient& c) { c.SetImagingSettings(1, 0, 0, 0, 0, 0, ""); }},
    {"SetBrightness", "set_imaging_settings", [](VptzClient& c) { c.SetBrightness(1, 0); }},
    {"SetContrast", "set_imaging_settings", [](VptzClient& c) { c.SetContrast(1, 0); }},
    {"SetSharpness", "set_imaging_settings", [](VptzClient& c) { c.SetSharpness(1, 0); }},
    {"SetBacklightMode", "set_imaging_settings", [](VptzClient& c) { c.SetBacklightMode(1, 0); }},
    {"SetAutoFocusMode", "set_imaging_settings", [](VptzClient& c) { c.SetAutoFocusMode(1, 0); }},
    {"SwitchFocusMode", "switch_focus_mode", [](VptzClient& c) { c.SwitchFocusMode(1); }},
    {"FocusFar", "focus_far", [](VptzClient& c) { c.FocusFar(1, ""); }},
    {"FocusNear", "focus_near", [](VptzClient& c) { c.FocusNear(1, ""); }},
    {"FocusStop", "focus_stop", [](VptzClient& c) { c.FocusStop(1, ""); }},
    {"EnableNAT", "enable_nat",
     [](VptzClient& c) {
       std::vector<VptzNATData> mappings(1);
       c.EnableNAT(99, NAT_ALL, &mappings);
     }},
    {"DisableNAT", "disable_nat", [](VptzClient& c) { c.DisableNAT(99, NAT_ALL); }},
    {"QueryNATuri", "query_nat_uri",
     [](VptzClient& c) {
       std::string uri;
       c.QueryNATuri(1, NAT_MEDIA, uri);
     }},
    {"SetMediaInfoNAT", "query_nat_uri",
     [](VptzClient& c) {
       CVptzDevice device;
       device.media_list.resize(1);
       c.SetMediaInfoNAT(&device, 1, NAT_MEDIA);
     }},
    {"ClearNAT", "clear_nat", [](VptzClient& c) { c.ClearNAT(); }},
    {"ConfigDevices", "config_devices", [](VptzClient& c) { c.ConfigDevices(); }},
    {"AddUSBttyDevice", "add_usb_tty_device", [](VptzClient& c) { c.AddUSBttyDevice(""); }},
    {"RemoveUSBttyDevice", "remove_usb_tty_device", [](VptzClient& c) { c.RemoveUSBttyDevice(""); }},
    {"FlushUSBttydevices", "flush_usb_tty_devices", [](VptzClient& c) { c.FlushUSBttydevices(); }},
    {"EnableReset2P0", "enable_reset2P0", [](VptzClient& c) { c.EnableReset2P0(); }},
    {"DisableReset2P0", "disable_reset2P0", [](VptzClient& c) { c.DisableReset2P0(); }},
    {"PowerOnDevices", "power_on_devices", [](VptzClient& c) { c.PowerOnDevices(); }},
    {"PowerOffDevices", "power_off_devices", [](VptzClient& c) { c.PowerOffDevices(); }},
    {"GetDevicesPowerStatus", "get_devices_power_status", [](VptzClient& c) { c.GetDevicesPowerStatus(); }},
    {"QueryPtzProfiles", "get_ptz_profiles",
     [](VptzClient& c) {
       VptzPtzData profile;
       c.QueryPtzProfiles(1, "", &profile);
     }},
    {"QueryMediaProfiles", "get_media_profiles",
     [](VptzClient& c) {
       VptzMediaData profile;
       c.QueryMediaProfiles(1, "", &profile);
     }},
};

Names NamesInTable() {
  Names names;
  for (const Operation& operation : kOperations) names.insert(operation.name);
  return names;
}

std::string PublicPartOf(const std::string& header) {
  std::ifstream file(header);
  std::ostringstream text;
  text << file.rdbuf();
  const std::string all = text.str();
  const std::size_t begin = all.find("\n public:");
  const std::size_t end = all.find("\n private:");
  EXPECT_LT(begin, end) << header;
  return std::regex_replace(all.substr(begin, end - begin), std::regex("//[^\n]*"), "");
}

// What is declared as "TYPE NAME(" at the beginning of a statement.
std::multiset<std::string> DeclaredFunctions(const std::string& header) {
  static const std::regex declaration(R"(([;:]\s*)(?:const\s+)?[\w:]+(?:<[\w:*\s]+>)?[\s*&]+(\w+)\()");
  const std::string text = PublicPartOf(header);
  std::multiset<std::string> names;
  for (std::sregex_iterator match(text.begin(), text.end(), declaration), end; match != end; ++match) {
    names.insert((*match)[2]);
  }
  names.erase("operator");
  return names;
}

TEST(CompletenessTest, TheTableHasEveryPublicOperationOfTheHeaderAndNoOther) {
  std::multiset<std::string> rows;
  for (const Operation& operation : kOperations) rows.insert(operation.name);
  EXPECT_THAT(DeclaredFunctions(VPTZ_CLIENT_HEADER), ElementsAreArray(rows));
}

TEST(CompletenessTest, EveryMethodHasAnOperationAndEveryOperationsMethodIsListed) {
  Names sent;
  for (const Operation& operation : kOperations) {
    if (operation.method != nullptr) sent.insert(operation.method);
  }
  sent.erase("anything");
  EXPECT_EQ(sent, Names(vptz::method::kAll.begin(), vptz::method::kAll.end()));
}

using OperationsTest = ConnectedClientTest;

TEST_F(OperationsTest, EachSendsTheMethodOfItsRowAndNoOther) {
  Store(Insert("media", {{"id", "1"}}) + Insert("preset", {{"ptz", "1"}, {"preset_id", "1"}}));
  for (const Operation& operation : kOperations) {
    bus.calls.clear();
    operation.call(client);
    Names sent;
    for (const vptz_test::BusCall& call : bus.CallsOf("bus_method_call_sync")) sent.insert(call.name);
    EXPECT_EQ(sent, operation.method == nullptr ? Names() : Names{operation.method}) << operation.name;
  }
}

// An operation of the handle is one of the client's, or one of these.
TEST(CompletenessTest, TheHandlesOperationsAreTheClients) {
  const Names own = {"Init",        "Deinit",        "SetVptzClient",  "GetPtzById",      "GetMediaById",
                     "LoadPtzInfo", "LoadMediaInfo", "LoadDeviceInfo", "LoadPtzProfiles", "LoadMediaProfiles",
                     "UpdateDevice"};
  const Names clients = NamesInTable();
  const std::multiset<std::string> declared = DeclaredFunctions(VPTZ_DEVICE_HEADER);
  EXPECT_GT(declared.size(), 50u);
  for (const std::string& name : declared) EXPECT_EQ(own.count(name) + clients.count(name) > 0, true) << name;
}

}  // namespace
