#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <string>

#include "fleet.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const vptzd::Fleet fleet = vptzd::ReadFleet(std::string(reinterpret_cast<const char*>(data), size), 2);
    if (fleet.cameras.size() > vptzd::Fleet::kMaxCameras) std::abort();
  } catch (const std::exception& error) {
    if (error.what()[0] == '\0') std::abort();
  }
  return 0;
}
