#include "support/machine_delay.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>

namespace vptz_test {
namespace {

constexpr std::chrono::milliseconds kInterval{5};

}  // namespace

MachineDelay::MachineDelay() : due_(Clock::now()), thread_([this] { Run(); }) {}

MachineDelay::~MachineDelay() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void MachineDelay::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stop_) {
    due_ = Clock::now() + kInterval;
    changed_.wait_until(lock, due_);
    const Clock::time_point now = Clock::now();
    if (now - due_ > std::chrono::milliseconds(1)) stalls_.push_back({due_, now});
  }
}

std::chrono::milliseconds MachineDelay::Between(Clock::time_point begin, Clock::time_point end) {
  const std::lock_guard<std::mutex> lock(mutex_);
  Clock::duration sum{};
  const auto add = [&](const Stall& stall) {
    sum += std::max(Clock::duration::zero(), std::min(stall.came, end) - std::max(stall.due, begin));
  };
  for (const Stall& stall : stalls_) add(stall);
  add({due_, Clock::now()});  // one that goes on
  return std::chrono::ceil<std::chrono::milliseconds>(sum);
}

std::chrono::nanoseconds TimeQueued(pid_t thread) {
  std::ifstream file("/proc/" + std::to_string(thread) + "/schedstat");
  std::int64_t ran = 0;
  std::int64_t queued = 0;
  file >> ran >> queued;
  return std::chrono::nanoseconds(queued);
}

}  // namespace vptz_test
