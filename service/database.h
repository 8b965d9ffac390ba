// The database that the service shares with its clients.
#ifndef VPTZ_SERVICE_DATABASE_H
#define VPTZ_SERVICE_DATABASE_H

#include <string>

namespace odb::sqlite {
class database;
}

namespace vptzd {

// Creates or migrates the database file and fills in what every database holds:
// protocols, device types, events and settings. False, with the reason in the
// log, when that fails.
bool OpenDatabase(const std::string& path, const std::string& seed_file);

// The same file once more, for what the model does not do in one transaction.
// Throws StorageError when none is open.
odb::sqlite::database& OwnDatabase();

}  // namespace vptzd

#endif
