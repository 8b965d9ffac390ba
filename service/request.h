// What the handlers of several subjects share: answers, and reading of commands.
#ifndef VPTZ_SERVICE_REQUEST_H
#define VPTZ_SERVICE_REQUEST_H

#include <vptz/vptz.pb.h>

#include "status.h"
#include "world.h"

namespace vptzd {

// An answer that holds a status and nothing more.
tutorial::VptzResponse Answer(Status status);

// The numbers of a PTZ command, axis by axis. A field that is absent or holds
// the not-commanded value gives none.
AxisValues Positions(const tutorial::PtzCommand& command);
AxisValues Speeds(const tutorial::PtzCommand& command);
AxisValues Velocities(const tutorial::PtzCommand& command);

// Answers with what `action`, a Status (Camera&, const tutorial::PtzCommand&),
// returns for the camera that the command is about.
template <class Action>
tutorial::VptzResponse OnPtz(World& world, const tutorial::VptzCommand& command, Action action) {
  if (!command.has_ptz_command()) return Answer(Status::kBadRequest);
  Camera* camera = world.FindPtz(command.ptz_command().ptz_id());
  return Answer(camera == nullptr ? Status::kUnknownId : action(*camera, command.ptz_command()));
}

}  // namespace vptzd

#endif
