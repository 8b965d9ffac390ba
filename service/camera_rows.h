// The rows by which a camera is described in the database: making them, reading
// them at the start, and removing them. What writes throws StorageError.
#ifndef VPTZ_SERVICE_CAMERA_ROWS_H
#define VPTZ_SERVICE_CAMERA_ROWS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "camera/camera.h"
#include "world.h"

namespace vptzd {

// Writes the rows of a camera, or finds those that are there, and returns their
// ids. Rows that were left half written are written anew.
CameraIds StoreCamera(const Camera& camera);

// Told which camera, from 1, of how many is being stored.
using StoringTold = std::function<void(std::size_t camera, std::size_t of)>;

// Removes the rows of a device and everything that belongs to it.
void RemoveCamera(std::uint32_t device);

// Gives each camera of the fleet its rows: those that are there from an earlier
// start, whose presets, login, picture and tracking mode it takes on; new ones,
// all in one transaction, when it is to be known from the beginning and nobody
// has removed it. Throws what the database refuses; a lack of room is logged
// instead, unless no camera at all has rows then.
void StoreCameras(
    World& world, const StoringTold& told = [](std::size_t, std::size_t) {});

// Brings back what was added to the fleet: the cameras whose rows belong to none
// of it, the couplings and the ports. A lack of room is logged.
void RestoreAdditions(World& world);

}  // namespace vptzd

#endif
