// What makes one simulated camera different from another: its place in the
// network, its mechanics and what it has been given.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_DESCRIPTION_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_DESCRIPTION_H

#include <chrono>
#include <optional>
#include <vector>

#include "drivers/camera_record.h"
#include "drivers/simulated/axis.h"

namespace vptzd {

struct CameraDescription : Identity {
  CameraDescription() {
    manufacturer = "simulated";
    model = "Simulated PTZ camera";
    firmware = "1";
  }
  explicit CameraDescription(const Identity& identity) : Identity(identity) {}

  Credentials credentials;  // that it wants; empty: it wants no login
  // None for an axis that the camera does not have.
  PerAxis<std::optional<Axis::Limits>> axes = {
      {{{-170.0, 170.0, 100.0, 400.0}}, {{-30.0, 90.0, 80.0, 320.0}}, {{1.0, 20.0, 8.0, 32.0}}}};
  std::vector<StoredPosition> presets;
  std::chrono::milliseconds delay{0};  // what every answer about it takes
  bool known = true;                   // has rows from the beginning; else a search finds it
};

}  // namespace vptzd

#endif
