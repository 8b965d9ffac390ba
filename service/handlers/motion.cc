#include "handlers/answers.h"
#include "handlers/handlers.h"
#include "store/changes.h"

namespace vptzd {

using tutorial::PtzCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

// A camera may be about to lose its power in the move.
VptzResponse Moving(Fleet& fleet, const VptzCommand& command, const VptzResponse& answer) {
  if (answer.status_code() != static_cast<int>(Status::kDone)) return answer;
  Member* member = fleet.MemberOfPtz(command.ptz_command().ptz_id());
  const Fault* fault = fleet.FindFault(FaultKind::kLosePower, member, command.method_name());
  if (fault != nullptr) {
    member->camera.LosePowerAfter(fault->time);
  } else {
    member->camera.KeepPower();
  }
  return answer;
}

}  // namespace

VptzResponse AbsoluteMove(Fleet& fleet, const VptzCommand& command) {
  return Moving(fleet, command, OnPtz(fleet, command, [](Member& member, const PtzCommand& ptz) {
                  return member.MoveTo(Positions(ptz), Speeds(ptz));
                }));
}

VptzResponse ContinuousMove(Fleet& fleet, const VptzCommand& command) {
  const Driver driver = fleet.DriverFor(fleet.caller());
  return Moving(fleet, command, OnPtz(fleet, command, [&](Member& member, const PtzCommand& ptz) {
                  return member.MoveAt(Velocities(ptz), driver);
                }));
}

VptzResponse PtzStop(Fleet& fleet, const VptzCommand& command) {
  return OnAnyPtz(fleet, command, [](Member& member, const PtzCommand& ptz) {
    member.Stop({ptz.stop_pan(), ptz.stop_tilt(), ptz.stop_zoom()});
    return Status::kDone;
  });
}

VptzResponse GotoHome(Fleet& fleet, const VptzCommand& command) {
  return Moving(fleet, command, OnPtz(fleet, command, [](Member& member, const PtzCommand& ptz) {
                  return member.GoHome(Speeds(ptz));
                }));
}

VptzResponse GotoPreset(Fleet& fleet, const VptzCommand& command) {
  Member* member = fleet.MemberOfPtz(command.ptz_command().ptz_id());
  if (member != nullptr &&
      fleet.FindFault(FaultKind::kForgetPresets, member, command.method_name()) != nullptr) {
    member->camera.presets().Clear();
  }
  return Moving(fleet, command, OnPtz(fleet, command, [](Member& member, const PtzCommand& ptz) {
                  return member.GoToPreset(ptz.preset_token(), Speeds(ptz));
                }));
}

VptzResponse SetHome(Fleet& fleet, const VptzCommand& command) {
  return OnPtz(fleet, command, [](Member& member, const PtzCommand&) {
    member.camera.SetHome();
    return Status::kDone;
  });
}

VptzResponse SetTrackMode(Context& context, const VptzCommand& command) {
  Fleet& fleet = context.fleet;
  const PtzCommand& ptz = command.ptz_command();
  if (!command.has_ptz_command()) return Answer(Status::kBadRequest);
  CameraIds ids;
  {
    const auto lock = fleet.Enter();
    const Member* member = fleet.MemberOfPtz(ptz.ptz_id());
    const Status status = fleet.CheckUsable(member, command.method_name());
    if (status != Status::kDone) return Answer(status);
    if (!ptz.has_track_mode()) return Answer(Status::kBadRequest);
    ids = member->ids;
  }
  StoreTrackMode(ids, ptz.track_mode());
  {
    const auto lock = fleet.Enter();
    fleet.CameraOfPtz(ids.ptz)->set_track_mode(ptz.track_mode());
  }
  context.AnnounceRowsOf(ids.device);
  return Answer(Status::kDone);
}

}  // namespace vptzd
