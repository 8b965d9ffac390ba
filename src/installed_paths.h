// Where the installed product keeps its files.
#ifndef VPTZ_SRC_INSTALLED_PATHS_H
#define VPTZ_SRC_INSTALLED_PATHS_H

namespace vptz {

// The configuration file that every client reads.
const char* ConfigFile();

// The database that the library shares with the service.
const char* DatabaseFile();

}  // namespace vptz

#endif
