// What the database holds of all cameras, read without asking the service
// anything: its rows, not the library's registry.
#ifndef VPTZCTL_STORED_H
#define VPTZCTL_STORED_H

#include <cstdint>
#include <string>
#include <vector>

namespace vptzctl {

struct StoredCamera {
  std::uint32_t id;
  std::string name;
  std::string protocol;
  std::string address;  // of a serial camera its port

  bool IsSerial() const { return protocol == "RS232"; }
};

std::vector<StoredCamera> StoredCameras();
std::vector<StoredCamera> StoredSerialCameras();

// "camera 3 (Stage)"
std::string CameraInWords(std::uint32_t id, const std::string& name);

}  // namespace vptzctl

#endif
