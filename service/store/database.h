// The database that the service shares with its clients.
#ifndef VPTZ_SERVICE_STORE_DATABASE_H
#define VPTZ_SERVICE_STORE_DATABASE_H

#include <functional>
#include <string>

#include <vptz/model/odb.h>

#include <odb/database.hxx>
#include <odb/sqlite/connection.hxx>
#include <odb/sqlite/transaction.hxx>

#include "store/row_access.h"

namespace vptzd {

// Creates or migrates the database file and fills in what every database holds:
// protocols, device types, events and settings. False, with the reason in the
// log, when that fails.
bool OpenDatabase(const std::string& path, const std::string& seed_file);

// Several rows that the database takes together or not at all, on a connection of
// the service's own: the model changes a row, or inserts rows of one class, in a
// transaction each. The thread that has begun one uses the model for nothing else
// until it has ended. A source that uses it includes the mapper's header of the
// row's class.
class Transaction {
 public:
  // Waits for other programs' locks as the model does, about four seconds. Every
  // function throws StorageError, and NoRoom where that is the reason, which is
  // logged.
  Transaction();

  // Takes back what has not been committed.
  ~Transaction() = default;
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  // Gives the row its id. `what` names the row for people.
  template <class Row>
  void Insert(Row* row, const char* what) {
    Do(what, [&](odb::database& database) { database.persist(*row); });
  }

  template <class Row>
  void Update(const Row& row, const char* what) {
    Do(what, [&](odb::database& database) { database.update(row); });
  }

  void Commit();

 private:
  static odb::sqlite::transaction_impl* Begin(odb::sqlite::connection& connection);
  void Do(const char* what, const std::function<void(odb::database&)>& change);

  odb::sqlite::connection_ptr connection_;
  odb::sqlite::transaction transaction_;
};

// The database cannot be read; the log tells why.
class Unreadable : public StorageError {
 public:
  using StorageError::StorageError;
};

// While it lives no other program's lock keeps the model from reading: a row that a
// lookup does not find is not there. For a moment only, and for reading only: nothing
// can be committed meanwhile, neither by other programs nor by the service.
class StableRows {
 public:
  // Waits for other programs' locks as a transaction does. Throws Unreadable.
  StableRows();
  ~StableRows();
  StableRows(const StableRows&) = delete;
  StableRows& operator=(const StableRows&) = delete;

 private:
  void End() noexcept;

  odb::sqlite::connection_ptr connection_;
};

}  // namespace vptzd

#endif
