#include "support/temp_dir.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace vptz_test {

namespace {

// In memory where that can be had: the databases of the tests then wait for no
// disk.
std::string Base() { return access("/dev/shm", W_OK | X_OK) == 0 ? "/dev/shm" : "/tmp"; }

}  // namespace

TempDir::TempDir() : path_(Base() + "/vptz-XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::system_error(errno, std::generic_category(), "mkdtemp");
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace vptz_test
