// Linked into the tool instead of the product's paths: each test runs it with a
// folder of its own.
#include <cstdlib>
#include <string>

#include "installed_paths.h"

namespace vptz {
namespace {

std::string InFolder(const char* name) {
  const char* folder = std::getenv("VPTZ_TEST_FOLDER");
  return std::string(folder ? folder : "/nonexistent") + "/" + name;
}

}  // namespace

const char* ConfigFile() {
  static const std::string path = InFolder("vptz.conf");
  return path.c_str();
}

const char* DatabaseFile() {
  static const std::string path = InFolder("vptz.db");
  return path.c_str();
}

}  // namespace vptz
