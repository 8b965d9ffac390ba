#include "command.h"
#include "session.h"

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

ExitCode MoveTo(Session& session) {
  VptzClient& client = session.client;
  const auto ptz = session.Integer("PTZ");
  const double pan = session.Number("--pan"), pan_speed = session.Number("--pan-speed");
  const double tilt = session.Number("--tilt"), tilt_speed = session.Number("--tilt-speed");
  const double zoom = session.Number("--zoom"), zoom_speed = session.Number("--zoom-speed");
  const int timeout = session.timeout;
  switch (AxesGiven(session)) {
    case kPan:
      return session.Finish(client.AbsolutePanMove(ptz, pan, pan_speed, timeout));
    case kTilt:
      return session.Finish(client.AbsoluteTiltMove(ptz, tilt, tilt_speed, timeout));
    case kPan | kTilt:
      return session.Finish(client.AbsolutePanTiltMove(ptz, pan, tilt, pan_speed, tilt_speed, timeout));
    case kZoom:
      return session.Finish(client.AbsoluteZoomMove(ptz, zoom, zoom_speed, timeout));
    default:
      return session.Finish(
          client.AbsoluteMove(ptz, pan, tilt, zoom, pan_speed, tilt_speed, zoom_speed, timeout));
  }
}

ExitCode MoveAt(Session& session) {
  VptzClient& client = session.client;
  const auto ptz = session.Integer("PTZ");
  const double pan = session.Number("--pan");
  const double tilt = session.Number("--tilt");
  const double zoom = session.Number("--zoom");
  const int timeout = session.timeout;
  switch (AxesGiven(session)) {
    case kPan:
      return session.Finish(client.ContinuousPanMove(ptz, pan, timeout));
    case kTilt:
      return session.Finish(client.ContinuousTiltMove(ptz, tilt, timeout));
    case kPan | kTilt:
      return session.Finish(client.ContinuousPanTiltMove(ptz, pan, tilt, timeout));
    case kZoom:
      return session.Finish(client.ContinuousZoomMove(ptz, zoom, timeout));
    default:
      return session.Finish(client.ContinuousMove(ptz, pan, tilt, zoom, timeout));
  }
}

ExitCode Stop(Session& session) {
  VptzClient& client = session.client;
  const auto ptz = session.Integer("PTZ");
  bool pan = session.Flag("--pan"), tilt = session.Flag("--tilt"), zoom = session.Flag("--zoom");
  if (!pan && !tilt && !zoom) pan = tilt = zoom = true;
  session.result.SetArgument("pan", pan);
  session.result.SetArgument("tilt", tilt);
  session.result.SetArgument("zoom", zoom);
  if (pan && tilt && !zoom) return session.Finish(client.PanTiltStop(ptz, session.timeout));
  if (!pan && !tilt && zoom) return session.Finish(client.ZoomStop(ptz, session.timeout));
  return session.Finish(client.PtzStop(ptz, pan, tilt, zoom, session.timeout));
}

ExitCode Home(Session& session) {
  const auto ptz = session.Integer("PTZ");
  if (session.Flag("--set")) return session.Finish(session.client.SetHome(ptz, session.timeout));
  return session.Finish(session.client.GotoHome(ptz, session.Number("--pan-speed"),
                                                session.Number("--tilt-speed"), session.Number("--zoom-speed"),
                                                session.timeout));
}

ExitCode Track(Session& session) {
  return session.Finish(
      session.client.SetTrackMode(session.Integer("PTZ"), session.Integer("MODE"), session.timeout));
}

Argument Ptz() { return Id("PTZ", "row id of the PTZ node"); }

Argument Speed(const std::string& name, const std::string& placeholder, const std::string& unit,
               const std::string& unit_in_words) {
  return NumberAtLeast(name, placeholder, unit, 0,
                       "speed in " + unit_in_words + " per second; without it the top speed");
}

Argument PanSpeed() { return Speed("--pan-speed", "DEG/S", "deg/s", "degrees"); }
Argument TiltSpeed() { return Speed("--tilt-speed", "DEG/S", "deg/s", "degrees"); }
Argument ZoomSpeed() { return Speed("--zoom-speed", "X/S", "x/s", "magnification"); }

}  // namespace

std::vector<Command> MotionCommands() {
  const std::vector<std::string> axes = {"--pan", "--tilt", "--zoom"};
  return {
      {"move",
       "to",
       "Moves to a position and stops there. Axes without a position are left alone.",
       {"AbsoluteMove", "AbsolutePanMove", "AbsoluteTiltMove", "AbsolutePanTiltMove", "AbsoluteZoomMove"},
       {Ptz(), Number("--pan", "DEG", "deg", "position in degrees, positive to the right"),
        Number("--tilt", "DEG", "deg", "position in degrees, positive upwards"),
        Number("--zoom", "X", "x", "magnification factor"), PanSpeed().Needs("--pan"),
        TiltSpeed().Needs("--tilt"), ZoomSpeed().Needs("--zoom")},
       axes,
       MoveTo},
      {"move",
       "at",
       "Moves until stopped, or to a limit. Axes without a velocity are left alone.",
       {"ContinuousMove", "ContinuousPanMove", "ContinuousTiltMove", "ContinuousPanTiltMove",
        "ContinuousZoomMove"},
       {Ptz(), Number("--pan", "DEG/S", "deg/s", "velocity in degrees per second, positive to the right"),
        Number("--tilt", "DEG/S", "deg/s", "velocity in degrees per second, positive upwards"),
        Number("--zoom", "X/S", "x/s", "velocity in magnification per second, positive zooms in")},
       axes,
       MoveAt},
      {"",
       "stop",
       "Stops axes, whatever moves them: all of them, or those that are named.",
       {"PtzStop", "PanTiltStop", "ZoomStop"},
       {Ptz(), Flag("--pan", "stop pan"), Flag("--tilt", "stop tilt"), Flag("--zoom", "stop zoom")},
       {},
       Stop},
      {"",
       "home",
       "Moves to the home position, or stores the present position as home.",
       {"GotoHome", "SetHome"},
       {Ptz(),
        Flag("--set", "store the present position as home")
            .Excludes({"--pan-speed", "--tilt-speed", "--zoom-speed"}),
        PanSpeed(), TiltSpeed(), ZoomSpeed()},
       {},
       Home},
      {"",
       "track",
       "Sets the tracking mode.",
       {"SetTrackMode"},
       {Ptz(), Integer("MODE", {0, kLargestInteger}, "tracking mode, a number of the service's")},
       {},
       Track},
  };
}

}  // namespace vptzctl
