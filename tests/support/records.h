#ifndef VPTZ_TESTS_SUPPORT_RECORDS_H
#define VPTZ_TESTS_SUPPORT_RECORDS_H

#include <string>

namespace vptz_test {

// Keeps what a test leaves behind, such as the output of a process, in a file of
// the folder that VPTZ_TEST_RECORDS in the environment names; without it does
// nothing. scripts/secrets searches these files.
void Record(const std::string& text);

}  // namespace vptz_test

#endif
