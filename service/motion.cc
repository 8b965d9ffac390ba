#include "handlers.h"
#include "request.h"
#include "rows.h"

namespace vptzd {

using tutorial::PtzCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

// A camera may be about to lose its power in the move.
VptzResponse Moving(World& world, const VptzCommand& command, const VptzResponse& answer) {
  if (answer.status_code() != static_cast<int>(Status::kDone)) return answer;
  Member* member = world.MemberOfPtz(command.ptz_command().ptz_id());
  const Fault* fault = world.FindFault(FaultKind::kLosePower, member, command.method_name());
  if (fault != nullptr) {
    member->camera.LosePowerAfter(fault->time);
  } else {
    member->camera.KeepPower();
  }
  return answer;
}

}  // namespace

VptzResponse AbsoluteMove(World& world, const VptzCommand& command) {
  return Moving(world, command, OnPtz(world, command, [](Camera& camera, const PtzCommand& ptz) {
                  return camera.MoveTo(Positions(ptz), Speeds(ptz));
                }));
}

VptzResponse ContinuousMove(World& world, const VptzCommand& command) {
  const Driver driver = world.DriverFor(world.caller());
  return Moving(world, command, OnPtz(world, command, [&](Camera& camera, const PtzCommand& ptz) {
                  return camera.MoveAt(Velocities(ptz), driver);
                }));
}

VptzResponse PtzStop(World& world, const VptzCommand& command) {
  return OnAnyPtz(world, command, [](Camera& camera, const PtzCommand& ptz) {
    camera.Stop({ptz.stop_pan(), ptz.stop_tilt(), ptz.stop_zoom()});
    return Status::kDone;
  });
}

VptzResponse GotoHome(World& world, const VptzCommand& command) {
  return Moving(world, command, OnPtz(world, command, [](Camera& camera, const PtzCommand& ptz) {
                  return camera.GoHome(Speeds(ptz));
                }));
}

VptzResponse GotoPreset(World& world, const VptzCommand& command) {
  Member* member = world.MemberOfPtz(command.ptz_command().ptz_id());
  if (member != nullptr &&
      world.FindFault(FaultKind::kForgetPresets, member, command.method_name()) != nullptr) {
    member->camera.presets().Clear();
  }
  return Moving(world, command, OnPtz(world, command, [](Camera& camera, const PtzCommand& ptz) {
                  return camera.GoToPreset(ptz.preset_token(), Speeds(ptz));
                }));
}

VptzResponse SetHome(World& world, const VptzCommand& command) {
  return OnPtz(world, command, [](Camera& camera, const PtzCommand&) {
    camera.SetHome();
    return Status::kDone;
  });
}

VptzResponse SetTrackMode(Service& service, const VptzCommand& command) {
  World& world = service.world;
  const PtzCommand& ptz = command.ptz_command();
  if (!command.has_ptz_command()) return Answer(Status::kBadRequest);
  CameraIds ids;
  {
    const auto lock = world.Enter();
    const Member* member = world.MemberOfPtz(ptz.ptz_id());
    const Status status = world.CheckUsable(member, command.method_name());
    if (status != Status::kDone) return Answer(status);
    if (!ptz.has_track_mode()) return Answer(Status::kBadRequest);
    ids = member->ids;
  }
  StoreTrackMode(ids, ptz.track_mode());
  {
    const auto lock = world.Enter();
    world.FindPtz(ids.ptz)->set_track_mode(ptz.track_mode());
  }
  service.AnnounceRowsOf(ids.device);
  return Answer(Status::kDone);
}

}  // namespace vptzd
