#include "methods.h"

#include "request.h"

namespace vptzd {
namespace {

tutorial::VptzResponse NotImplemented(World&, const tutorial::VptzCommand&) {
  return Answer(Status::kNotImplemented);
}

}  // namespace

const MethodTable& Methods() {
  static constexpr MethodTable kMethods = {{
      // discovery
      {"get_status", GetStatus},
      {"search_device", NotImplemented},
      {"add_device", NotImplemented},
      {"add_onvif_device_manually", NotImplemented},
      {"remove_device", NotImplemented},
      // maintenance
      {"update_device_control_protocol", NotImplemented},
      {"login", NotImplemented},
      {"logout", NotImplemented},
      {"update_device_info", NotImplemented},
      {"update_device_info_full", NotImplemented},
      {"set_slave_device", NotImplemented},
      {"update_ptz_status", NotImplemented},
      {"update_device_presets", NotImplemented},
      {"update_all_rs232_devices", NotImplemented},
      // motion
      {"absolute_move", AbsoluteMove},
      {"continuous_move", ContinuousMove},
      {"ptz_stop", PtzStop},
      {"goto_home", GotoHome},
      {"set_home", SetHome},
      {"set_track_mode", SetTrackMode},
      // presets
      {"update_presets", NotImplemented},
      {"set_preset", NotImplemented},
      {"goto_preset", NotImplemented},
      {"remove_preset", NotImplemented},
      // imaging
      {"get_capabilities", NotImplemented},
      {"set_imaging_settings", NotImplemented},
      {"switch_focus_mode", NotImplemented},
      {"focus_far", NotImplemented},
      {"focus_near", NotImplemented},
      {"focus_stop", NotImplemented},
      // nat
      {"clear_nat", NotImplemented},
      {"query_nat_uri", NotImplemented},
      {"enable_nat", NotImplemented},
      {"disable_nat", NotImplemented},
      // power; the mixed case of two names is theirs
      {"config_devices", NotImplemented},
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

}  // namespace vptzd
