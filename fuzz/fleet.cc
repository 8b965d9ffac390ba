#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <string>

#include "drivers/simulated/simulated_fleet.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const vptzd::SimulatedFleet fleet = vptzd::ReadFleet(text, 2);
    if (fleet.cameras.size() > vptzd::SimulatedFleet::kMaxCameras) std::abort();
  } catch (const std::exception& error) {
    if (error.what()[0] == '\0') std::abort();
  }
  return 0;
}
