// How the library's own code reads many rows in one transaction.
#ifndef VPTZ_SRC_MODEL_MODEL_ACCESS_H
#define VPTZ_SRC_MODEL_MODEL_ACCESS_H

#include <vptz/model/vptzmodel.h>

#include <odb/exceptions.hxx>
#include <odb/sqlite/connection.hxx>
#include <odb/sqlite/error.hxx>
#include <odb/sqlite/transaction.hxx>

namespace vptz {

struct ModelAccess {
  // Calls `read` with the connection of a transaction, again and again on a
  // conflict, as every operation of the model is. False when that fails, which
  // is logged as a failed list query.
  template <class Operation>
  static bool Read(Operation&& read) {
    return VptzModel::Retry(VptzModel::QueryObjectsMessages(), [&](odb::database&) {
      read(odb::sqlite::transaction::current().connection());
      return true;
    });
  }
};

}  // namespace vptz

#endif
