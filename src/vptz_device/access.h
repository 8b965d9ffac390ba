// How the library's own code reaches a handle's private field.
#ifndef VPTZ_SRC_VPTZ_DEVICE_ACCESS_H
#define VPTZ_SRC_VPTZ_DEVICE_ACCESS_H

#include <vptz/vptz_device.h>

namespace vptz {

struct DeviceAccess {
  static VptzClient* Client(const CVptzDevice& device) { return device.client_; }
};

}  // namespace vptz

#endif
