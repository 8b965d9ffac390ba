#ifndef VPTZ_SRC_MODEL_SQL_SCRIPT_H
#define VPTZ_SRC_MODEL_SQL_SCRIPT_H

#include <string>

namespace vptz {

// Runs an SQL script against a database file with the sqlite3 program, which is
// looked for on the search path. No shell reads any of it, whatever characters
// the paths hold; what the program prints is dropped. False when it cannot be
// started, else its wait status.
bool RunSqlScript(const std::string& database, const std::string& script, int* wait_status);

}  // namespace vptz

#endif
