#include "database.h"

#include <filesystem>
#include <memory>

#include <vptz/model/vptzmodel.h>
#include <odb/sqlite/database.hxx>

#include "storage.h"

namespace vptzd {
namespace {

std::unique_ptr<odb::sqlite::database> own_database;

}  // namespace

bool OpenDatabase(const std::string& path, const std::string& seed_file) {
  own_database.reset();
  if (VptzModel::Instance().Initialize(path, "vptz", seed_file) != 0) return false;
  // Absolute, so that no name is taken for one of SQLite's special ones.
  own_database =
      std::make_unique<odb::sqlite::database>(std::filesystem::absolute(path).string(), SQLITE_OPEN_READWRITE);
  return true;
}

odb::sqlite::database& OwnDatabase() {
  if (own_database == nullptr || !VptzModel::Instance().IsConnected()) throw StorageError("no open database");
  return *own_database;
}

}  // namespace vptzd
