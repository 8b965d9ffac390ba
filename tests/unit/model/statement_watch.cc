#include "model/statement_watch.h"

#include <utility>

namespace vptz_test {
namespace {

StatementWatch::OnStatement function;

int Begins(unsigned, void*, void* statement, void*) {
  if (function) function(static_cast<sqlite3_stmt*>(statement));
  return 0;
}

int Watch(sqlite3* connection, char**, const void*) {
  return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, Begins, nullptr);
}

}  // namespace

StatementWatch::StatementWatch(OnStatement on_statement) {
  function = std::move(on_statement);
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(Watch));
}

StatementWatch::~StatementWatch() {
  sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Watch));
  function = nullptr;
}

}  // namespace vptz_test
