// What makes one simulated camera different from another: its place in the
// network, its mechanics and what it has been given.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_DESCRIPTION_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_DESCRIPTION_H

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drivers/simulated/axis.h"
#include "drivers/simulated/presets.h"

namespace vptzd {

// Pan and tilt in degrees, positive to the right and upwards; zoom as the
// magnification factor. Speeds and velocities in these units per second.
enum AxisIndex { kPan, kTilt, kZoom };

template <class T>
using PerAxis = std::array<T, 3>;

// A user and a password; both empty at a camera that wants no login.
struct Credentials {
  std::string user;
  std::string password;

  bool empty() const { return user.empty() && password.empty(); }
  friend bool operator==(const Credentials& a, const Credentials& b) {
    return a.user == b.user && a.password == b.password;
  }
};

struct CameraDescription {
  std::string protocol = "ONVIF";
  std::string address;  // host of a network camera, port of a serial one
  std::string service_uri;
  std::string name;
  std::string mac;  // of a serial camera its port
  std::string uuid;
  std::string manufacturer = "simulated";
  std::string model = "Simulated PTZ camera";
  std::string firmware = "1";
  Credentials credentials;
  // None for an axis that the camera does not have.
  PerAxis<std::optional<Axis::Limits>> axes = {
      {{{-170.0, 170.0, 100.0, 400.0}}, {{-30.0, 90.0, 80.0, 320.0}}, {{1.0, 20.0, 8.0, 32.0}}}};
  std::vector<StoredPosition> presets;
  std::chrono::milliseconds delay{0};  // what every answer about it takes
  bool known = true;                   // has rows from the beginning; else a search finds it
  bool removable = true;
};

}  // namespace vptzd

#endif
