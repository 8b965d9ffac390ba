// The time that calls to the service, made one after the other, may take
// altogether: without it an operation that asks for many things would wait a
// time-out for each of them when the service does not answer.
#ifndef VPTZ_SRC_TIME_BUDGET_H
#define VPTZ_SRC_TIME_BUDGET_H

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include "log.h"

namespace vptz {

// A call costs the time that it took, but nothing when it is answered within a
// tenth of the budget, and within a second: over a slow line a healthy service is
// asked for everything, for any number of devices. So all calls together take less
// than the budget, a second, and that share for each answer.
template <class Clock>
class BasicTimeBudget {
 public:
  // Seconds. 0 or less sets no limit: each call then gets this number.
  explicit BasicTimeBudget(int seconds) : seconds_(seconds), left_(std::chrono::seconds(seconds)) {}

  // Calls `call` with its time-out: what is left, rounded up to whole seconds.
  // Without a call -ETIMEDOUT when nothing is left; the log tells so once.
  template <class Call>
  int Spend(Call&& call) {
    if (seconds_ <= 0) return call(seconds_);
    if (left_ <= left_.zero()) return TellEnd();
    const typename Clock::time_point begin = Clock::now();
    const int result = call(static_cast<int>(std::chrono::ceil<std::chrono::seconds>(left_).count()));
    const std::chrono::nanoseconds took = Clock::now() - begin;
    if (!IsAnswer(result) || took > FreeOfAnswer()) left_ -= took;
    return result;
  }

 private:
  // A status of the service, refusals included. The bus's own failures are errno
  // values, which have three digits at most.
  static bool IsAnswer(int result) { return result >= 0 || result <= kHighestRefusal; }

  std::chrono::nanoseconds FreeOfAnswer() const {
    constexpr std::chrono::nanoseconds kMost = std::chrono::seconds(1);
    return std::min(std::chrono::nanoseconds(std::chrono::seconds(seconds_)) / 10, kMost);
  }

  int TellEnd() {
    if (!std::exchange(told_, true)) {
      VPTZ_LOG_AS("QueryNATuri", LogLevel::kWarning, log_source::kClient,
                  "The service takes too long, the other outside addresses are not asked for");
    }
    return -ETIMEDOUT;
  }

  static constexpr int kHighestRefusal = -1000;

  const int seconds_;
  std::chrono::nanoseconds left_;
  bool told_ = false;
};

using TimeBudget = BasicTimeBudget<std::chrono::steady_clock>;

}  // namespace vptz

#endif
