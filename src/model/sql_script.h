#ifndef VPTZ_SRC_MODEL_SQL_SCRIPT_H
#define VPTZ_SRC_MODEL_SQL_SCRIPT_H

#include <string>

namespace vptz {

// The path, written so that neither SQLite nor the sqlite3 program takes it for
// anything else: an option, a program to run ("|"), a URI ("file:"), a database
// in memory (":memory:") or a temporary one (no name at all).
std::string AsPath(const std::string& path);

// Runs an SQL script against a database file with the sqlite3 program, which is
// looked for on the search path. No shell reads any of it, whatever characters
// the paths hold; what the program prints is dropped. False when it cannot be
// started, else its wait status.
bool RunSqlScript(const std::string& database, const std::string& script, int* wait_status);

}  // namespace vptz

#endif
