// Runs an SQL script as the library does, and keeps what was wrong with it.
#ifndef VPTZCTL_SCRIPT_H
#define VPTZCTL_SCRIPT_H

#include <string>

namespace vptzctl {

// Runs the script against a database file with the program sqlite3. Empty, or
// why it failed: "Parse error near line 3: no such table: camera".
std::string RunScript(const std::string& database, const std::string& script);

}  // namespace vptzctl

#endif
