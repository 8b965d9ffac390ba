// Writes rows of the library's tables with SQL, past the library.
#ifndef VPTZ_TESTS_UNIT_VPTZ_DEVICE_ROWS_H
#define VPTZ_TESTS_UNIT_VPTZ_DEVICE_ROWS_H

#include <map>
#include <string>

namespace vptz_test {

using Columns = std::map<std::string, std::string>;  // SQL literals by column

// The statement that inserts a row. A column that must not be NULL and is not
// named holds 0 or the empty text; every other one that is not named is NULL.
std::string Insert(const std::string& table, const Columns& columns);

// A row of "media_parameter" or "movement_parameter" of that owner; `numbers`
// are value, min and max as SQL.
std::string InsertMediaParameter(int media, const std::string& name, const std::string& numbers);
std::string InsertMovementParameter(int movement, const std::string& name, const std::string& numbers);

// Three devices whose addresses a registry load asks for in seven queries: two of
// the first, then its two streams, one stream of the second, and the third's own.
std::string TwoDevicesWithEverything();

}  // namespace vptz_test

#endif
