#include "arrival.h"
#include "command.h"
#include "session.h"
#include "speeds.h"

namespace vptzctl {
namespace {

// Sets of axes, to choose the operation that commands exactly these.
constexpr unsigned kPan = 1;
constexpr unsigned kTilt = 2;
constexpr unsigned kZoom = 4;

unsigned AxesGiven(const Session& session) {
  return (session.Given("--pan") ? kPan : 0) | (session.Given("--tilt") ? kTilt : 0) |
         (session.Given("--zoom") ? kZoom : 0);
}

int SendPosition(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  const double pan = session.Number("--pan"), pan_speed = session.Number("--pan-speed");
  const double tilt = session.Number("--tilt"), tilt_speed = session.Number("--tilt-speed");
  const double zoom = session.Number("--zoom"), zoom_speed = session.Number("--zoom-speed");
  const int timeout = session.timeout;
  switch (AxesGiven(session)) {
    case kPan:
      return camera.AbsolutePanMove(pan, pan_speed, node, timeout);
    case kTilt:
      return camera.AbsoluteTiltMove(tilt, tilt_speed, node, timeout);
    case kPan | kTilt:
      return camera.AbsolutePanTiltMove(pan, tilt, pan_speed, tilt_speed, node, timeout);
    case kZoom:
      return camera.AbsoluteZoomMove(zoom, zoom_speed, node, timeout);
    default:
      return camera.AbsoluteMove(pan, tilt, zoom, pan_speed, tilt_speed, zoom_speed, node, timeout);
  }
}

ExitCode Move(Session& session) {
  Arrival arrival(session);
  return arrival.Finish(SendPosition(session));
}

ExitCode Stop(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  bool pan = session.Flag("--pan"), tilt = session.Flag("--tilt"), zoom = session.Flag("--zoom");
  if (!pan && !tilt && !zoom) pan = tilt = zoom = true;
  session.result.SetArgument("pan", pan);
  session.result.SetArgument("tilt", tilt);
  session.result.SetArgument("zoom", zoom);
  if (pan && tilt && !zoom) return session.Finish(camera.PanTiltStop(node, session.timeout));
  if (!pan && !tilt && zoom) return session.Finish(camera.ZoomStop(node, session.timeout));
  return session.Finish(camera.PtzStop(node, pan, tilt, zoom, session.timeout));
}

ExitCode Home(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  if (session.Flag("--set")) return session.Finish(camera.SetHome(node, session.timeout));
  Arrival arrival(session);
  return arrival.Finish(camera.GotoHome(session.Number("--pan-speed"), session.Number("--tilt-speed"),
                                        session.Number("--zoom-speed"), node, session.timeout));
}

// The camera's own operation of that name reads all its profiles as well.
ExitCode Track(Session& session) {
  return session.Finish(
      session.client().SetTrackMode(session.Ptz().id, session.Integer("MODE"), session.timeout));
}

ExitCode Refresh(Session& session) { return session.Finish(session.camera().UpdatePtzStatus(session.timeout)); }

Argument Node() { return Profile("PTZ profile"); }

Command MoveRow() {
  return {"ptz",
          "move",
          "Moves to a position and stops there. Leaves axes without a position alone.",
          {"AbsoluteMove", "AbsolutePanMove", "AbsoluteTiltMove", "AbsolutePanTiltMove", "AbsoluteZoomMove"},
          {Camera(), Number("--pan", "DEG", "deg", "position in degrees, positive to the right"),
           Number("--tilt", "DEG", "deg", "position in degrees, positive upwards"),
           Number("--zoom", "X", "x", "magnification factor"), PanSpeed().Needs("--pan"),
           TiltSpeed().Needs("--tilt"), ZoomSpeed().Needs("--zoom"), Node(), WaitArguments()[0],
           WaitArguments()[1]},
          {"--pan", "--tilt", "--zoom"},
          Move};
}

Command HomeRow() {
  const Argument set = Flag("--set", "store the present position as home")
                           .Excludes({"--pan-speed", "--tilt-speed", "--zoom-speed", "--wait"});
  return {"ptz",
          "home",
          "Moves to the home position, or stores the present position as home.",
          {"GotoHome", "SetHome"},
          {Camera(), set, PanSpeed(), TiltSpeed(), ZoomSpeed(), Node(), WaitArguments()[0], WaitArguments()[1]},
          {},
          Home};
}

}  // namespace

std::vector<Command> MotionCommands() {
  return {
      MoveRow(),
      {"ptz",
       "stop",
       "Stops all axes, or the named ones, whatever moves them.",
       {"PtzStop", "PanTiltStop", "ZoomStop"},
       {Camera(), Flag("--pan", "stop pan"), Flag("--tilt", "stop tilt"), Flag("--zoom", "stop zoom"), Node()},
       {},
       Stop},
      HomeRow(),
      {"ptz",
       "track",
       "Sets the tracking mode.",
       {"SetTrackMode"},
       {Camera(), Integer("MODE", {0, kLargestInteger}, "tracking mode, a number of the service's"), Node()},
       {},
       Track},
      {"ptz",
       "refresh",
       "Has the service read from the camera where its PTZ profiles stand, into the database.",
       {"UpdatePtzStatus"},
       {Camera()},
       {},
       Refresh},
  };
}

}  // namespace vptzctl
