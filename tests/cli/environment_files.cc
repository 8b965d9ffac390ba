// The tool's own knowledge of these paths.
#include "library_files.h"

#include "installed_paths.h"

namespace vptzctl {

const char* ConfigFile() { return vptz::ConfigFile(); }

const char* DatabaseFile() { return vptz::DatabaseFile(); }

}  // namespace vptzctl
