#include <vptz/model/device.h>
#include <vptz/model/media.h>
#include <vptz/model/preset.h>
#include <vptz/model/ptz.h>
#include <vptz/vptz_client.h>

#include <algorithm>
#include <utility>

#include "log.h"
#include "no_throw.h"
#include "vptz_device/loading.h"
#include "vptz_device/snapshot.h"

using vptz::NoThrow;

namespace {

CVptzDevice NewHandle(VptzClient* client, std::uint32_t id, const vptz::RowSource& rows,
                      vptz::TimeBudget& budget) {
  CVptzDevice device;
  device.SetVptzClient(client);
  device.id = id;
  vptz::LoadDeviceInfo(device, rows, budget);
  vptz::LoadPtzInfo(device, rows);
  vptz::LoadMediaInfo(device, rows, budget);
  return device;
}

}  // namespace

// Kept: appends, so that two calls in a row hold every device twice. Lookups
// clear the registry first.
int VptzClient::LoadDevices() {
  const std::size_t before = devices_.size();
  const bool loaded = NoThrow(false, [&] {
    vptz::Snapshot rows;
    rows.Read();
    devices_.reserve(before + rows.DeviceIds().size());
    vptz::TimeBudget budget(GetVptzTimeout(0));
    for (const std::uint32_t id : rows.DeviceIds()) devices_.push_back(NewHandle(this, id, rows, budget));
    return true;
  });
  if (loaded) return 0;
  devices_.erase(devices_.begin() + static_cast<std::ptrdiff_t>(before), devices_.end());
  VPTZ_LOG(vptz::LogLevel::kError, vptz::log_source::kClient, "Failed to load the devices: memory ran out");
  return -1;
}

int VptzClient::ClearDevices() {
  devices_.clear();
  return 0;
}

CVptzDevice* VptzClient::QueryDeviceById(int id) {
  std::vector<CVptzDevice>& devices = *QueryDeviceAll();
  const auto found = std::find_if(devices.begin(), devices.end(), [&](const CVptzDevice& device) {
    return device.id == static_cast<std::uint32_t>(id);
  });
  return found == devices.end() ? nullptr : &*found;
}

std::vector<CVptzDevice>* VptzClient::QueryDeviceAll() {
  ClearDevices();
  LoadDevices();
  return &devices_;
}

std::vector<CVptzDevice*> VptzClient::QueryDeviceByProtocol(const std::string& protocol) {
  return NoThrow(std::vector<CVptzDevice*>(), [&] {
    // It may be a handle's own, which the lookup destroys.
    const std::string wanted = protocol;  // NOLINT(performance-unnecessary-copy-initialization)
    std::vector<CVptzDevice*> found;
    for (CVptzDevice& device : *QueryDeviceAll()) {
      if (device.protocol == wanted) found.push_back(&device);
    }
    return found;
  });
}

int VptzClient::QueryDeviceCount() { return NoThrow(0, &Device::QueryCount); }

int VptzClient::QueryPtzCountByDevice(int device_id) {
  return NoThrow(0, [&] { return Ptz::QueryCountByDevice(static_cast<unsigned int>(device_id)); });
}

int VptzClient::QueryMediaCountByDevice(int device_id) {
  return NoThrow(0, [&] { return Media::QueryCountByDevice(static_cast<unsigned int>(device_id)); });
}

int VptzClient::QueryPresetCountByPtz(int ptz_id) {
  return NoThrow(0, [&] { return Preset::QueryCountByPtz(static_cast<unsigned int>(ptz_id)); });
}
