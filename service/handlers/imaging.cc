#include <cstdlib>
#include <optional>

#include <vptz/vptz_data.h>

#include "handlers/answers.h"
#include "handlers/handlers.h"
#include "handlers/lookup.h"
#include "store/changes.h"
#include "store/row_access.h"

namespace vptzd {

using tutorial::DeviceCommand;
using tutorial::MediaCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

constexpr char kLeaveMode[] = "DEFAULT";

// The speed of a focus drive that tells none, as a part of the top speed.
constexpr double kOrdinaryDrive = 0.5;

void Set(bool present, double value, double* setting) {
  if (present && value != kVptzNotCommanded) *setting = value;
}

// The text decides over the number. False for an unknown text.
bool SetFocusMode(const std::string& text, double* auto_focus) {
  if (text.empty() || text == kLeaveMode) return true;
  if (text != "AUTO" && text != "MANUAL") return false;
  *auto_focus = text == "AUTO" ? 1.0 : 0.0;
  return true;
}

bool Apply(const MediaCommand& media, ImageSettings* image) {
  Set(media.has_brightness(), media.brightness(), &image->brightness);
  Set(media.has_contrast(), media.contrast(), &image->contrast);
  Set(media.has_sharpness(), media.sharpness(), &image->sharpness);
  Set(media.has_backlight_mode(), media.backlight_mode(), &image->backlight_mode);
  Set(media.has_auto_focus(), media.auto_focus(), &image->auto_focus);
  return SetFocusMode(media.auto_focus_mode(), &image->auto_focus);
}

ImageSettings ImageOf(Fleet& fleet, const Member& member, const std::string& token) {
  const auto lock = fleet.Enter();
  return member.camera.FindMediaProfile(token)->image;
}

// Tries the picture on a camera of its own, so that a refusal comes first.
Status Check(Fleet& fleet, const Member& member, const std::string& token, const ImageSettings& image) {
  const auto lock = fleet.Enter();
  if (!member.camera.powered()) return Status::kPoweredOff;
  Camera trial = member.camera;
  return trial.SetImage(token, image);
}

// `change` writes what is commanded, and tells whether it can be used. The camera's
// picture is changed as it is after the wait for the database: a focus drive that
// has begun meanwhile runs on unless the focus mode is commanded too.
template <class Change>
VptzResponse Store(Context& context, std::uint32_t media, Member* member, const std::string& token,
                   Change change) {
  ImageSettings image = ImageOf(context.fleet, *member, token);
  if (!change(&image)) return Answer(Status::kBadRequest);
  const Status status = Check(context.fleet, *member, token, image);
  if (status != Status::kDone) return Answer(status);
  StoreImage(media, image);
  {
    const auto lock = context.fleet.Enter();
    image = member->camera.FindMediaProfile(token)->image;
    change(&image);
    member->SetImage(token, image);
  }
  context.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

// The text of a focus drive: a part of the top speed above 0 up to 1; any other
// text means the ordinary speed.
double DriveSpeed(const std::string& text) {
  char* end = nullptr;
  const double speed = std::strtod(text.c_str(), &end);
  const bool whole = !text.empty() && end == text.c_str() + text.size();
  return whole && speed > 0.0 && speed <= 1.0 ? speed : kOrdinaryDrive;
}

VptzResponse DriveFocus(Fleet& fleet, const VptzCommand& command, double direction) {
  if (!command.has_device_command()) return Answer(Status::kBadRequest);
  const DeviceCommand& device = command.device_command();
  Member* member = fleet.MemberOfMedia(device.device_id());
  const Status status = fleet.CheckUsable(member, command.method_name());
  if (status != Status::kDone) return Answer(status);
  return Answer(member->DriveFocus(MediaTokenOf(*member, device.device_id()),
                                   direction * DriveSpeed(device.token()), fleet.DriverFor(fleet.caller())));
}

}  // namespace

VptzResponse GetCapabilities(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kLogin, &member);
  if (status != Status::kDone) return Answer(status);
  std::optional<Camera> camera;
  {
    const auto lock = context.fleet.Enter();
    camera = member->camera;
  }
  StoreAxes(member->ids.ptz, camera->abilities(), camera->position());
  for (std::size_t i = 0; i < member->ids.media.size(); ++i) {
    StoreImage(member->ids.media[i], camera->media_profiles()[i].image);
  }
  context.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

VptzResponse SetImagingSettings(Context& context, const VptzCommand& command) {
  if (!command.has_media_command()) return Answer(Status::kBadRequest);
  const MediaCommand& media = command.media_command();
  Member* member = nullptr;
  std::string token;
  const Status status = LookUpMedia(context, command, media.media_id(), Need::kLogin, &member, &token);
  if (status != Status::kDone) return Answer(status);
  return Store(context, media.media_id(), member, token,
               [&media](ImageSettings* image) { return Apply(media, image); });
}

VptzResponse SwitchFocusMode(Context& context, const VptzCommand& command) {
  if (!command.has_media_command()) return Answer(Status::kBadRequest);
  const std::uint32_t media = command.media_command().media_id();
  Member* member = nullptr;
  std::string token;
  const Status status = LookUpMedia(context, command, media, Need::kLogin, &member, &token);
  if (status != Status::kDone) return Answer(status);
  const double wanted = ImageOf(context.fleet, *member, token).auto_focus == 0.0 ? 1.0 : 0.0;
  return Store(context, media, member, token, [wanted](ImageSettings* image) {
    image->auto_focus = wanted;
    return true;
  });
}

// At once, as the stop that may follow.
VptzResponse FocusFar(Fleet& fleet, const VptzCommand& command) { return DriveFocus(fleet, command, 1.0); }

VptzResponse FocusNear(Fleet& fleet, const VptzCommand& command) { return DriveFocus(fleet, command, -1.0); }

VptzResponse StoreFocusMode(Context& context, const VptzCommand& command) {
  const std::uint32_t media = command.device_command().device_id();
  Member* member = nullptr;
  std::string token;
  if (LookUpMedia(context, command, media, Need::kAnswer, &member, &token) == Status::kUnknownId) {
    return Answer(Status::kUnknownId);  // removed meanwhile
  }
  try {
    if (StoreImage(media, ImageOf(context.fleet, *member, token))) context.AnnounceRowsOf(member->ids.device);
  } catch (const StorageError&) {
    const auto lock = context.fleet.Enter();
    member->StopFocus();  // a refused command leaves nothing running
    throw;
  }
  return Answer(Status::kDone);
}

VptzResponse FocusStop(Fleet& fleet, const VptzCommand& command) {
  if (!command.has_device_command()) return Answer(Status::kBadRequest);
  Member* member = fleet.MemberOfMedia(command.device_command().device_id());
  const Status status = fleet.CheckThere(member, command.method_name());
  if (status == Status::kDone) member->StopFocus();
  return Answer(status);
}

}  // namespace vptzd
