#include "command.h"
#include "session.h"

namespace vptzctl {
namespace {

ExitCode Switch(Session& session) {
  return session.Finish(session.camera().SwitchFocusMode(session.MediaIndex(), session.timeout));
}

ExitCode Far(Session& session) {
  return session.Finish(
      session.camera().FocusFar(session.Text("--drive"), session.MediaIndex(), session.timeout));
}

ExitCode Near(Session& session) {
  return session.Finish(
      session.camera().FocusNear(session.Text("--drive"), session.MediaIndex(), session.timeout));
}

ExitCode Stop(Session& session) {
  return session.Finish(
      session.camera().FocusStop(session.Text("--drive"), session.MediaIndex(), session.timeout));
}

Argument MediaProfile() { return Profile("media profile"); }

Command DriveRow(const std::string& verb, const std::string& help, const std::string& operation,
                 ExitCode (*run)(Session&)) {
  const Argument drive =
      Text("--drive", "TEXT", "how the focus is driven, a text of the service's; without it an empty one");
  return {"focus", verb, help, {operation}, {Camera(), drive, MediaProfile()}, {}, run};
}

}  // namespace

std::vector<Command> FocusCommands() {
  return {
      DriveRow("far", "Drives the focus into the distance until it is stopped.", "FocusFar", Far),
      DriveRow("near", "Drives the focus closer until it is stopped.", "FocusNear", Near),
      DriveRow("stop", "Stops the focus.", "FocusStop", Stop),
      {"focus",
       "switch",
       "Switches between automatic and manual focus.",
       {"SwitchFocusMode"},
       {Camera(), MediaProfile()},
       {},
       Switch},
  };
}

}  // namespace vptzctl
