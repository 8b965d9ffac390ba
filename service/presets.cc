#include "handlers.h"
#include "lookup.h"
#include "request.h"
#include "rows.h"

namespace vptzd {

using tutorial::PtzCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

bool Forgets(const World& world, const Member& member, const std::string& method) {
  return world.FindFault(FaultKind::kForgetPresets, &member, method) != nullptr;
}

// Makes the rows those of the camera.
VptzResponse Update(Service& service, const VptzCommand& command, Member* member) {
  PresetList presets;
  {
    const auto lock = service.world.Enter();
    if (Forgets(service.world, *member, command.method_name())) member->camera.presets().Clear();
    presets = member->camera.presets();
  }
  if (StorePresets(member->ids.ptz, presets)) service.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

// What is to be stored.
Status Prepare(World& world, const Member& member, const PtzCommand& ptz, StoredPosition* preset) {
  const auto lock = world.Enter();
  if (!member.camera.powered()) return Status::kPoweredOff;
  if (!member.camera.presets().HasRoomFor(ptz.preset_token())) return Status::kOutOfRange;
  *preset = member.camera.presets().Prepare(ptz.preset_token(), ptz.preset_name(), member.camera.position());
  return Status::kDone;
}

}  // namespace

VptzResponse UpdatePresets(Service& service, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpPtz(service, command, Need::kLogin, &member);
  return status == Status::kDone ? Update(service, command, member) : Answer(status);
}

VptzResponse UpdateDevicePresets(Service& service, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(service, command, Need::kLogin, &member);
  return status == Status::kDone ? Update(service, command, member) : Answer(status);
}

VptzResponse SetPreset(Service& service, const VptzCommand& command) {
  const PtzCommand& ptz = command.ptz_command();
  Member* member = nullptr;
  const Status status = LookUpPtz(service, command, Need::kLogin, &member);
  if (status != Status::kDone) return Answer(status);
  if (ptz.preset_name().size() > kMaxTextLength || ptz.preset_token().size() > kMaxTextLength) {
    return Answer(Status::kBadRequest);
  }
  StoredPosition preset;
  const Status refusal = Prepare(service.world, *member, ptz, &preset);
  if (refusal != Status::kDone) return Answer(refusal);
  StorePreset(member->ids.ptz, preset);
  {
    const auto lock = service.world.Enter();
    member->camera.presets().Store(preset);
    if (Forgets(service.world, *member, command.method_name())) member->camera.presets().Clear();
  }
  service.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

VptzResponse RemovePreset(Service& service, const VptzCommand& command) {
  const std::string& token = command.ptz_command().preset_token();
  Member* member = nullptr;
  const Status status = LookUpPtz(service, command, Need::kLogin, &member);
  if (status != Status::kDone) return Answer(status);
  {
    const auto lock = service.world.Enter();
    if (member->camera.presets().Find(token) == nullptr) return Answer(Status::kUnknownId);
  }
  ForgetPreset(member->ids.ptz, token);
  {
    const auto lock = service.world.Enter();
    member->camera.presets().Remove(token);
  }
  service.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

}  // namespace vptzd
