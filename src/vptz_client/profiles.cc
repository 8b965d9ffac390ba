#include <vptz/method_names.h>
#include "vptz_client/exchange.h"

namespace method = vptz::method;
using tutorial::VptzCommand;
using tutorial::VptzResponse;
using vptz::Exchange;

namespace {

VptzValue ValueFrom(double value) {
  if (value == kVptzNotCommanded) return {};
  return {1, value};
}

// The minimum alone tells whether the service knows the range.
VptzRange RangeFrom(const tutorial::PtzRange& range) {
  if (range.min() == kVptzNotCommanded) return {};
  return {1, range.min(), range.max()};
}

void CopyAxis(const tutorial::PtzParams& from, VptzAxisData& to) {
  to.position = ValueFrom(from.position());
  to.speed = ValueFrom(from.speed());
  to.position_range = RangeFrom(from.position_range());
  to.speed_range = RangeFrom(from.speed_range());
  to.spare_range = RangeFrom(from.spare_range());
}

// Parts that the reply lacks read as zeros, which count as known.
void CopyPtz(const tutorial::PtzInfo& from, VptzPtzData& to) {
  to.track_mode = static_cast<std::int32_t>(from.track_mode());
  CopyAxis(from.pan(), to.pan);
  CopyAxis(from.tilt(), to.tilt);
  CopyAxis(from.zoom(), to.zoom);
}

// Never clears `ok`: it tells that the value has been known once.
void CopyValue(double from, VptzValue& to, bool& ok) {
  to = ValueFrom(from);
  if (to.valid != 0) ok = true;
}

void CopyMedia(const tutorial::MediaInfo& from, VptzMediaData& to) {
  const tutorial::VideoEncoder& video = from.video_encoder();
  CopyValue(video.width(), to.width, to.width_ok);
  CopyValue(video.height(), to.height, to.height_ok);
  CopyValue(video.frame_rate(), to.frame_rate, to.frame_rate_ok);
  CopyValue(video.bit_rate(), to.bit_rate, to.bit_rate_ok);
  const tutorial::ImageSettings& image = from.image_settings();
  CopyValue(image.brightness(), to.brightness, to.brightness_ok);
  CopyValue(image.contrast(), to.contrast, to.contrast_ok);
  CopyValue(image.sharpness(), to.sharpness, to.sharpness_ok);
  to.auto_focus = ValueFrom(image.auto_focus());
  to.backlight_mode = ValueFrom(image.backlight_mode());
}

void NameProfile(unsigned int device_id, const std::string& token, VptzCommand& command) {
  tutorial::DeviceCommand& device = *command.mutable_device_command();
  device.set_device_id(device_id);
  device.set_token(token);
}

}  // namespace

int VptzClient::QueryPtzProfiles(unsigned int device_id, const std::string& token, VptzPtzData* profile,
                                 int timeout) {
  return Exchange(
      *this, method::kGetPtzProfiles, timeout,
      [&](VptzCommand& command) { NameProfile(device_id, token, command); },
      [&](const VptzResponse& response) {
        if (response.status_code() >= 0) CopyPtz(response.ptz_info(), *profile);
      });
}

int VptzClient::QueryMediaProfiles(unsigned int device_id, const std::string& token, VptzMediaData* profile,
                                   int timeout) {
  return Exchange(
      *this, method::kGetMediaProfiles, timeout,
      [&](VptzCommand& command) { NameProfile(device_id, token, command); },
      [&](const VptzResponse& response) {
        if (response.status_code() >= 0) CopyMedia(response.media_info(), *profile);
      });
}
