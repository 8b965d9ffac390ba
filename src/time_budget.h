// The time that calls to the service, made one after the other, may take
// altogether: without it an operation that asks for many things would wait a
// time-out for each of them when the service does not answer.
#ifndef VPTZ_SRC_TIME_BUDGET_H
#define VPTZ_SRC_TIME_BUDGET_H

#include <cerrno>
#include <chrono>

namespace vptz {

class TimeBudget {
 public:
  // Seconds. 0 or less sets no limit: each call then gets this number.
  explicit TimeBudget(int seconds) : seconds_(seconds), left_(std::chrono::seconds(seconds)) {}

  // Calls `call` with its time-out: what is left, rounded up to whole seconds. So
  // all calls together take less than a second more than the budget, beside those
  // that come back at once. Without a call -ETIMEDOUT when nothing is left.
  template <class Call>
  int Spend(Call&& call) {
    using std::chrono::steady_clock;
    if (seconds_ <= 0) return call(seconds_);
    if (left_ <= left_.zero()) return -ETIMEDOUT;
    const steady_clock::time_point begin = steady_clock::now();
    const int result = call(static_cast<int>(std::chrono::ceil<std::chrono::seconds>(left_).count()));
    const steady_clock::duration took = steady_clock::now() - begin;
    if (took >= kAtOnce) left_ -= took;
    return result;
  }

 private:
  // Calls that take less cost nothing: a healthy service is asked for everything,
  // for however many devices.
  static constexpr std::chrono::milliseconds kAtOnce{10};

  const int seconds_;
  std::chrono::nanoseconds left_;
};

}  // namespace vptz

#endif
