#include "reliability/reliability.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vptz_test {
namespace {

std::size_t EntriesOf(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

int Scaled(int ordinary, int full) {
  const char* wanted = std::getenv("VPTZ_RELIABILITY");
  return wanted != nullptr && std::strcmp(wanted, "long") == 0 ? full : ordinary;
}

std::size_t ThreadCount() { return EntriesOf("/proc/self/task"); }

std::size_t DescriptorCount() { return EntriesOf("/proc/self/fd"); }

std::size_t ResidentKib() {
  std::ifstream file("/proc/self/statm");
  std::size_t all = 0;
  std::size_t resident = 0;
  file >> all >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

bool MeasuresMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return false;
#else
  return true;
#endif
}

}  // namespace vptz_test
