#include "stored.h"

#include <algorithm>
#include <iterator>

#include <vptz/model/device.h>
#include <vptz/model/vptzmodel.h>

namespace vptzctl {

std::vector<StoredCamera> StoredCameras() {
  std::vector<Device*> rows;
  Device::QueryAll(&rows, 0, 0);
  std::vector<StoredCamera> cameras;
  cameras.reserve(rows.size());
  for (const Device* row : rows) {
    const Protocol* const protocol = row->protocol();
    cameras.push_back({row->id(), row->host_name(), protocol ? protocol->name() : "", row->address()});
  }
  VptzModel::CleanQuery(&rows);
  return cameras;
}

std::vector<StoredCamera> StoredSerialCameras() {
  const std::vector<StoredCamera> all = StoredCameras();
  std::vector<StoredCamera> serial;
  std::copy_if(all.begin(), all.end(), std::back_inserter(serial),
               [](const StoredCamera& camera) { return camera.IsSerial(); });
  return serial;
}

std::string CameraInWords(std::uint32_t id, const std::string& name) {
  return "camera " + std::to_string(id) + (name.empty() ? "" : " (" + name + ")");
}

}  // namespace vptzctl
