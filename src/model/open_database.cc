#include "model/open_database.h"

#include <odb/sqlite/connection-factory.hxx>

#include <memory>

#include "model/sql_script.h"

namespace vptz {
namespace {

// Has room for all its connections from the moment each is made: to give one back
// is part of its destruction and must not run out of memory.
class ConnectionPool : public odb::sqlite::connection_pool_factory {
 private:
  pooled_connection_ptr create() override {
    connections_.reserve(++made_);
    return connection_pool_factory::create();
  }

  std::size_t made_ = 0;
};

}  // namespace

OpenDatabase::OpenDatabase(const std::string& path, int flags)
    : database_(AsPath(path), flags, true, layer_.name(), std::make_unique<ConnectionPool>()) {}

int OpenDatabase::SchemaVersion(const std::string& schema) {
  const std::lock_guard<std::mutex> lock(versions_);
  return static_cast<int>(database_.schema_version(schema));
}

}  // namespace vptz
