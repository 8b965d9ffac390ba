// What a call of the log must leave as it was.
#ifndef ZERKLOG_CALL_GUARD_H
#define ZERKLOG_CALL_GUARD_H

#include <csignal>

namespace zerk {

// Lives as long as a line is being written. Keeps a reader that went away
// (SIGPIPE) or a file that may not grow (SIGXFSZ) from ending the process, and
// holds back the cancellation of the thread.
class CallGuard {
 public:
  CallGuard();
  ~CallGuard();
  CallGuard(const CallGuard&) = delete;
  CallGuard& operator=(const CallGuard&) = delete;

 private:
  void DropOwnSignals() const;

  int cancel_state_ = 0;
  sigset_t mask_;     // of the thread, before
  sigset_t pending_;  // signals that were waiting already
};

}  // namespace zerk

#endif
