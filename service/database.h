// The database that the service shares with its clients.
#ifndef VPTZ_SERVICE_DATABASE_H
#define VPTZ_SERVICE_DATABASE_H

#include <string>

namespace vptzd {

// Creates or migrates the database file and fills in what every database holds:
// protocols, device types, events and settings. False, with the reason in the
// log, when that fails.
bool OpenDatabase(const std::string& path, const std::string& seed_file);

}  // namespace vptzd

#endif
