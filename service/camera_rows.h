// The rows by which a camera is described in the database: making them, reading
// them at the start, and removing them. What writes throws StorageError.
#ifndef VPTZ_SERVICE_CAMERA_ROWS_H
#define VPTZ_SERVICE_CAMERA_ROWS_H

#include <cstdint>

#include "camera/camera.h"
#include "world.h"

namespace vptzd {

// Writes the rows of a camera, or finds those that are there, and returns their
// ids. Rows that were left half written are written anew.
CameraIds StoreCamera(const Camera& camera);

// Removes the rows of a device and everything that belongs to it.
void RemoveCamera(std::uint32_t device);

// Gives each camera of the fleet its rows: those that are there from an earlier
// start, whose presets, login, picture and tracking mode it takes on; new ones
// when it is to be known from the beginning and nobody has removed it.
void StoreCameras(World& world);

// Brings back what was added to the fleet: the cameras whose rows belong to none
// of it, the couplings and the ports.
void RestoreAdditions(World& world);

}  // namespace vptzd

#endif
