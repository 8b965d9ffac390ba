#ifndef VPTZ_TESTS_SUPPORT_WAIT_UNTIL_H
#define VPTZ_TESTS_SUPPORT_WAIT_UNTIL_H

#include <chrono>

namespace vptz_test {

// Lets other threads and processes run for about a millisecond.
void Breathe();

// How many times longer than usual what must come is waited for: the number in the
// environment variable VPTZ_TEST_PATIENCE, for programs that are slowed down.
int Patience();

// Waits for a condition that cannot announce itself. False when it does not
// hold within the limit.
template <class F>
bool WaitUntil(F condition, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
  const auto end = std::chrono::steady_clock::now() + limit * Patience();
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    Breathe();
  }
  return true;
}

}  // namespace vptz_test

#endif
