#include <vptz/model/media.h>

#include <memory>
#include <utility>

#include <vptz/method_names.h>
#include "no_throw.h"
#include "vptz_client/exchange.h"

namespace method = vptz::method;
using tutorial::DeviceCommand;
using tutorial::MediaCommand;
using vptz::Exchange;

namespace {

// A setting that a command leaves alone.
constexpr double kLeave = kVptzNotCommanded;
constexpr char kSameMode[] = "DEFAULT";

// Whether a command to that media source may be sent: the database must know
// it. Not looked up when there is nothing to send with.
bool MayAddress(const VptzClient& client, unsigned int media_id) {
  if (!vptz::ClientAccess::HasBusClient(client)) return false;
  return vptz::NoThrow(false, [&] {
    Media* media = nullptr;
    Media::QueryById(&media, media_id);
    return std::unique_ptr<Media>(media) != nullptr;
  });
}

// `fill` gets the tutorial::MediaCommand that holds the id already.
template <class Fill>
int ExchangeMedia(VptzClient& client, const char* method, unsigned int media_id, int timeout, Fill&& fill) {
  if (!MayAddress(client, media_id)) return -1;
  return Exchange(client, method, timeout, [&](tutorial::VptzCommand& command) {
    MediaCommand& media = *command.mutable_media_command();
    media.set_media_id(media_id);
    fill(media);
  });
}

// The focus drive names its media source where other commands name a device.
int DriveFocus(VptzClient& client, const char* method, unsigned int media_id, std::string drive, int timeout) {
  if (!MayAddress(client, media_id)) return -1;
  return vptz::ExchangeDevice(client, method, timeout, [&](DeviceCommand& device) {
    device.set_device_id(media_id);
    device.set_token(std::move(drive));
  });
}

}  // namespace

int VptzClient::UpdateCapabilities(unsigned int device_id, int timeout) {
  return vptz::ExchangeDeviceId(*this, method::kGetCapabilities, device_id, timeout);
}

int VptzClient::SetImagingSettings(unsigned int media_id, double brightness, double contrast, double sharpness,
                                   double backlight_mode, double auto_focus, std::string auto_focus_mode,
                                   int timeout) {
  return ExchangeMedia(*this, method::kSetImagingSettings, media_id, timeout, [&](MediaCommand& media) {
    media.set_brightness(brightness);
    media.set_contrast(contrast);
    media.set_sharpness(sharpness);
    media.set_backlight_mode(backlight_mode);
    media.set_auto_focus(auto_focus);
    media.set_auto_focus_mode(std::move(auto_focus_mode));
  });
}

int VptzClient::SetBrightness(unsigned int media_id, double brightness, int timeout) {
  return SetImagingSettings(media_id, brightness, kLeave, kLeave, kLeave, kLeave, kSameMode, timeout);
}

int VptzClient::SetContrast(unsigned int media_id, double contrast, int timeout) {
  return SetImagingSettings(media_id, kLeave, contrast, kLeave, kLeave, kLeave, kSameMode, timeout);
}

int VptzClient::SetSharpness(unsigned int media_id, double sharpness, int timeout) {
  return SetImagingSettings(media_id, kLeave, kLeave, sharpness, kLeave, kLeave, kSameMode, timeout);
}

int VptzClient::SetBacklightMode(unsigned int media_id, double backlight_mode, int timeout) {
  return SetImagingSettings(media_id, kLeave, kLeave, kLeave, backlight_mode, kLeave, kSameMode, timeout);
}

int VptzClient::SetAutoFocusMode(unsigned int media_id, double auto_focus, int timeout) {
  return SetImagingSettings(media_id, kLeave, kLeave, kLeave, kLeave, auto_focus, kSameMode, timeout);
}

int VptzClient::SwitchFocusMode(unsigned int media_id, int timeout) {
  return ExchangeMedia(*this, method::kSwitchFocusMode, media_id, timeout, [](MediaCommand&) {});
}

int VptzClient::FocusFar(unsigned int media_id, std::string drive, int timeout) {
  return DriveFocus(*this, method::kFocusFar, media_id, std::move(drive), timeout);
}

int VptzClient::FocusNear(unsigned int media_id, std::string drive, int timeout) {
  return DriveFocus(*this, method::kFocusNear, media_id, std::move(drive), timeout);
}

int VptzClient::FocusStop(unsigned int media_id, std::string drive, int timeout) {
  return DriveFocus(*this, method::kFocusStop, media_id, std::move(drive), timeout);
}
