// A database file seen without the library: through SQLite itself.
#ifndef VPTZ_TESTS_UNIT_MODEL_RAW_DATABASE_H
#define VPTZ_TESTS_UNIT_MODEL_RAW_DATABASE_H

#include <sqlite3.h>

#include <string>
#include <vector>

namespace vptz_test {

// Throws std::runtime_error, with SQLite's text, when anything fails.
class RawDatabase {
 public:
  // Creates the file when it is missing. References are checked.
  explicit RawDatabase(const std::string& path);
  ~RawDatabase();
  RawDatabase(const RawDatabase&) = delete;
  RawDatabase& operator=(const RawDatabase&) = delete;

  void Execute(const std::string& statements);

  // The rows, their columns as SQL literals with '|' between.
  std::vector<std::string> Rows(const std::string& query);

  // The only row.
  std::string Value(const std::string& query);

  // The statements of everything in the schema, in the order of creation and
  // without any whitespace.
  std::vector<std::string> Schema();

 private:
  sqlite3* database_ = nullptr;
};

std::string WithoutWhitespace(const std::string& text);

}  // namespace vptz_test

#endif
