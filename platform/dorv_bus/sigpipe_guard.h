#ifndef DORV_BUS_SIGPIPE_GUARD_H
#define DORV_BUS_SIGPIPE_GUARD_H

#include <signal.h>

namespace dorv {

// libmosquitto writes to its socket in a way that raises SIGPIPE when the
// broker is gone. While a guard lives the signal is held off from its thread, and
// the guard takes away one that was raised here. A quiet thread needs none.
class SigpipeGuard {
 public:
  SigpipeGuard();
  ~SigpipeGuard();
  SigpipeGuard(const SigpipeGuard&) = delete;
  SigpipeGuard& operator=(const SigpipeGuard&) = delete;

  // The calling thread wrote to a lost connection: a signal may be pending.
  static void NoteBrokenPipe();

 private:
  sigset_t before_;
  const bool active_;
  bool was_pending_ = false;
};

}  // namespace dorv

#endif
