#ifndef DORV_BUS_WAITER_H
#define DORV_BUS_WAITER_H

#include <cerrno>
#include <chrono>
#include <condition_variable>

namespace dorv {

using Clock = std::chrono::steady_clock;
using TimePoint = Clock::time_point;

// A thread that waits for something that is read from the socket. Guarded by
// the connection's mutex.
struct Waiter {
  explicit Waiter(TimePoint until) : deadline(until) {}

  void Finish(int with) {
    done = true;
    result = with;
    wake.notify_one();
  }

  std::condition_variable wake;
  TimePoint deadline;
  int expiry_result = -ETIMEDOUT;  // the result when the deadline comes first
  bool done = false;
  bool leads = false;  // reads the socket, or has been asked to
  Waiter* next_follower = nullptr;
  int result = 0;
};

}  // namespace dorv

#endif
