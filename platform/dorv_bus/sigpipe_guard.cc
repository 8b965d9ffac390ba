#include "sigpipe_guard.h"

#include <cerrno>
#include <ctime>

#include "quiet_thread.h"

namespace dorv {
namespace {

thread_local bool broken_pipe = false;

sigset_t JustSigpipe() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  return set;
}

}  // namespace

SigpipeGuard::SigpipeGuard() : active_(!IsQuietThread()) {
  if (!active_) {
    return;
  }
  const sigset_t sigpipe = JustSigpipe();
  pthread_sigmask(SIG_BLOCK, &sigpipe, &before_);
  if (sigismember(&before_, SIGPIPE) == 1) {
    // The application holds it back itself; one that waits already stays.
    sigset_t pending;
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
  }
}

SigpipeGuard::~SigpipeGuard() {
  if (!active_) {
    return;
  }
  const int saved_errno = errno;
  if (broken_pipe && !was_pending_) {
    const sigset_t sigpipe = JustSigpipe();
    const timespec at_once{};
    while (sigtimedwait(&sigpipe, nullptr, &at_once) < 0 && errno == EINTR) {
    }
  }
  broken_pipe = false;
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  errno = saved_errno;
}

void SigpipeGuard::NoteBrokenPipe() { broken_pipe = true; }

}  // namespace dorv
