#include <vptz/vptz_device.h>

#include <algorithm>
#include <utility>

#include <vptz/vptz_client.h>

#include "client_access.h"
#include "log.h"
#include "no_throw.h"
#include "vptz_device/access.h"

using vptz::DeviceAccess;

namespace {

// A setting that a command leaves alone.
constexpr double kLeave = kVptzNotCommanded;
constexpr char kSameMode[] = "DEFAULT";

// Log filters on appliances look for this line number.
constexpr int kContinuousMoveLine = 505;

// Sent for a profile that is not there; the service refuses it.
constexpr unsigned int kNoProfile = ~0u;

// The row id of the profile at a place counted from 1.
template <class Profile>
unsigned int ProfileId(const std::vector<Profile>& profiles, unsigned int idx) {
  return idx == 0 || idx > profiles.size() ? kNoProfile : profiles[idx - 1].id;
}

// Call an operation of the handle's client: with an id before the arguments,
// with that of a PTZ profile, with that of a media profile. They touch the
// handle no more once the operation runs, for it may destroy it.
template <class Operation, class... Arguments>
int Forward(const CVptzDevice& device, unsigned int id, Operation operation, Arguments&&... arguments) {
  VptzClient* const client = DeviceAccess::Client(device);
  return client == nullptr ? -1 : (client->*operation)(id, std::forward<Arguments>(arguments)...);
}

template <class Operation, class... Arguments>
int OnDevice(const CVptzDevice& device, Operation operation, Arguments&&... arguments) {
  return Forward(device, device.id, operation, std::forward<Arguments>(arguments)...);
}

template <class Operation, class... Arguments>
int OnPtz(const CVptzDevice& device, unsigned int idx, Operation operation, Arguments&&... arguments) {
  return Forward(device, ProfileId(device.ptz_list, idx), operation, std::forward<Arguments>(arguments)...);
}

template <class Operation, class... Arguments>
int OnMedia(const CVptzDevice& device, unsigned int idx, Operation operation, Arguments&&... arguments) {
  return Forward(device, ProfileId(device.media_list, idx), operation, std::forward<Arguments>(arguments)...);
}

// What is added to the device's preset ids.
std::int32_t PresetShift(const CVptzDevice& device) {
  const VptzClient* const client = DeviceAccess::Client(device);
  return client == nullptr || device.protocol != "NDIHX" ? 0 : vptz::ClientAccess::NdiPresetShift(*client);
}

// Kept: storing wraps around below 0, recalling does not shift then, and
// removing never shifts. Installations rely on each of the three.
unsigned int ShiftedToStore(const CVptzDevice& device, unsigned int preset_id) {
  return preset_id + static_cast<unsigned int>(PresetShift(device));
}

unsigned int ShiftedToRecall(const CVptzDevice& device, unsigned int preset_id) {
  const std::int64_t shift = PresetShift(device);
  return shift < 0 && preset_id + shift < 0 ? preset_id : ShiftedToStore(device, preset_id);
}

}  // namespace

// ---- maintenance -----------------------------------------------------------

int CVptzDevice::Login(std::string user, std::string password, int timeout) {
  return OnDevice(*this, &VptzClient::Login, std::move(user), std::move(password), timeout);
}

int CVptzDevice::Logout(int timeout) { return OnDevice(*this, &VptzClient::Logout, timeout); }

int CVptzDevice::SetSlaveDevice(const std::string& address, const std::string& account,
                                const std::string& credentials, int timeout) {
  return OnDevice(*this, &VptzClient::SetSlaveDevice, address, account, credentials, timeout);
}

int CVptzDevice::SetSlaveDeviceById(int slave_id, int timeout) {
  return OnDevice(*this, &VptzClient::SetSlaveDeviceById, slave_id, timeout);
}

int CVptzDevice::UpdateDevice(void* params, int timeout) {
  if (params == nullptr || client_ == nullptr) return -1;
  return vptz::NoThrow(-1, [&] {
    if (protocol == "RS232") {
      static_cast<VptzSerialDeviceParams*>(params)->port = mac;
    } else {
      static_cast<VptzNetworkDeviceParams*>(params)->mac = mac;
    }
    const int result = client_->AddDevice(protocol, params, timeout);
    return result >= 0 ? LoadDeviceInfo() : result;
  });
}

int CVptzDevice::UpdateDeviceControlProtocol(std::string new_protocol, int timeout) {
  return OnDevice(*this, &VptzClient::UpdateDeviceControlProtocol, std::move(new_protocol), timeout);
}

