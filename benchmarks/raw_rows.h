// Rows read by hand, through SQLite's own interface.
#ifndef VPTZ_BENCHMARKS_RAW_ROWS_H
#define VPTZ_BENCHMARKS_RAW_ROWS_H

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

struct Finalizer {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

// The columns of one row of each table, in their order.
using Id = std::uint32_t;
using RawProtocol = std::tuple<Id, std::string, std::string, std::string>;
using RawDevice =
    std::tuple<Id, Id, std::string, std::string, std::string, std::string, std::string, std::string, bool, bool,
               Id, std::string, std::string, std::string, std::string, bool, bool, bool, std::string>;
using RawMedia = std::tuple<Id, Id, std::string, std::string, std::string, bool, std::string>;
using RawMediaParameter = std::tuple<Id, Id, std::string, double, double, double, std::string>;
using RawPreset = std::tuple<Id, Id, Id, std::string, std::string, double, double, double, std::string>;

inline void ReadColumn(sqlite3_stmt* row, int column, Id& value) {
  value = static_cast<Id>(sqlite3_column_int64(row, column));
}
inline void ReadColumn(sqlite3_stmt* row, int column, bool& value) {
  value = sqlite3_column_int64(row, column) != 0;
}
inline void ReadColumn(sqlite3_stmt* row, int column, double& value) {
  value = sqlite3_column_double(row, column);
}
inline void ReadColumn(sqlite3_stmt* row, int column, std::string& value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  value.assign(text, static_cast<std::size_t>(sqlite3_column_bytes(row, column)));
}

// The statement's row as a new object.
template <class Row>
std::unique_ptr<Row> ReadRow(sqlite3_stmt* row) {
  auto object = std::make_unique<Row>();
  std::apply([row, column = 0](auto&... value) mutable { (ReadColumn(row, column++, value), ...); }, *object);
  return object;
}

// An open connection, its references checked as the model's are. BEGIN and
// COMMIT are prepared once, as the mapper does.
class RawConnection {
 public:
  explicit RawConnection(const std::string& path) {
    Require(sqlite3_open_v2(path.c_str(), &connection_, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    sqlite3_exec(connection_, "PRAGMA foreign_keys=ON", nullptr, nullptr, nullptr);
    begin_ = Prepare("BEGIN");
    commit_ = Prepare("COMMIT");
  }
  ~RawConnection() {
    begin_.reset();
    commit_.reset();
    sqlite3_close(connection_);
  }
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  Statement Prepare(const std::string& text) const {
    sqlite3_stmt* statement = nullptr;
    Require(sqlite3_prepare_v2(connection_, text.c_str(), -1, &statement, nullptr), SQLITE_OK);
    return Statement(statement);
  }

  // The first row of a query, in a transaction of its own.
  template <class Row>
  std::unique_ptr<Row> First(sqlite3_stmt* query) const {
    Run(begin_.get());
    Require(sqlite3_step(query), SQLITE_ROW);
    auto row = ReadRow<Row>(query);
    sqlite3_reset(query);
    Run(commit_.get());
    return row;
  }

  // All rows of a query, in a transaction of its own.
  template <class Row>
  std::vector<std::unique_ptr<Row>> All(sqlite3_stmt* query) const {
    std::vector<std::unique_ptr<Row>> rows;
    Run(begin_.get());
    int result = SQLITE_OK;
    while ((result = sqlite3_step(query)) == SQLITE_ROW) rows.push_back(ReadRow<Row>(query));
    Require(result, SQLITE_DONE);
    sqlite3_reset(query);
    Run(commit_.get());
    return rows;
  }

 private:
  static void Require(int result, int expected) {
    if (result != expected) throw std::runtime_error(sqlite3_errstr(result));
  }
  static void Run(sqlite3_stmt* statement) {
    Require(sqlite3_step(statement), SQLITE_DONE);
    sqlite3_reset(statement);
  }

  sqlite3* connection_ = nullptr;
  Statement begin_;
  Statement commit_;
};

#endif
