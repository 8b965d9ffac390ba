#include "support/wait_until.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

namespace vptz_test {

int Patience() {
  const char* const times = std::getenv("VPTZ_TEST_PATIENCE");
  return times == nullptr ? 1 : std::max(1, std::atoi(times));
}

void Breathe() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

}  // namespace vptz_test
