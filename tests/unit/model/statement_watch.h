#ifndef VPTZ_TESTS_UNIT_MODEL_STATEMENT_WATCH_H
#define VPTZ_TESTS_UNIT_MODEL_STATEMENT_WATCH_H

#include <sqlite3.h>

#include <functional>

namespace vptz_test {

// Calls a function at each statement that a connection begins to run, of every
// connection that is opened while this lives. One at a time.
class StatementWatch {
 public:
  using OnStatement = std::function<void(sqlite3_stmt*)>;

  explicit StatementWatch(OnStatement on_statement);
  ~StatementWatch();
  StatementWatch(const StatementWatch&) = delete;
  StatementWatch& operator=(const StatementWatch&) = delete;
};

}  // namespace vptz_test

#endif
