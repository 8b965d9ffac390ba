// The bus methods of the service "vptz", for client, service and tests: the one
// place that spells them.
#ifndef VPTZ_METHOD_NAMES_H
#define VPTZ_METHOD_NAMES_H

#include <array>

namespace vptz {
namespace method {

// Discovery
inline constexpr char kGetStatus[] = "get_status";
inline constexpr char kSearchDevice[] = "search_device";
inline constexpr char kAddDevice[] = "add_device";
inline constexpr char kAddOnvifDeviceManually[] = "add_onvif_device_manually";
inline constexpr char kRemoveDevice[] = "remove_device";

// Maintenance
inline constexpr char kUpdateDeviceControlProtocol[] = "update_device_control_protocol";
inline constexpr char kLogin[] = "login";
inline constexpr char kLogout[] = "logout";
inline constexpr char kUpdateDeviceInfo[] = "update_device_info";
inline constexpr char kUpdateDeviceInfoFull[] = "update_device_info_full";
inline constexpr char kSetSlaveDevice[] = "set_slave_device";
inline constexpr char kUpdatePtzStatus[] = "update_ptz_status";
inline constexpr char kUpdateDevicePresets[] = "update_device_presets";
inline constexpr char kUpdateAllRS232Devices[] = "update_all_rs232_devices";

// Motion
inline constexpr char kAbsoluteMove[] = "absolute_move";
inline constexpr char kContinuousMove[] = "continuous_move";
inline constexpr char kPtzStop[] = "ptz_stop";
inline constexpr char kGotoHome[] = "goto_home";
inline constexpr char kSetHome[] = "set_home";
inline constexpr char kSetTrackMode[] = "set_track_mode";

// Presets
inline constexpr char kUpdatePresets[] = "update_presets";
inline constexpr char kSetPreset[] = "set_preset";
inline constexpr char kGotoPreset[] = "goto_preset";
inline constexpr char kRemovePreset[] = "remove_preset";

// Imaging
inline constexpr char kGetCapabilities[] = "get_capabilities";
inline constexpr char kSetImagingSettings[] = "set_imaging_settings";
inline constexpr char kSwitchFocusMode[] = "switch_focus_mode";
inline constexpr char kFocusFar[] = "focus_far";
inline constexpr char kFocusNear[] = "focus_near";
inline constexpr char kFocusStop[] = "focus_stop";

// NAT
inline constexpr char kClearNAT[] = "clear_nat";
inline constexpr char kQueryNATuri[] = "query_nat_uri";
inline constexpr char kEnableNAT[] = "enable_nat";
inline constexpr char kDisableNAT[] = "disable_nat";

// Serial, USB and power
inline constexpr char kConfigDevices[] = "config_devices";
inline constexpr char kAddUSBttyDevice[] = "add_usb_tty_device";
inline constexpr char kRemoveUSBttyDevice[] = "remove_usb_tty_device";
inline constexpr char kFlushUSBttyDevices[] = "flush_usb_tty_devices";
inline constexpr char kEnableReset2P0[] = "enable_reset2P0";    // kept: the service spells it with a capital
inline constexpr char kDisableReset2P0[] = "disable_reset2P0";  // kept: the service spells it with a capital
inline constexpr char kPowerOnDevices[] = "power_on_devices";
inline constexpr char kPowerOffDevices[] = "power_off_devices";
inline constexpr char kGetDevicesPowerStatus[] = "get_devices_power_status";

// Profiles
inline constexpr char kGetPtzProfiles[] = "get_ptz_profiles";
inline constexpr char kGetMediaProfiles[] = "get_media_profiles";

// All of them, for walking.
inline constexpr std::array kAll = {
    kGetStatus,
    kSearchDevice,
    kAddDevice,
    kAddOnvifDeviceManually,
    kRemoveDevice,
    kUpdateDeviceControlProtocol,
    kLogin,
    kLogout,
    kUpdateDeviceInfo,
    kUpdateDeviceInfoFull,
    kSetSlaveDevice,
    kUpdatePtzStatus,
    kUpdateDevicePresets,
    kUpdateAllRS232Devices,
    kAbsoluteMove,
    kContinuousMove,
    kPtzStop,
    kGotoHome,
    kSetHome,
    kSetTrackMode,
    kUpdatePresets,
    kSetPreset,
    kGotoPreset,
    kRemovePreset,
    kGetCapabilities,
    kSetImagingSettings,
    kSwitchFocusMode,
    kFocusFar,
    kFocusNear,
    kFocusStop,
    kClearNAT,
    kQueryNATuri,
    kEnableNAT,
    kDisableNAT,
    kConfigDevices,
    kAddUSBttyDevice,
    kRemoveUSBttyDevice,
    kFlushUSBttyDevices,
    kEnableReset2P0,
    kDisableReset2P0,
    kPowerOnDevices,
    kPowerOffDevices,
    kGetDevicesPowerStatus,
    kGetPtzProfiles,
    kGetMediaProfiles,
};

}  // namespace method
}  // namespace vptz

#endif
