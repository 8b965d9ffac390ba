#ifndef VPTZ_TESTS_SUPPORT_MACHINE_DELAY_H
#define VPTZ_TESTS_SUPPORT_MACHINE_DELAY_H

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace vptz_test {

// Measures for how long the machine keeps a thread waiting that wants to run:
// one that wakes every few milliseconds notes when it comes late. A bound on a
// call's time can then be held against what the machine itself has taken.
class MachineDelay {
 public:
  using Clock = std::chrono::steady_clock;

  MachineDelay();
  ~MachineDelay();
  MachineDelay(const MachineDelay&) = delete;
  MachineDelay& operator=(const MachineDelay&) = delete;

  // How much of that time the machine took away.
  std::chrono::milliseconds Between(Clock::time_point begin, Clock::time_point end);

 private:
  struct Stall {
    Clock::time_point due;
    Clock::time_point came;
  };

  void Run();

  std::mutex mutex_;
  std::condition_variable changed_;
  bool stop_ = false;
  Clock::time_point due_;
  std::vector<Stall> stalls_;
  std::thread thread_;
};

// How long a thread (by a process's number: its first one) has waited for a
// processor so far; 0 where the kernel does not tell.
std::chrono::nanoseconds TimeQueued(pid_t thread);

}  // namespace vptz_test

#endif
