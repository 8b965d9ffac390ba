// Where the simulation takes its time from.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_CLOCK_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_CLOCK_H

#include <chrono>

namespace vptzd {

class Clock {
 public:
  virtual ~Clock() = default;

  // Time since some fixed moment; never runs backwards.
  virtual std::chrono::nanoseconds Now() const = 0;
};

// The machine's own steady time.
class SteadyClock final : public Clock {
 public:
  std::chrono::nanoseconds Now() const override { return std::chrono::steady_clock::now().time_since_epoch(); }
};

}  // namespace vptzd

#endif
