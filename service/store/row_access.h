// What the sources that use the database share.
#ifndef VPTZ_SERVICE_STORE_ROW_ACCESS_H
#define VPTZ_SERVICE_STORE_ROW_ACCESS_H

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <vptz/model/vptzmodel.h>

namespace vptzd {

// The database does not take or give what it should.
class StorageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// There is no room on the disk, or it does not write: what is stored already is
// whole.
class NoRoom : public StorageError {
 public:
  using StorageError::StorageError;
};

// What a lookup of the model found, owned; null for nothing, and for a lookup that
// failed: where that matters, StableRows rules out that a lock is the reason.
template <class Row, class Query>
std::unique_ptr<Row> FoundRow(Query query) {
  Row* row = nullptr;
  query(&row);
  return std::unique_ptr<Row>(row);
}

// The same of a lookup of several rows. Throws StorageError when it fails.
template <class Row, class Query>
std::vector<std::unique_ptr<Row>> FoundRows(Query query) {
  // Not empty at first: only then is a failure told from a table without rows.
  std::vector<Row*> rows = {odb::access::object_factory<Row, Row*>::create()};
  if (query(&rows) < 0) throw StorageError("the database does not tell its rows");
  std::vector<std::unique_ptr<Row>> found(rows.begin(), rows.end());
  found.erase(found.begin());
  return found;
}

// Inserts a row; its id is in it afterwards.
template <class Row>
void InsertRow(Row* row, const char* what) {
  if (Row::Add(row) < 0) throw StorageError(std::string("the database takes no ") + what);
}

template <class Row>
void UpdateRow(const Row& row, const char* what) {
  if (Row::Update(row) < 0) throw StorageError(std::string("the database does not change its ") + what);
}

}  // namespace vptzd

#endif
