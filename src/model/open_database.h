#ifndef VPTZ_SRC_MODEL_OPEN_DATABASE_H
#define VPTZ_SRC_MODEL_OPEN_DATABASE_H

#include <vptz/model/odb.h>

#include <odb/sqlite/database.hxx>

#include <memory>
#include <mutex>
#include <string>

#include "model/file_layer.h"

namespace vptz {

// One database file and the connections to it. Every operation that uses it owns
// a share of it, so it is closed when the last of them has ended.
class OpenDatabase {
 public:
  // By itself opens no file: each connection does. `flags` are SQLite's.
  OpenDatabase(const std::string& path, int flags);

  odb::database& mapper() { return database_; }

  // The version that the file records for a schema; 0 when none. Throws the
  // mapper's exceptions.
  int SchemaVersion(const std::string& schema);

  // Expires when the last connection is closed. A weak_ptr to the object itself
  // expires before its destruction begins.
  std::weak_ptr<const void> Life() const { return life_; }

 private:
  const std::shared_ptr<const void> life_ = std::make_shared<char>();  // first, so that it ends last
  std::mutex versions_;                                                // the mapper keeps what it has read
  const FileLayer layer_;
  odb::sqlite::database database_;
};

}  // namespace vptz

#endif
