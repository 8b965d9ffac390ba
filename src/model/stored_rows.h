// What the entity classes share: the common operations of a row class and the
// ways in which their own queries are made. For the sources of entity classes;
// includes the generated traits' consumers, so it comes after the -odb.hxx.
#ifndef VPTZ_SRC_MODEL_STORED_ROWS_H
#define VPTZ_SRC_MODEL_STORED_ROWS_H

#include <memory>
#include <vector>

#include <vptz/model/stored.h>
#include <vptz/model/vptzmodel.h>

#include "model/prepared_query.h"

namespace vptz {

// A reference to an object that stays its owner's.
template <class Row>
std::shared_ptr<Row> Borrow(Row* row) {
  return std::shared_ptr<Row>(std::shared_ptr<void>(), row);
}

// The query for all rows of a class. Named by the class's table.
template <class Row>
constexpr PreparedQuery<Row> EveryRow() {
  return {odb::object_traits_impl<Row, odb::id_sqlite>::table_name, [] { return odb::query<Row>(); }};
}

template <class Row>
int StoredRow<Row>::Add(Row* row) {
  return VptzModel::Add(row);
}

template <class Row>
int StoredRow<Row>::Remove(unsigned int id) {
  return VptzModel::Erase<Row>(odb::query<Row>::id == id);
}

template <class Row>
int StoredRow<Row>::QueryById(Row** row, unsigned int id) {
  return ModelAccess::FindObject(id, row);
}

template <class Row>
int StoredRow<Row>::QueryAll(std::vector<Row*>* rows, unsigned int, unsigned int) {
  return EveryRow<Row>().All(rows);
}

template <class Row>
int UpdatableRow<Row>::Update(const Row& row) {
  return VptzModel::Update(row);
}

}  // namespace vptz

#endif
