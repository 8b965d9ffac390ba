#ifndef VPTZ_SRC_MODEL_FILE_LAYER_H
#define VPTZ_SRC_MODEL_FILE_LAYER_H

#include <sqlite3.h>

#include <string>

namespace vptz {

// SQLite's default way to files, under a name that nothing else has. The mapper
// lets its connections share one cache. SQLite shares it among all connections in
// the process to a path by the same way, and with it the file that is open: also
// with those of a database that is just being closed, whose file may meanwhile be
// another one, or be forbidden.
class FileLayer {
 public:
  FileLayer();
  ~FileLayer();
  FileLayer(const FileLayer&) = delete;
  FileLayer& operator=(const FileLayer&) = delete;

  const std::string& name() const { return name_; }

 private:
  const std::string name_;
  sqlite3_vfs layer_{};
};

}  // namespace vptz

#endif
