#include "support/records.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <mutex>

namespace vptz_test {

void Record(const std::string& text) {
  static std::mutex mutex;
  const char* folder = std::getenv("VPTZ_TEST_RECORDS");
  if (folder == nullptr || text.empty()) return;
  const std::lock_guard<std::mutex> lock(mutex);
  std::ofstream(folder + ("/" + std::to_string(getpid())), std::ios::app) << text << '\n';
}

}  // namespace vptz_test
