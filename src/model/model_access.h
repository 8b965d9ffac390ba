// How the library's own code reads rows in ways that applications have no need for.
#ifndef VPTZ_SRC_MODEL_MODEL_ACCESS_H
#define VPTZ_SRC_MODEL_MODEL_ACCESS_H

#include <vptz/model/vptzmodel.h>

#include <odb/exceptions.hxx>
#include <odb/sqlite/connection.hxx>
#include <odb/sqlite/error.hxx>
#include <odb/sqlite/transaction.hxx>

#include <memory>
#include <vector>

namespace vptz {

struct ModelAccess {
  // Calls `read` with the connection of a transaction, again and again on a
  // conflict, as every operation of the model is. False when that fails, which
  // is logged as a failed list query.
  template <class Operation>
  static bool Read(Operation&& read) {
    return VptzModel::Retry(VptzModel::QueryObjectsMessages(), [&](odb::database&) {
      read(CurrentConnection());
      return true;
    });
  }

  // VptzModel::QueryObject and QueryObjects on the result that `execute` gives for
  // the connection of the transaction.
  template <class Row, class Execute>
  static int QueryObject(const Execute& execute, Row** row) {
    return VptzModel::QueryObjectBy(
        [&](odb::database&) { return VptzModel::FirstOf<Row>(execute(CurrentConnection())); }, row);
  }
  template <class Row, class Execute>
  static int QueryObjects(const Execute& execute, std::vector<Row*>* rows) {
    return VptzModel::QueryObjectsBy([&](odb::database&) { return execute(CurrentConnection()); }, rows);
  }

  // VptzModel::QueryObject for the row with that key, by the statement that the
  // mapper itself keeps for each connection.
  template <class Row, class Key>
  static int FindObject(const Key& key, Row** row) {
    return VptzModel::QueryObjectBy(
        [&](odb::database& database) {
          std::unique_ptr<Row> object(odb::access::object_factory<Row, Row*>::create());
          if (!database.find(key, *object)) object.reset();
          return object;
        },
        row);
  }

 private:
  static odb::sqlite::connection& CurrentConnection() {
    return odb::sqlite::transaction::current().connection();
  }
};

}  // namespace vptz

#endif
