// Linked instead of the product's paths: a folder for every test process.
#include "installed_paths.h"
#include "support/temp_dir.h"

namespace vptz {
namespace {

const std::string& Folder() {
  static const vptz_test::TempDir folder;
  return folder.path();
}

}  // namespace

const char* ConfigFile() {
  static const std::string path = Folder() + "/vptz.conf";
  return path.c_str();
}

const char* DatabaseFile() {
  static const std::string path = Folder() + "/vptz.db";
  return path.c_str();
}

}  // namespace vptz