int CVptzDevice::UpdateDeviceInfo(int timeout) {
  return OnDevice(*this, &VptzClient::UpdateDeviceInfo, timeout);
}

int CVptzDevice::UpdateDeviceInfoFull(int timeout) {
  return OnDevice(*this, &VptzClient::UpdateDeviceInfoFull, timeout);
}

int CVptzDevice::UpdatePtzStatus(int timeout) { return OnDevice(*this, &VptzClient::UpdatePtzStatus, timeout); }

int CVptzDevice::UpdateDevicePresets(int timeout) {
  return OnDevice(*this, &VptzClient::UpdateDevicePresets, timeout);
}

int CVptzDevice::UpdateCapabilities(int timeout) {
  return OnDevice(*this, &VptzClient::UpdateCapabilities, timeout);
}

// ---- NAT -------------------------------------------------------------------

int CVptzDevice::EnableNAT(NATType type, std::vector<VptzNATData>* mappings, int timeout) {
  return OnDevice(*this, &VptzClient::EnableNAT, type, mappings, timeout);
}

int CVptzDevice::DisableNAT(NATType type, int timeout) {
  return OnDevice(*this, &VptzClient::DisableNAT, type, timeout);
}

int CVptzDevice::QueryNATuri(NATType type, std::string& uri, int timeout) {
  return OnDevice(*this, &VptzClient::QueryNATuri, type, uri, timeout);
}

// ---- motion ----------------------------------------------------------------

int CVptzDevice::AbsoluteMove(double pan_position, double tilt_position, double zoom_position, double pan_speed,
                              double tilt_speed, double zoom_speed, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::AbsoluteMove, pan_position, tilt_position, zoom_position, pan_speed,
               tilt_speed, zoom_speed, timeout);
}

int CVptzDevice::AbsolutePanMove(double pan_position, double pan_speed, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::AbsolutePanMove, pan_position, pan_speed, timeout);
}

int CVptzDevice::AbsoluteTiltMove(double tilt_position, double tilt_speed, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::AbsoluteTiltMove, tilt_position, tilt_speed, timeout);
}

int CVptzDevice::AbsolutePanTiltMove(double pan_position, double tilt_position, double pan_speed,
                                     double tilt_speed, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::AbsolutePanTiltMove, pan_position, tilt_position, pan_speed, tilt_speed,
               timeout);
}

int CVptzDevice::AbsoluteZoomMove(double zoom_position, double zoom_speed, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::AbsoluteZoomMove, zoom_position, zoom_speed, timeout);
}

int CVptzDevice::ContinuousMove(double pan_velocity, double tilt_velocity, double zoom_velocity,
                                unsigned int idx, int timeout) {
  ZERK_LOG_write_newline(vptz::kLogModule, static_cast<int>(vptz::LogLevel::kNotice),
                         vptz::log_source::kDeviceHandle, kContinuousMoveLine, "ContinuousMove",
                         "ContinuousMove, service_uri is %s", service_uri.c_str());
  return OnPtz(*this, idx, &VptzClient::ContinuousMove, pan_velocity, tilt_velocity, zoom_velocity, timeout);
}

int CVptzDevice::ContinuousPanMove(double pan_velocity, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::ContinuousPanMove, pan_velocity, timeout);
}

int CVptzDevice::ContinuousTiltMove(double tilt_velocity, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::ContinuousTiltMove, tilt_velocity, timeout);
}

int CVptzDevice::ContinuousPanTiltMove(double pan_velocity, double tilt_velocity, unsigned int idx,
                                       int timeout) {
  return OnPtz(*this, idx, &VptzClient::ContinuousPanTiltMove, pan_velocity, tilt_velocity, timeout);
}

int CVptzDevice::ContinuousZoomMove(double zoom_velocity, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::ContinuousZoomMove, zoom_velocity, timeout);
}

int CVptzDevice::PtzStop(unsigned int idx, bool stop_pan, bool stop_tilt, bool stop_zoom, int timeout) {
  return OnPtz(*this, idx, &VptzClient::PtzStop, stop_pan, stop_tilt, stop_zoom, timeout);
}

int CVptzDevice::PanTiltStop(unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::PanTiltStop, timeout);
}

int CVptzDevice::ZoomStop(unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::ZoomStop, timeout);
}

int CVptzDevice::GotoHome(double pan_speed, double tilt_speed, double zoom_speed, unsigned int idx,
                          int timeout) {
  return OnPtz(*this, idx, &VptzClient::GotoHome, pan_speed, tilt_speed, zoom_speed, timeout);
}

