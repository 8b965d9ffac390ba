#include "handlers.h"
#include "request.h"

namespace vptzd {

using tutorial::PtzCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

VptzResponse AbsoluteMove(World& world, const VptzCommand& command) {
  return OnPtz(world, command, [](Camera& camera, const PtzCommand& ptz) {
    return camera.MoveTo(Positions(ptz), Speeds(ptz));
  });
}

VptzResponse ContinuousMove(World& world, const VptzCommand& command) {
  return OnPtz(world, command,
               [](Camera& camera, const PtzCommand& ptz) { return camera.MoveAt(Velocities(ptz)); });
}

VptzResponse PtzStop(World& world, const VptzCommand& command) {
  return OnPtz(world, command, [](Camera& camera, const PtzCommand& ptz) {
    camera.Stop({ptz.stop_pan(), ptz.stop_tilt(), ptz.stop_zoom()});
    return Status::kDone;
  });
}

VptzResponse GotoHome(World& world, const VptzCommand& command) {
  return OnPtz(world, command,
               [](Camera& camera, const PtzCommand& ptz) { return camera.GoHome(Speeds(ptz)); });
}

VptzResponse SetHome(World& world, const VptzCommand& command) {
  return OnPtz(world, command, [](Camera& camera, const PtzCommand&) {
    camera.SetHome();
    return Status::kDone;
  });
}

VptzResponse SetTrackMode(World& world, const VptzCommand& command) {
  return OnPtz(world, command, [](Camera& camera, const PtzCommand& ptz) {
    if (!ptz.has_track_mode()) return Status::kBadRequest;
    camera.set_track_mode(ptz.track_mode());
    return Status::kDone;
  });
}

}  // namespace vptzd
