#include <vptz/vptz_data.h>

#include "handlers/answers.h"
#include "handlers/handlers.h"

namespace vptzd {

using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

void Fill(tutorial::PtzRange* range, double min, double max) {
  range->set_min(min);
  range->set_max(max);
}

void FillUnknown(tutorial::PtzParams* params) {
  params->set_position(kVptzNotCommanded);
  params->set_speed(kVptzNotCommanded);
  Fill(params->mutable_position_range(), kVptzNotCommanded, kVptzNotCommanded);
  Fill(params->mutable_speed_range(), kVptzNotCommanded, kVptzNotCommanded);
  Fill(params->mutable_spare_range(), kVptzNotCommanded, kVptzNotCommanded);
}

void Fill(tutorial::PtzParams* params, const Camera& camera, AxisIndex index) {
  if (!camera.HasAxis(index)) {
    FillUnknown(params);
    return;
  }
  const Axis& axis = camera.axis(index);
  params->set_position(axis.position());
  params->set_speed(axis.speed());
  Fill(params->mutable_position_range(), axis.limits().min, axis.limits().max);
  Fill(params->mutable_speed_range(), 0.0, axis.limits().top_speed);
  Fill(params->mutable_spare_range(), kVptzNotCommanded, kVptzNotCommanded);
}

void Fill(tutorial::PtzInfo* info, const Camera& camera) {
  info->set_track_mode(camera.track_mode());
  Fill(info->mutable_pan(), camera, kPan);
  Fill(info->mutable_tilt(), camera, kTilt);
  Fill(info->mutable_zoom(), camera, kZoom);
}

void Fill(tutorial::VideoEncoder* answer, const VideoEncoder& encoder) {
  answer->set_width(encoder.width);
  answer->set_height(encoder.height);
  answer->set_frame_rate(encoder.frame_rate);
  answer->set_bit_rate(encoder.bit_rate);
}

void Fill(tutorial::ImageSettings* answer, const ImageSettings& image) {
  answer->set_brightness(image.brightness);
  answer->set_contrast(image.contrast);
  answer->set_sharpness(image.sharpness);
  answer->set_auto_focus(image.auto_focus);
  answer->set_backlight_mode(image.backlight_mode);
}

}  // namespace

VptzResponse GetPtzProfiles(Fleet& fleet, const VptzCommand& command) {
  if (!command.has_device_command()) return Answer(Status::kBadRequest);
  const Member* member = fleet.MemberOfDevice(command.device_command().device_id());
  const Status status = fleet.CheckThere(member, command.method_name());
  if (status != Status::kDone) return Answer(status);
  if (member->camera.ptz_token() != command.device_command().token()) return Answer(Status::kUnknownId);
  VptzResponse response = Answer(Status::kDone);
  Fill(response.mutable_ptz_info(), member->camera);
  return response;
}

VptzResponse GetMediaProfiles(Fleet& fleet, const VptzCommand& command) {
  if (!command.has_device_command()) return Answer(Status::kBadRequest);
  const Member* member = fleet.MemberOfDevice(command.device_command().device_id());
  const Status status = fleet.CheckThere(member, command.method_name());
  if (status != Status::kDone) return Answer(status);
  const MediaProfile* profile = member->camera.FindMediaProfile(command.device_command().token());
  if (profile == nullptr) return Answer(Status::kUnknownId);
  VptzResponse response = Answer(Status::kDone);
  Fill(response.mutable_media_info()->mutable_video_encoder(), profile->encoder);
  Fill(response.mutable_media_info()->mutable_image_settings(), profile->image);
  return response;
}

}  // namespace vptzd