int CVptzDevice::SetHome(unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::SetHome, timeout);
}

int CVptzDevice::SetTrackMode(unsigned int track_mode, unsigned int idx, int timeout) {
  const int result = OnPtz(*this, idx, &VptzClient::SetTrackMode, track_mode, timeout);
  if (result == 0) LoadPtzProfiles();
  return result;
}

// ---- presets ---------------------------------------------------------------

int CVptzDevice::UpdatePresets(unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::UpdatePresets, timeout);
}

int CVptzDevice::SetPreset(std::string name, std::string token, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::SetPreset, std::move(name), std::move(token), timeout);
}

int CVptzDevice::SetPresetById(unsigned int preset_id, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::SetPresetById, ShiftedToStore(*this, preset_id), timeout);
}

int CVptzDevice::GotoPreset(std::string token, double pan_speed, double tilt_speed, double zoom_speed,
                            unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::GotoPreset, std::move(token), pan_speed, tilt_speed, zoom_speed,
               timeout);
}

int CVptzDevice::GotoPresetById(unsigned int preset_id, double pan_speed, double tilt_speed, double zoom_speed,
                                unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::GotoPresetById, ShiftedToRecall(*this, preset_id), pan_speed,
               tilt_speed, zoom_speed, timeout);
}

int CVptzDevice::RemovePreset(std::string token, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::RemovePreset, std::move(token), timeout);
}

int CVptzDevice::RemovePresetById(unsigned int preset_id, unsigned int idx, int timeout) {
  return OnPtz(*this, idx, &VptzClient::RemovePresetById, preset_id, timeout);
}

// ---- imaging and focus -----------------------------------------------------

int CVptzDevice::SetImagingSettings(double brightness, double contrast, double sharpness, double backlight_mode,
                                    double auto_focus, std::string auto_focus_mode, unsigned int idx,
                                    int timeout) {
  if (client_ == nullptr) return -1;
  const auto set = [&](unsigned int media_id) {
    return vptz::NoThrow(-1, [&] {
      return Forward(*this, media_id, &VptzClient::SetImagingSettings, brightness, contrast, sharpness,
                     backlight_mode, auto_focus, auto_focus_mode, timeout);
    });
  };
  if (idx != 0) return set(ProfileId(media_list, idx));
  const auto failures = std::count_if(media_list.begin(), media_list.end(),
                                      [&](const VptzMediaData& media) { return set(media.id) < 0; });
  return failures == 0 ? 0 : -1;
}

int CVptzDevice::SetBrightness(double brightness, unsigned int idx, int timeout) {
  return SetImagingSettings(brightness, kLeave, kLeave, kLeave, kLeave, kSameMode, idx, timeout);
}

int CVptzDevice::SetContrast(double contrast, unsigned int idx, int timeout) {
  return SetImagingSettings(kLeave, contrast, kLeave, kLeave, kLeave, kSameMode, idx, timeout);
}

int CVptzDevice::SetSharpness(double sharpness, unsigned int idx, int timeout) {
  return SetImagingSettings(kLeave, kLeave, sharpness, kLeave, kLeave, kSameMode, idx, timeout);
}

int CVptzDevice::SetBacklightMode(double backlight_mode, unsigned int idx, int timeout) {
  return SetImagingSettings(kLeave, kLeave, kLeave, backlight_mode, kLeave, kSameMode, idx, timeout);
}

int CVptzDevice::SetAutoFocusMode(double auto_focus, std::string auto_focus_mode, unsigned int idx,
                                  int timeout) {
  return SetImagingSettings(kLeave, kLeave, kLeave, kLeave, auto_focus, std::move(auto_focus_mode), idx,
                            timeout);
}

int CVptzDevice::SwitchFocusMode(unsigned int idx, int timeout) {
  return OnMedia(*this, idx, &VptzClient::SwitchFocusMode, timeout);
}

int CVptzDevice::FocusFar(std::string drive, unsigned int idx, int timeout) {
  return OnMedia(*this, idx, &VptzClient::FocusFar, std::move(drive), timeout);
}

int CVptzDevice::FocusNear(std::string drive, unsigned int idx, int timeout) {
  return OnMedia(*this, idx, &VptzClient::FocusNear, std::move(drive), timeout);
}

int CVptzDevice::FocusStop(std::string drive, unsigned int idx, int timeout) {
  return OnMedia(*this, idx, &VptzClient::FocusStop, std::move(drive), timeout);
}
