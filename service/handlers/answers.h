// What the handlers of several subjects share: answers, and reading of commands.
#ifndef VPTZ_SERVICE_HANDLERS_ANSWERS_H
#define VPTZ_SERVICE_HANDLERS_ANSWERS_H

#include <cstddef>
#include <string>

#include <vptz/vptz.pb.h>

#include "drivers/status.h"
#include "fleet/fleet.h"

namespace vptzd {

// What a text in a command may be long that the service keeps.
constexpr std::size_t kMaxTextLength = 255;

// An answer that holds a status and nothing more.
tutorial::VptzResponse Answer(Status status);

// The numbers of a PTZ command, axis by axis. A field that is absent or holds
// the not-commanded value gives none.
AxisValues Positions(const tutorial::PtzCommand& command);
AxisValues Speeds(const tutorial::PtzCommand& command);
AxisValues Velocities(const tutorial::PtzCommand& command);

// Answers with what `action`, a Status (Member&, const tutorial::PtzCommand&),
// returns for the camera that the command is about, whether or not it is logged
// in to. The camera that follows it does the same, as far as it can: one that was
// logged out in motion is still stopped.
template <class Action>
tutorial::VptzResponse OnAnyPtz(Fleet& fleet, const tutorial::VptzCommand& command, Action action) {
  if (!command.has_ptz_command()) return Answer(Status::kBadRequest);
  Member* member = fleet.MemberOfPtz(command.ptz_command().ptz_id());
  Status status = fleet.CheckThere(member, command.method_name());
  if (status == Status::kDone) status = action(*member, command.ptz_command());
  if (status != Status::kDone) return Answer(status);
  Member* follower = member->follower == 0 ? nullptr : fleet.MemberOfDevice(member->follower);
  if (fleet.CheckThere(follower, command.method_name()) == Status::kDone) {
    action(*follower, command.ptz_command());
  }
  return Answer(Status::kDone);
}

// The same for a camera that the service is logged in to.
template <class Action>
tutorial::VptzResponse OnPtz(Fleet& fleet, const tutorial::VptzCommand& command, Action action) {
  return OnAnyPtz(fleet, command, [&](Member& member, const tutorial::PtzCommand& ptz) {
    return member.camera.logged_in() ? action(member, ptz) : Status::kNotLoggedIn;
  });
}

}  // namespace vptzd

#endif
