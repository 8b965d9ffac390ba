#include "store/database.h"

#include <filesystem>
#include <memory>

#include <vptz/model/vptzmodel.h>
#include <odb/exceptions.hxx>
#include <odb/sqlite/database.hxx>
#include <odb/sqlite/exceptions.hxx>

#include "log.h"
#include "store/row_access.h"

namespace vptzd {
namespace {

// The same file once more, for what the model does not do in one transaction.
std::unique_ptr<odb::sqlite::database> own_database;

odb::sqlite::database& OwnDatabase() {
  if (own_database == nullptr || !VptzModel::Instance().IsConnected()) throw StorageError("no open database");
  return *own_database;
}

[[noreturn]] void Refuse(const char* what, const odb::exception& error) {
  VPTZD_LOG(LogLevel::kError, "the database takes no %s: %s", what, error.what());
  const std::string message = std::string("the database takes no ") + what;
  const auto* reason = dynamic_cast<const odb::sqlite::database_exception*>(&error);
  const int code = reason == nullptr ? SQLITE_OK : reason->error();
  if (code == SQLITE_FULL || code == SQLITE_IOERR) throw NoRoom(message);
  throw StorageError(message);
}

// What `action` returns; what the mapper throws is told as a StorageError.
template <class Action>
auto Told(const char* what, Action action) {
  try {
    return action();
  } catch (const odb::exception& error) {
    Refuse(what, error);
  }
}

odb::sqlite::connection_ptr Connect() {
  return Told("change", [] {
    odb::sqlite::connection_ptr connection = OwnDatabase().connection();
    connection->execute("PRAGMA busy_timeout = 4000");
    return connection;
  });
}

}  // namespace

bool OpenDatabase(const std::string& path, const std::string& seed_file) {
  own_database.reset();
  if (VptzModel::Instance().Initialize(path, "vptz", seed_file) != 0) return false;
  // Absolute, so that no name is taken for one of SQLite's special ones.
  own_database =
      std::make_unique<odb::sqlite::database>(std::filesystem::absolute(path).string(), SQLITE_OPEN_READWRITE);
  return true;
}

odb::sqlite::transaction_impl* Transaction::Begin(odb::sqlite::connection& connection) {
  return Told("change", [&] { return connection.begin_immediate(); });
}

Transaction::Transaction() : connection_(Connect()), transaction_(Begin(*connection_)) {}

void Transaction::Do(const char* what, const std::function<void(odb::database&)>& change) {
  Told(what, [&] { change(transaction_.database()); });
}

void Transaction::Commit() {
  Told("change", [this] { transaction_.commit(); });
}

// A transaction takes its lock with the first row that it reads.
StableRows::StableRows() : connection_(Connect()) {
  try {
    connection_->execute("BEGIN");
    connection_->execute("SELECT 1 FROM sqlite_master");
  } catch (const odb::exception& error) {
    End();
    VPTZD_LOG(LogLevel::kError, "the database cannot be read: %s", error.what());
    throw Unreadable("the database cannot be read");
  }
}

StableRows::~StableRows() { End(); }

void StableRows::End() noexcept {
  try {
    connection_->execute("ROLLBACK");
  } catch (const odb::exception&) {
    // It has not begun.
  }
}

}  // namespace vptzd
