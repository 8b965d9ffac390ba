#include "model/raw_database.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <stdexcept>

namespace vptz_test {
namespace {

std::string Literal(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
      return "NULL";
    case SQLITE_TEXT: {
      const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
      const std::string text(bytes == nullptr ? "" : bytes,
                             static_cast<std::size_t>(sqlite3_value_bytes(value)));
      return "'" + text + "'";
    }
    default:
      return reinterpret_cast<const char*>(sqlite3_value_text(value));
  }
}

std::string RowText(sqlite3_stmt* statement) {
  std::string row;
  for (int i = 0; i < sqlite3_column_count(statement); ++i) {
    row += (i == 0 ? "" : "|") + Literal(sqlite3_column_value(statement, i));
  }
  return row;
}

}  // namespace

RawDatabase::RawDatabase(const std::string& path) {
  const int result = sqlite3_open(path.c_str(), &database_);
  if (result != SQLITE_OK) {
    sqlite3_close(database_);
    throw std::runtime_error(path + ": " + sqlite3_errstr(result));
  }
  Execute("PRAGMA foreign_keys=ON");
}

RawDatabase::~RawDatabase() { sqlite3_close(database_); }

void RawDatabase::Execute(const std::string& statements) {
  if (sqlite3_exec(database_, statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(statements + ": " + sqlite3_errmsg(database_));
  }
}

std::vector<std::string> RawDatabase::Rows(const std::string& query) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database_, query.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
    throw std::runtime_error(query + ": " + sqlite3_errmsg(database_));
  }
  std::vector<std::string> rows;
  int result = SQLITE_OK;
  while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
    rows.push_back(RowText(statement));
  }
  sqlite3_finalize(statement);
  if (result != SQLITE_DONE) {
    throw std::runtime_error(query + ": " + sqlite3_errmsg(database_));
  }
  return rows;
}

std::string RawDatabase::Value(const std::string& query) {
  const std::vector<std::string> rows = Rows(query);
  if (rows.size() != 1) {
    throw std::runtime_error(query + ": " + std::to_string(rows.size()) + " rows");
  }
  return rows[0];
}

std::vector<std::string> RawDatabase::Schema() {
  std::vector<std::string> statements;
  for (const std::string& row :
       Rows("SELECT sql FROM sqlite_master WHERE name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid")) {
    statements.push_back(WithoutWhitespace(row.substr(1, row.size() - 2)));
  }
  return statements;
}

std::string WithoutWhitespace(const std::string& text) {
  std::string packed = text;
  packed.erase(std::remove_if(packed.begin(), packed.end(), [](unsigned char c) { return std::isspace(c); }),
               packed.end());
  return packed;
}

}  // namespace vptz_test
