// What goes wrong on demand, so that applications can be tested against it.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_FAULTS_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_FAULTS_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vptzd {

enum class FaultKind {
  kOffline,        // the camera does not answer
  kRefuseLogin,    // the camera takes no login
  kForgetPresets,  // the camera keeps no presets
  kLosePower,      // the camera loses its power in a move, `time` after it begins to move
  kDelay,          // the reply takes `time`
  kDrop,           // no reply
  kOversize,       // a reply that is larger than a client takes
  kGarble          // a reply that cannot be read
};

struct Fault {
  FaultKind kind = FaultKind::kOffline;
  std::uint32_t camera_number = 0;  // of the fleet; 0 and no name: every camera, and calls about none
  std::string camera_name;
  std::string method;  // empty: every method
  std::chrono::milliseconds time{0};
};

// Whom a call is about.
struct FaultPlace {
  std::uint32_t camera_number = 0;  // 0: no camera
  std::string camera_name;
  std::string_view method;
};

// The first of the faults of that kind that is in force there; null when none is.
const Fault* FindFault(const std::vector<Fault>& faults, FaultKind kind, const FaultPlace& place);

}  // namespace vptzd

#endif
