// Apart from everything else, so that tests link a file of theirs instead.
#include "library_files.h"

namespace vptzctl {

const char* ConfigFile() { return VPTZ_CONFIG_FILE; }

const char* DatabaseFile() { return VPTZ_DATABASE_FILE; }

}  // namespace vptzctl
