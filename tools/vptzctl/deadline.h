// Bounds a command whose calls are bounded one by one only.
#ifndef VPTZCTL_DEADLINE_H
#define VPTZCTL_DEADLINE_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace vptzctl {

// Calls `expired` on a thread of its own when the time is over. That function
// ends the program: a library call that lasts cannot be taken back.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  Deadline(Clock::duration time, std::function<void()> expired);
  ~Deadline();
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;

  // While a person is asked, no time goes by.
  void Pause();
  void Resume();

  // The command has ended by itself. Does not return when the time was over
  // before, so that only one of the two tells how it ended.
  void Meet();

 private:
  void Run();

  std::function<void()> expired_function_;
  std::mutex mutex_;
  std::condition_variable changed_;
  Clock::time_point end_;
  Clock::time_point paused_at_;
  bool paused_ = false;
  bool met_ = false;
  bool expired_ = false;
  std::thread thread_;  // the last: it uses the others
};

}  // namespace vptzctl

#endif
