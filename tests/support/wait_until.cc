#include "support/wait_until.h"

#include <thread>

namespace vptz_test {

void Breathe() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

}  // namespace vptz_test
