#ifndef VPTZ_TESTS_RELIABILITY_EVERY_MILLISECOND_H
#define VPTZ_TESTS_RELIABILITY_EVERY_MILLISECOND_H

#include <signal.h>
#include <sys/time.h>

#include <atomic>

namespace vptz_test {

// Has SIGALRM sent to the process each millisecond, to a handler that lets no
// system call go on.
class EveryMillisecond {
 public:
  EveryMillisecond() {
    Signals() = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { ++Signals(); };
    sigaction(SIGALRM, &action, &before_);
    Set(1000);
  }
  ~EveryMillisecond() {
    Set(0);
    signal(SIGALRM, SIG_IGN);  // drops one that is still pending
    sigaction(SIGALRM, &before_, nullptr);
  }
  EveryMillisecond(const EveryMillisecond&) = delete;
  EveryMillisecond& operator=(const EveryMillisecond&) = delete;

  int Count() const { return Signals(); }

 private:
  static std::atomic<int>& Signals() {
    static std::atomic<int> signals{0};
    return signals;
  }
  static void Set(int microseconds) {
    const itimerval timer = {{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }

  struct sigaction before_ {};
};

}  // namespace vptz_test

#endif
