// Waits for the end of a motion, as the verbs that begin one offer it.
#ifndef VPTZCTL_ARRIVAL_H
#define VPTZCTL_ARRIVAL_H

#include <chrono>
#include <optional>
#include <vector>

#include "arguments.h"
#include "failures.h"
#include "interrupt.h"

namespace vptzctl {

class Session;

// --wait and --limit.
std::vector<Argument> WaitArguments();

// Made before the motion is commanded, so that a Ctrl-C at any time later ends
// the waiting and nothing else.
class Arrival {
 public:
  explicit Arrival(Session& session);

  // Ends the command: at once, or with --wait when the camera is still.
  ExitCode Finish(int status);

 private:
  using Seconds = std::chrono::duration<double>;

  ExitCode Wait();
  ExitCode Interrupted();
  ExitCode Arrived();
  Seconds Elapsed() const { return std::chrono::steady_clock::now() - begin_; }

  Session& session_;
  std::optional<Interrupt> interrupt_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

}  // namespace vptzctl

#endif
