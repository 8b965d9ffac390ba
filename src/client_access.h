// How the library's own code reaches a client's private fields.
#ifndef VPTZ_SRC_CLIENT_ACCESS_H
#define VPTZ_SRC_CLIENT_ACCESS_H

#include <cstdint>
#include <vector>

#include <vptz/vptz_client.h>

namespace vptz {

struct ClientAccess {
  static bool HasBusClient(const VptzClient& client) { return client.bus_client_ != nullptr; }
  static std::int32_t NdiPresetShift(const VptzClient& client) { return client.ndi_preset_shift_; }
  static std::vector<CVptzDevice>& Devices(VptzClient& client) { return client.devices_; }
};

}  // namespace vptz

#endif
