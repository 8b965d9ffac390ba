#include "transaction.h"

#include <string>

#include <odb/exceptions.hxx>
#include <odb/sqlite/database.hxx>
#include <odb/sqlite/exceptions.hxx>

#include "database.h"
#include "log.h"
#include "storage.h"

namespace vptzd {
namespace {

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
    throw StorageError("the database cannot be read");
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
