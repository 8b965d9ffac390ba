// The rows by which a camera is known in the database, and so in commands.
#ifndef VPTZ_SERVICE_STORE_CAMERA_IDS_H
#define VPTZ_SERVICE_STORE_CAMERA_IDS_H

#include <cstdint>
#include <vector>

namespace vptzd {

struct CameraIds {
  std::uint32_t device = 0;
  std::uint32_t ptz = 0;
  std::vector<std::uint32_t> media{};  // in the order of its media profiles
};

}  // namespace vptzd

#endif
