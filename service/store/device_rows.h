// The rows by which a camera is described in the database: making, finding and
// removing them. What writes throws StorageError.
#ifndef VPTZ_SERVICE_STORE_DEVICE_ROWS_H
#define VPTZ_SERVICE_STORE_DEVICE_ROWS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <vptz/model/device.h>

#include "drivers/camera_record.h"
#include "store/camera_ids.h"

namespace vptzd {

// Writes the rows of a camera, or finds those that are there, and returns their
// ids. Rows that were left half written are written anew.
CameraIds StoreCamera(const CameraRecord& camera);

// Told which camera, from 1, of how many is being stored.
using StoringTold = std::function<void(std::size_t camera, std::size_t of)>;

// Writes the rows of cameras that have none: all of them or none.
std::vector<CameraIds> StoreNewCameras(const std::vector<CameraRecord>& cameras, const StoringTold& told);

// Removes the rows of a device and everything that belongs to it.
void RemoveCamera(std::uint32_t device);

// Null when there is none.
std::unique_ptr<Device> DeviceAt(const std::string& service_uri);

// The ids of a camera's rows; none when some are missing.
CameraIds IdsOf(const Device& device, const CameraRecord& camera);

// The ids of whatever rows a device has: of its first PTZ node, if any, and of its
// media sources.
CameraIds RowsOf(std::uint32_t device);

// Which camera it is, as its device row tells.
Identity IdentityOf(const Device& device);

}  // namespace vptzd

#endif
