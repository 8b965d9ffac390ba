#ifndef VPTZ_TESTS_SUPPORT_TEMP_DIR_H
#define VPTZ_TESTS_SUPPORT_TEMP_DIR_H

#include <string>

namespace vptz_test {

// A folder of its own that goes with the object. Its path is short enough for
// a Unix socket inside it.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace vptz_test

#endif
