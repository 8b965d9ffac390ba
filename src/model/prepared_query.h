// Queries whose statement each connection prepares once and keeps until it is
// closed: preparing a statement takes as long as running it.
#ifndef VPTZ_SRC_MODEL_PREPARED_QUERY_H
#define VPTZ_SRC_MODEL_PREPARED_QUERY_H

#include <odb/prepared-query.hxx>

#include <memory>
#include <tuple>
#include <vector>

#include "model/model_access.h"

namespace vptz {

// A query of an entity class for values of these types. Made before the program
// starts and never destroyed, like the database that may be read until its end.
template <class Row, class... Values>
class PreparedQuery {
 public:
  // `name` belongs to no other query, of whatever class. The condition refers to the
  // values where they are, in the connection: they change from one execution to the
  // next.
  constexpr PreparedQuery(const char* name, odb::query<Row> (*condition)(const Values&...))
      : name_(name), condition_(condition) {}

  // As VptzModel::QueryObject.
  int One(Row** row, const Values&... values) const {
    return ModelAccess::QueryObject(
        [&](odb::sqlite::connection& connection) { return Execute(connection, values...); }, row);
  }

  // As VptzModel::QueryObjects.
  int All(std::vector<Row*>* rows, const Values&... values) const {
    return ModelAccess::QueryObjects(
        [&](odb::sqlite::connection& connection) { return Execute(connection, values...); }, rows);
  }

  // The number of matching rows.
  int Count(const Values&... values) const {
    std::vector<Row*> rows;
    All(&rows, values...);
    const int count = static_cast<int>(rows.size());
    VptzModel::CleanQuery(&rows);
    return count;
  }

 private:
  using Parameters = std::tuple<Values...>;

  odb::result<Row> Execute(odb::sqlite::connection& connection, const Values&... values) const {
    Parameters* kept = nullptr;
    odb::prepared_query<Row> query = connection.lookup_query<Row>(name_, kept);
    if (!query) query = Prepare(connection, kept);
    *kept = std::tie(values...);
    return query.execute(false);
  }

  // `kept` becomes the place of the values, which the connection owns.
  odb::prepared_query<Row> Prepare(odb::sqlite::connection& connection, Parameters*& kept) const {
    auto parameters = std::make_unique<Parameters>();
    kept = parameters.get();
    auto query = connection.prepare_query<Row>(name_, std::apply(condition_, *kept));
    connection.cache_query(query, std::move(parameters));
    return query;
  }

  const char* name_;
  odb::query<Row> (*condition_)(const Values&...);
};

}  // namespace vptz

#endif
