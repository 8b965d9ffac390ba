#include "drivers/simulated/faults.h"

#include <algorithm>

namespace vptzd {
namespace {

bool IsAbout(const Fault& fault, const FaultPlace& place) {
  if (!fault.method.empty() && fault.method != place.method) return false;
  if (!fault.camera_name.empty()) return fault.camera_name == place.camera_name;
  return fault.camera_number == 0 || fault.camera_number == place.camera_number;
}

}  // namespace

const Fault* FindFault(const std::vector<Fault>& faults, FaultKind kind, const FaultPlace& place) {
  const auto found = std::find_if(faults.begin(), faults.end(), [&](const Fault& fault) {
    return fault.kind == kind && IsAbout(fault, place);
  });
  return found == faults.end() ? nullptr : &*found;
}

}  // namespace vptzd
