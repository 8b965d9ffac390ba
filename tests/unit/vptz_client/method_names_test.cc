#include <vptz/method_names.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

namespace method = vptz::method;

TEST(MethodNamesTest, ThereAreFortyFiveAndNoneTwice) {
  EXPECT_EQ(method::kAll.size(), 45u);
  const std::set<std::string> names(method::kAll.begin(), method::kAll.end());
  EXPECT_EQ(names.size(), method::kAll.size());
}

TEST(MethodNamesTest, TheyAreWhatTheServiceAnswersTo) {
  const std::set<std::string> expected = {
      "absolute_move",
      "add_device",
      "add_onvif_device_manually",
      "add_usb_tty_device",
      "clear_nat",
      "config_devices",
      "continuous_move",
      "disable_nat",
      "disable_reset2P0",
      "enable_nat",
      "enable_reset2P0",
      "flush_usb_tty_devices",
      "focus_far",
      "focus_near",
      "focus_stop",
      "get_capabilities",
      "get_devices_power_status",
      "get_media_profiles",
      "get_ptz_profiles",
      "get_status",
      "goto_home",
      "goto_preset",
      "login",
      "logout",
      "power_off_devices",
      "power_on_devices",
      "ptz_stop",
      "query_nat_uri",
      "remove_device",
      "remove_preset",
      "remove_usb_tty_device",
      "search_device",
      "set_home",
      "set_imaging_settings",
      "set_preset",
      "set_slave_device",
      "set_track_mode",
      "switch_focus_mode",
      "update_all_rs232_devices",
      "update_device_control_protocol",
      "update_device_info",
      "update_device_info_full",
      "update_device_presets",
      "update_presets",
      "update_ptz_status",
  };
  const std::set<std::string> names(method::kAll.begin(), method::kAll.end());
  EXPECT_EQ(names, expected);
}

}  // namespace
