// The database that the service shares with its clients, and the rows by which
// it describes its simulated cameras there.
#ifndef VPTZ_SERVICE_DATABASE_H
#define VPTZ_SERVICE_DATABASE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "camera/camera.h"
#include "world.h"

namespace vptzd {

// Creates or migrates the database file and fills in what every database holds:
// protocols, device types, events and settings. False, with the reason in the
// log, when that fails.
bool OpenDatabase(const std::string& path, const std::string& seed_file);

// Writes the rows of a simulated camera, or finds those that are there from an
// earlier start, and returns their ids. Throws std::runtime_error when the
// database does not take them.
CameraIds StoreCamera(std::size_t number, const Camera& camera);

// StoreCamera for every camera of the world, which learns the ids.
void StoreCameras(World& world);

}  // namespace vptzd

#endif
