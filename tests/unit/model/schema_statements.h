// The schema, written out, as it is to be in each version of a file.
#ifndef VPTZ_TESTS_UNIT_MODEL_SCHEMA_STATEMENTS_H
#define VPTZ_TESTS_UNIT_MODEL_SCHEMA_STATEMENTS_H

#include <string>
#include <vector>

namespace vptz_test {

// What a file that was created at the current version holds, in the order of
// creation.
std::vector<std::string> CreatedSchema();

// What a version 6 file holds that was brought to the current version. The
// columns that came later may be NULL there.
std::vector<std::string> MigratedSchema();

// Statements that make a file of that version, 6 to 9, the version row
// included, but without rows of its own.
std::string OldSchema(int version);

// Rows for every table of a version 6 file.
std::string OldRows();

// Queries that tell every row of these tables, in their version 6 columns.
std::vector<std::string> OldRowQueries();

}  // namespace vptz_test

#endif
