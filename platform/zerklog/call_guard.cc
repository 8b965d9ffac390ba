#include "call_guard.h"

#include <pthread.h>

#include <cerrno>
#include <ctime>

namespace zerk {
namespace {

constexpr int kWriteSignals[] = {SIGPIPE, SIGXFSZ};

}  // namespace

CallGuard::CallGuard() {
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
  sigset_t blocked;
  sigemptyset(&blocked);
  for (const int signal : kWriteSignals) {
    sigaddset(&blocked, signal);
  }
  sigemptyset(&pending_);
  sigpending(&pending_);
  pthread_sigmask(SIG_BLOCK, &blocked, &mask_);
}

CallGuard::~CallGuard() {
  DropOwnSignals();
  pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
  pthread_setcancelstate(cancel_state_, nullptr);
}

void CallGuard::DropOwnSignals() const {
  const timespec at_once = {};
  for (const int signal : kWriteSignals) {
    if (sigismember(&pending_, signal) == 1) {
      continue;
    }
    sigset_t own;
    sigemptyset(&own);
    sigaddset(&own, signal);
    while (sigtimedwait(&own, nullptr, &at_once) < 0 && errno == EINTR) {
    }
  }
}

}  // namespace zerk
