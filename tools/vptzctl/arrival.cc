#include "arrival.h"

#include <cmath>

#include <vptz/wait.h>

#include "session.h"

namespace vptzctl {
namespace {

constexpr char kWait[] = "--wait";
constexpr char kLimit[] = "--limit";

// Between two readings, long enough for a camera to have begun to move.
constexpr std::chrono::milliseconds kPause(200);

}  // namespace

std::vector<Argument> WaitArguments() {
  return {Flag(kWait, "end when the camera is still; Ctrl-C ends the waiting, not the motion").Unreported(),
          Integer(kLimit, {1, 86400}, "seconds to wait for that")
              .Placeholder("S")
              .Needs(kWait)
              .Else(std::uint32_t{60})
              .Unreported()};
}

Arrival::Arrival(Session& session) : session_(session) {
  if (!session.Flag(kWait)) return;
  session.TakesItsTime();
  interrupt_.emplace();
}

ExitCode Arrival::Finish(int status) { return interrupt_ && status == 0 ? Wait() : session_.Finish(status); }

ExitCode Arrival::Wait() {
  std::optional<VptzPtzData> before;
  while (Elapsed() < Seconds(session_.Integer(kLimit))) {
    VptzPtzData now;
    const int status =
        session_.client().QueryPtzProfiles(session_.camera().id, session_.Ptz().node, &now, session_.timeout);
    if (interrupt_->Arrived()) return Interrupted();
    if (status != 0) return session_.Fail(status, "; the camera moves all the same");
    if (before && VptzIsStill(*before, now)) return Arrived();
    before = now;
    session_.output.Progress("moving, " + std::to_string(std::lround(Elapsed().count())) + " s");
    if (interrupt_->WaitFor(kPause)) return Interrupted();
  }
  throw CommandError(
      {"unfinished",
       "the camera still moves after " + std::to_string(session_.Integer(kLimit)) + " s; it goes on",
       ExitCode::kTimeout});
}

ExitCode Arrival::Arrived() {
  session_.result.answers = {{"still", true, ""}, {"elapsed", RoundedToThousandths(Elapsed().count()), "s"}};
  return session_.Finish(0);
}

ExitCode Arrival::Interrupted() {
  session_.result.answers = {{"still", false, ""}, {"elapsed", RoundedToThousandths(Elapsed().count()), "s"}};
  const ExitCode exit_code = session_.Finish(0);
  session_.output.Note("the waiting has ended; the camera goes on");
  return exit_code;
}

}  // namespace vptzctl
