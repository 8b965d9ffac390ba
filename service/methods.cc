#include "methods.h"

#include <algorithm>

namespace vptzd {

const MethodTable& Methods() {
  static constexpr MethodTable kMethods = {{
      // discovery
      {"get_status", GetStatus},
      {"search_device", SearchDevice},
      {"add_device", AddDevice},
      {"add_onvif_device_manually", AddOnvifDeviceManually},
      {"remove_device", RemoveDevice},
      // maintenance
      {"update_device_control_protocol", UpdateDeviceControlProtocol},
      {"login", Login},
      {"logout", Logout},
      {"update_device_info", UpdateDeviceInfo},
      {"update_device_info_full", UpdateDeviceInfoFull},
      {"set_slave_device", SetSlaveDevice},
      {"update_ptz_status", UpdatePtzStatus},
      {"update_device_presets", UpdateDevicePresets},
      {"update_all_rs232_devices", UpdateAllRs232Devices},
      // motion
      {"absolute_move", AbsoluteMove},
      {"continuous_move", ContinuousMove},
      {"ptz_stop", PtzStop},
      {"goto_home", GotoHome},
      {"set_home", SetHome},
      {"set_track_mode", SetTrackMode},
      // presets
      {"update_presets", UpdatePresets},
      {"set_preset", SetPreset},
      {"goto_preset", GotoPreset},
      {"remove_preset", RemovePreset},
      // imaging
      {"get_capabilities", GetCapabilities},
      {"set_imaging_settings", SetImagingSettings},
      {"switch_focus_mode", SwitchFocusMode},
      {"focus_far", FocusFar, StoreFocusMode},
      {"focus_near", FocusNear, StoreFocusMode},
      {"focus_stop", FocusStop},
      // nat
      {"clear_nat", ClearNat},
      {"query_nat_uri", QueryNatUri},
      {"enable_nat", EnableNat},
      {"disable_nat", DisableNat},
      // power; the mixed case of two names is theirs
      {"config_devices", ConfigDevices},
      {"add_usb_tty_device", AddUsbTtyDevice},
      {"remove_usb_tty_device", RemoveUsbTtyDevice},
      {"flush_usb_tty_devices", FlushUsbTtyDevices},
      {"enable_reset2P0", EnableReset2P0},
      {"disable_reset2P0", DisableReset2P0},
      {"power_on_devices", PowerOnDevices},
      {"power_off_devices", PowerOffDevices},
      {"get_devices_power_status", GetDevicesPowerStatus},
      // profiles
      {"get_ptz_profiles", GetPtzProfiles},
      {"get_media_profiles", GetMediaProfiles},
  }};
  return kMethods;
}

const Method* FindMethod(std::string_view name) {
  const MethodTable& methods = Methods();
  const auto found =
      std::find_if(methods.begin(), methods.end(), [&](const Method& method) { return method.name == name; });
  return found == methods.end() ? nullptr : &*found;
}

}  // namespace vptzd
