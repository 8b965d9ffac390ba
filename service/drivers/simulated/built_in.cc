#include "drivers/simulated/simulated_fleet.h"

#include <cstdio>

#include "drivers/addresses.h"
#include "drivers/protocols.h"

namespace vptzd {
namespace {

// The addresses of the range that is kept for documentation: no camera is there.
std::string BuiltInAddress(std::size_t number) { return "192.0.2." + std::to_string(number); }

std::string MacOf(std::size_t number) {
  char text[32];
  std::snprintf(text, sizeof text, "02:00:5e:00:53:%02zx", number);
  return text;
}

CameraDescription Numbered(const std::string& protocol, std::size_t number) {
  CameraDescription camera = PlainCamera(protocol, BuiltInAddress(number));
  camera.name = "camera-" + std::to_string(number);
  camera.mac = MacOf(number);
  camera.uuid = "simulated-camera-" + std::to_string(number);
  camera.credentials = {"admin", "admin"};
  const std::uint32_t shift = ProtocolNamed(protocol).preset_shift;
  camera.presets = {{shift + 1, "preset" + std::to_string(shift + 1), "Stage", {0.0, 0.0, 1.0}},
                    {shift + 2, "preset" + std::to_string(shift + 2), "Lectern", {-35.0, 5.0, 6.0}},
                    {shift + 3, "preset" + std::to_string(shift + 3), "Audience", {120.0, -10.0, 2.0}}};
  return camera;
}

}  // namespace

CameraDescription PlainCamera(const std::string& protocol, const std::string& address) {
  CameraDescription camera;
  camera.protocol = protocol;
  camera.address = address;
  camera.service_uri = ProtocolNamed(protocol).ServiceUri(address);
  camera.name = "camera-" + address;
  camera.mac = ProtocolNamed(protocol).serial ? address : "";
  camera.uuid = "simulated-" + address;
  if (protocol == "QX310") camera.model = "QX310";
  return camera;
}

CameraDescription BuiltInCamera(std::size_t number) { return Numbered("ONVIF", number); }

SimulatedFleet BuiltInFleet(std::size_t known) {
  SimulatedFleet fleet;
  for (std::size_t number = 1; number <= known; ++number) fleet.cameras.push_back(BuiltInCamera(number));
  std::size_t number = 200;
  for (const char* protocol : {"ONVIF", "NDI", "NDIHX", "QX310"}) {
    fleet.cameras.push_back(Numbered(protocol, ++number));
    fleet.cameras.back().known = false;
  }
  return fleet;
}

}  // namespace vptzd
