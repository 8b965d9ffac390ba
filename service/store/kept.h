// What the service keeps across starts beside the rows of the cameras, as rows
// of the table "setting".
#ifndef VPTZ_SERVICE_STORE_KEPT_H
#define VPTZ_SERVICE_STORE_KEPT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drivers/units.h"

namespace vptzd {

// Whether somebody has removed a camera that would else be known from the
// beginning.
bool WasRemoved(const std::string& service_uri);
void StoreRemoval(const std::string& service_uri, bool removed);

// The home position of a PTZ node; none while it is where it was at first.
std::optional<PerAxis<double>> StoredHome(std::uint32_t ptz);
void StoreHome(std::uint32_t ptz, const PerAxis<double>& home);
void ForgetHome(std::uint32_t ptz);

// The USB-serial ports. Bytes of a name that are no UTF-8 are lost.
std::vector<std::string> StoredPorts();
void StorePorts(const std::vector<std::string>& ports);

// The device that follows another one; 0: none.
std::uint32_t StoredFollower(std::uint32_t device);
void StoreFollower(std::uint32_t device, std::uint32_t follower);

}  // namespace vptzd

#endif
