#ifndef DORV_BUS_WAITER_H
#define DORV_BUS_WAITER_H

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <vector>

namespace dorv {

using Clock = std::chrono::steady_clock;
using TimePoint = Clock::time_point;

// A thread that waits for something that is read from the socket. The connection's
// mutex guards it.
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
  int result = 0;

  // For SharedSocket.
  bool has_turn = false;  // reads the socket, or has been asked to
  Waiter* next_in_queue = nullptr;
};

// Threads that wait for events, which numbers tell apart: the broker's
// confirmations, by message id.
class EventWaiters {
 public:
  // Makes room for one more Add, which then needs no memory.
  void Reserve() { waiting_.reserve(waiting_.size() + 1); }
  void Add(int event, Waiter* waiter) { waiting_.push_back({event, waiter}); }
  void Remove(const Waiter& waiter) {
    waiting_.erase(std::remove_if(waiting_.begin(), waiting_.end(),
                                  [&](const Waiting& one) { return one.waiter == &waiter; }),
                   waiting_.end());
  }

  // The event has happened, with that result.
  void Finish(int event, int result) {
    for (const Waiting& one : waiting_) {
      if (one.event == event) {
        one.waiter->Finish(result);
      }
    }
  }
  void FinishAll(int result) {
    for (const Waiting& one : waiting_) {
      one.waiter->Finish(result);
    }
    waiting_.clear();
  }

 private:
  struct Waiting {
    int event;
    Waiter* waiter;
  };

  std::vector<Waiting> waiting_;
};

}  // namespace dorv

#endif
