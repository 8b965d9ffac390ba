// ptz drive: velocities, and the stop behind them.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "command.h"
#include "interrupt.h"
#include "session.h"

namespace vptzctl {
namespace {

using std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// Well within any grace period that a service gives its driver.
constexpr std::chrono::milliseconds kRepeat(500);

// So long after the last velocity, because the program was held still for instance,
// the service may have stopped the camera. A repeat would set it moving again when
// nobody expects that.
constexpr std::chrono::milliseconds kTooLate(2500);

// How long a stop is tried, and how often.
constexpr std::chrono::seconds kInsist(30);
constexpr std::chrono::milliseconds kPause(200);

// The reference service's refusal for a camera that does not answer, which may
// do so a moment later.
constexpr int kOffline = -1010;

constexpr unsigned kPan = 1;
constexpr unsigned kTilt = 2;
constexpr unsigned kZoom = 4;

int SendVelocity(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  const double pan = session.Number("--pan");
  const double tilt = session.Number("--tilt");
  const double zoom = session.Number("--zoom");
  const int timeout = session.timeout;
  switch ((session.Given("--pan") ? kPan : 0) | (session.Given("--tilt") ? kTilt : 0) |
          (session.Given("--zoom") ? kZoom : 0)) {
    case kPan:
      return camera.ContinuousPanMove(pan, node, timeout);
    case kTilt:
      return camera.ContinuousTiltMove(tilt, node, timeout);
    case kPan | kTilt:
      return camera.ContinuousPanTiltMove(pan, tilt, node, timeout);
    case kZoom:
      return camera.ContinuousZoomMove(zoom, node, timeout);
    default:
      return camera.ContinuousMove(pan, tilt, zoom, node, timeout);
  }
}

bool MayArriveLater(int status) {
  return status == kOffline || (Explain(status).exit_code != ExitCode::kRefused && status != -1);
}

// Stops the axes that were driven. What may be cured by time is tried again.
int InsistOnStop(Session& session) {
  const auto end = steady_clock::now() + kInsist;
  while (true) {
    const int status =
        session.camera().PtzStop(session.PtzIndex(), session.Given("--pan"), session.Given("--tilt"),
                                 session.Given("--zoom"), session.timeout);
    if (status == 0 || !MayArriveLater(status) || steady_clock::now() >= end) return status;
    session.output.Progress("stopping, the last attempt failed: " + Explain(status).message);
    std::this_thread::sleep_for(kPause);
  }
}

// Whether the camera may be moving after that answer to a velocity.
bool MayMove(int status) {
  const ExitCode meaning = Explain(status).exit_code;
  return status == 0 || meaning == ExitCode::kTimeout || meaning == ExitCode::kOther;
}

ExitCode Stopped(Session& session, int driven, Seconds elapsed) {
  const int stopped = InsistOnStop(session);
  if (stopped != 0) return session.Fail(stopped, "; the stop has not arrived, the camera may still move");
  if (driven != 0) return session.Fail(driven, "; the camera was stopped");
  session.result.answers = {{"stopped", true, ""}, {"elapsed", RoundedToThousandths(elapsed.count()), "s"}};
  return session.Finish(0);
}

// Holds the velocity as a hand holds a joystick.
ExitCode DriveFor(Session& session) {
  session.TakesItsTime();
  const Interrupt interrupt;
  const auto begin = steady_clock::now();
  const auto end = begin + std::chrono::duration_cast<steady_clock::duration>(Seconds(session.Number("--for")));
  steady_clock::time_point sent = begin;
  int status = SendVelocity(session);
  if (!MayMove(status)) return session.Fail(status);
  while (status == 0) {
    const bool interrupted = interrupt.WaitFor(std::min<Seconds>(kRepeat, end - steady_clock::now()));
    const steady_clock::time_point now = steady_clock::now();
    if (interrupted || now >= end || now - sent > kTooLate) break;
    sent = now;
    status = SendVelocity(session);
  }
  return Stopped(session, status, steady_clock::now() - begin);
}

ExitCode Drive(Session& session) {
  return session.Given("--for") ? DriveFor(session) : session.Finish(SendVelocity(session));
}

}  // namespace

std::vector<Command> DriveCommands() {
  return {
      {"ptz",
       "drive",
       "Moves until stopped or at a limit, and no longer than the service's grace period unless --for holds "
       "it. "
       "Leaves axes without a velocity alone.",
       {"ContinuousMove", "ContinuousPanMove", "ContinuousTiltMove", "ContinuousPanTiltMove",
        "ContinuousZoomMove", "PtzStop"},
       {Camera(), Number("--pan", "DEG/S", "deg/s", "velocity in degrees per second, positive to the right"),
        Number("--tilt", "DEG/S", "deg/s", "velocity in degrees per second, positive upwards"),
        Number("--zoom", "X/S", "x/s", "velocity in magnification per second, positive zooms in"),
        NumberWithin("--for", "S", "s", {0.01, 86400},
                     "repeat the velocity for that many seconds, then stop; Ctrl-C stops at once"),
        Profile("PTZ profile")},
       {"--pan", "--tilt", "--zoom"},
       Drive}};
}

}  // namespace vptzctl
