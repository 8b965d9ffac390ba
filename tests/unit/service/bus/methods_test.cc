#include "bus/methods.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "stored_simulation.h"

namespace vptz_test {
namespace {

const std::vector<std::string> kNames = {"get_status",
                                         "search_device",
                                         "add_device",
                                         "add_onvif_device_manually",
                                         "remove_device",
                                         "update_device_control_protocol",
                                         "login",
                                         "logout",
                                         "update_device_info",
                                         "update_device_info_full",
                                         "set_slave_device",
                                         "update_ptz_status",
                                         "update_device_presets",
                                         "update_all_rs232_devices",
                                         "absolute_move",
                                         "continuous_move",
                                         "ptz_stop",
                                         "goto_home",
                                         "set_home",
                                         "set_track_mode",
                                         "update_presets",
                                         "set_preset",
                                         "goto_preset",
                                         "remove_preset",
                                         "get_capabilities",
                                         "set_imaging_settings",
                                         "switch_focus_mode",
                                         "focus_far",
                                         "focus_near",
                                         "focus_stop",
                                         "clear_nat",
                                         "query_nat_uri",
                                         "enable_nat",
                                         "disable_nat",
                                         "config_devices",
                                         "add_usb_tty_device",
                                         "remove_usb_tty_device",
                                         "flush_usb_tty_devices",
                                         "enable_reset2P0",
                                         "disable_reset2P0",
                                         "power_on_devices",
                                         "power_off_devices",
                                         "get_devices_power_status",
                                         "get_ptz_profiles",
                                         "get_media_profiles"};

std::vector<std::string> NamesInTheTable() {
  std::vector<std::string> names;
  for (const vptzd::Method& method : vptzd::Methods()) names.emplace_back(method.name);
  return names;
}

// A command that every method accepts.
tutorial::VptzCommand FittingCommand(const std::string& method) {
  tutorial::VptzCommand command;
  command.mutable_ptz_command()->set_ptz_id(1);
  command.mutable_ptz_command()->set_track_mode(1);
  command.mutable_ptz_command()->set_preset_token("preset1");
  command.mutable_device_command()->set_device_id(1);
  command.mutable_device_command()->set_token(method == "get_media_profiles" ? "main" : "ptz0");
  command.mutable_device_command()->set_user("admin");
  command.mutable_device_command()->set_password("admin");
  command.mutable_device_command()->set_protocol("NDI");
  command.mutable_device_command()->set_address(method == "update_all_rs232_devices" ? "rs232://COM1/9600/1/0"
                                                                                     : "198.51.100.1");
  command.mutable_media_command()->set_media_id(1);
  command.mutable_nat_command()->set_device_id(1);
  command.mutable_slave_device_command()->set_device_id(1);
  command.mutable_usb_tty_device_params()->set_tty_device("/dev/ttyUSB0");
  return command;
}

TEST(Methods, AreExactlyTheFortyFive) {
  ASSERT_EQ(kNames.size(), 45u);
  EXPECT_THAT(NamesInTheTable(), testing::UnorderedElementsAreArray(kNames));
}

class EveryMethod : public StoredSimulation, public testing::WithParamInterface<std::string> {};

TEST_P(EveryMethod, AnswersAFittingCommand) {
  if (GetParam() == "remove_usb_tty_device") {
    ASSERT_EQ(simulation_->Status("add_usb_tty_device", FittingCommand("add_usb_tty_device")), 0);
  }
  const tutorial::VptzResponse response = simulation_->Call(GetParam(), FittingCommand(GetParam()));
  EXPECT_TRUE(response.has_status_code());
  const int done = GetParam() == "get_devices_power_status" ? 1 : 0;
  EXPECT_EQ(response.status_code(), done);
}

TEST_P(EveryMethod, RefusesBytesThatAreNoCommand) {
  const std::string garbage = "\xff\xff\xff\xff garbage";
  const auto response = simulation_->Dispatch(GetParam(), garbage.data(), static_cast<int>(garbage.size()));
  EXPECT_EQ(response.status_code(), -1002);
}

TEST_P(EveryMethod, RefusesACommandForAnotherMethod) {
  tutorial::VptzCommand command = FittingCommand(GetParam());
  command.set_method_name(GetParam() == "get_status" ? "login" : "get_status");
  const std::string bytes = command.SerializeAsString();
  const auto response = simulation_->Dispatch(GetParam(), bytes.data(), static_cast<int>(bytes.size()));
  EXPECT_EQ(response.status_code(), -1002);
}

TEST_P(EveryMethod, FitsItsAnswerIntoTheClientsBuffer) {
  EXPECT_LE(simulation_->Call(GetParam(), FittingCommand(GetParam())).ByteSizeLong(), 512u);
}

INSTANTIATE_TEST_SUITE_P(Methods, EveryMethod, testing::ValuesIn(kNames),
                         [](const auto& info) { return info.param; });

}  // namespace
}  // namespace vptz_test
