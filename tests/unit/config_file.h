// Writes the configuration file that clients in this test process read.
#ifndef VPTZ_TESTS_UNIT_CONFIG_FILE_H
#define VPTZ_TESTS_UNIT_CONFIG_FILE_H

#include <cstdio>
#include <fstream>
#include <string>

#include "installed_paths.h"

namespace vptz_test {

inline void WriteConfigFile(const std::string& text) { std::ofstream(vptz::ConfigFile()) << text; }

inline void RemoveConfigFile() { std::remove(vptz::ConfigFile()); }

}  // namespace vptz_test

#endif
