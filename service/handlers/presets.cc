#include "handlers/answers.h"
#include "handlers/handlers.h"
#include "handlers/lookup.h"
#include "store/changes.h"

namespace vptzd {

using tutorial::PtzCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

bool Forgets(const Fleet& fleet, const Member& member, const std::string& method) {
  return fleet.FindFault(FaultKind::kForgetPresets, &member, method) != nullptr;
}

// Makes the rows those of the camera.
VptzResponse Update(Context& context, const VptzCommand& command, Member* member) {
  PresetList presets;
  {
    const auto lock = context.fleet.Enter();
    if (Forgets(context.fleet, *member, command.method_name())) member->camera.presets().Clear();
    presets = member->camera.presets();
  }
  if (StorePresets(member->ids.ptz, presets)) context.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

// What is to be stored.
Status Prepare(Fleet& fleet, const Member& member, const PtzCommand& ptz, StoredPosition* preset) {
  const auto lock = fleet.Enter();
  if (!member.camera.powered()) return Status::kPoweredOff;
  if (!member.camera.presets().HasRoomFor(ptz.preset_token())) return Status::kOutOfRange;
  *preset = member.camera.presets().Prepare(ptz.preset_token(), ptz.preset_name(), member.camera.position());
  return Status::kDone;
}

}  // namespace

VptzResponse UpdatePresets(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpPtz(context, command, Need::kLogin, &member);
  return status == Status::kDone ? Update(context, command, member) : Answer(status);
}

VptzResponse UpdateDevicePresets(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kLogin, &member);
  return status == Status::kDone ? Update(context, command, member) : Answer(status);
}

VptzResponse SetPreset(Context& context, const VptzCommand& command) {
  const PtzCommand& ptz = command.ptz_command();
  Member* member = nullptr;
  const Status status = LookUpPtz(context, command, Need::kLogin, &member);
  if (status != Status::kDone) return Answer(status);
  if (ptz.preset_name().size() > kMaxTextLength || ptz.preset_token().size() > kMaxTextLength) {
    return Answer(Status::kBadRequest);
  }
  StoredPosition preset;
  const Status refusal = Prepare(context.fleet, *member, ptz, &preset);
  if (refusal != Status::kDone) return Answer(refusal);
  StorePreset(member->ids.ptz, preset);
  {
    const auto lock = context.fleet.Enter();
    member->camera.presets().Store(preset);
    if (Forgets(context.fleet, *member, command.method_name())) member->camera.presets().Clear();
  }
  context.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

VptzResponse RemovePreset(Context& context, const VptzCommand& command) {
  const std::string& token = command.ptz_command().preset_token();
  Member* member = nullptr;
  const Status status = LookUpPtz(context, command, Need::kLogin, &member);
  if (status != Status::kDone) return Answer(status);
  {
    const auto lock = context.fleet.Enter();
    if (member->camera.presets().Find(token) == nullptr) return Answer(Status::kUnknownId);
  }
  ForgetPreset(member->ids.ptz, token);
  {
    const auto lock = context.fleet.Enter();
    member->camera.presets().Remove(token);
  }
  context.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

}  // namespace vptzd
