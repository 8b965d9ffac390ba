#ifndef VPTZ_TESTS_SUPPORT_PASSWORDS_H
#define VPTZ_TESTS_SUPPORT_PASSWORDS_H

#include <map>
#include <string>

namespace vptz_test {

// Writes a broker's file of these users' passwords. No command line shows them.
void WritePasswords(const std::string& path, const std::map<std::string, std::string>& passwords);

}  // namespace vptz_test

#endif
