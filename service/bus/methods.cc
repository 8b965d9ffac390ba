#include "bus/methods.h"

#include <algorithm>

#include <vptz/method_names.h>

namespace vptzd {

namespace method = vptz::method;

const MethodTable& Methods() {
  static constexpr MethodTable kMethods = {{
      // discovery
      {method::kGetStatus, GetStatus},
      {method::kSearchDevice, SearchDevice},
      {method::kAddDevice, AddDevice},
      {method::kAddOnvifDeviceManually, AddOnvifDeviceManually},
      {method::kRemoveDevice, RemoveDevice},
      // maintenance
      {method::kUpdateDeviceControlProtocol, UpdateDeviceControlProtocol},
      {method::kLogin, Login},
      {method::kLogout, Logout},
      {method::kUpdateDeviceInfo, UpdateDeviceInfo},
      {method::kUpdateDeviceInfoFull, UpdateDeviceInfoFull},
      {method::kSetSlaveDevice, SetSlaveDevice},
      {method::kUpdatePtzStatus, UpdatePtzStatus},
      {method::kUpdateDevicePresets, UpdateDevicePresets},
      {method::kUpdateAllRS232Devices, UpdateAllRs232Devices},
      // motion
      {method::kAbsoluteMove, AbsoluteMove},
      {method::kContinuousMove, ContinuousMove},
      {method::kPtzStop, PtzStop},
      {method::kGotoHome, GotoHome},
      {method::kSetHome, SetHome},
      {method::kSetTrackMode, SetTrackMode},
      // presets
      {method::kUpdatePresets, UpdatePresets},
      {method::kSetPreset, SetPreset},
      {method::kGotoPreset, GotoPreset},
      {method::kRemovePreset, RemovePreset},
      // imaging
      {method::kGetCapabilities, GetCapabilities},
      {method::kSetImagingSettings, SetImagingSettings},
      {method::kSwitchFocusMode, SwitchFocusMode},
      {method::kFocusFar, FocusFar, StoreFocusMode},
      {method::kFocusNear, FocusNear, StoreFocusMode},
      {method::kFocusStop, FocusStop},
      // nat
      {method::kClearNAT, ClearNat},
      {method::kQueryNATuri, QueryNatUri},
      {method::kEnableNAT, EnableNat},
      {method::kDisableNAT, DisableNat},
      // power
      {method::kConfigDevices, ConfigDevices},
      {method::kAddUSBttyDevice, AddUsbTtyDevice},
      {method::kRemoveUSBttyDevice, RemoveUsbTtyDevice},
      {method::kFlushUSBttyDevices, FlushUsbTtyDevices},
      {method::kEnableReset2P0, EnableReset2P0},
      {method::kDisableReset2P0, DisableReset2P0},
      {method::kPowerOnDevices, PowerOnDevices},
      {method::kPowerOffDevices, PowerOffDevices},
      {method::kGetDevicesPowerStatus, GetDevicesPowerStatus},
      // profiles
      {method::kGetPtzProfiles, GetPtzProfiles},
      {method::kGetMediaProfiles, GetMediaProfiles},
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
