// The simulated cameras that there are, and what goes wrong with them.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_SIMULATED_FLEET_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_SIMULATED_FLEET_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "drivers/simulated/description.h"
#include "drivers/simulated/faults.h"

namespace vptzd {

struct SimulatedFleet {
  static constexpr std::size_t kMaxCameras = 256;

  std::chrono::milliseconds search_time{1000};  // what a search takes
  std::vector<CameraDescription> cameras;
  std::vector<Fault> faults;
};

// Camera `number` of those that are there without a fleet file: protocol
// ONVIF, user and password "admin".
CameraDescription BuiltInCamera(std::size_t number);

// So many of these, and four that only a search finds, one each of the
// protocols ONVIF, NDI, NDIHX and QX310.
SimulatedFleet BuiltInFleet(std::size_t known);

// A camera as it is when nothing but its protocol and address is told.
CameraDescription PlainCamera(const std::string& protocol, const std::string& address);

// Reads a fleet file's text. A file without cameras has the built-in ones,
// `known` of which have rows from the beginning. Throws DocumentError.
SimulatedFleet ReadFleet(const std::string& text, std::size_t known);

// The same of a file. Throws std::runtime_error with a message that names file,
// line and reason.
SimulatedFleet ReadFleetFile(const std::string& path, std::size_t known);

}  // namespace vptzd

#endif
