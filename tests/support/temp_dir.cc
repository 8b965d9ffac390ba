#include "support/temp_dir.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace vptz_test {

TempDir::TempDir() : path_("/tmp/vptz-XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::system_error(errno, std::generic_category(), "mkdtemp");
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace vptz_test
