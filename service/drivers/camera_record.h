// What the database tells of a camera, whatever drives it: which one it is, what it
// can do, and how it stands.
#ifndef VPTZ_SERVICE_DRIVERS_CAMERA_RECORD_H
#define VPTZ_SERVICE_DRIVERS_CAMERA_RECORD_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drivers/media.h"
#include "drivers/presets.h"
#include "drivers/units.h"

namespace vptzd {

// A user and a password; both empty for no login.
struct Credentials {
  std::string user;
  std::string password;

  bool empty() const { return user.empty() && password.empty(); }
  friend bool operator==(const Credentials& a, const Credentials& b) {
    return a.user == b.user && a.password == b.password;
  }
};

struct Identity {
  std::string protocol = "ONVIF";
  std::string address;  // host of a network camera, port of a serial one
  std::string service_uri;
  std::string name;
  std::string mac;  // of a serial camera its port
  std::string uuid;
  std::string manufacturer;
  std::string model;
  std::string firmware;
  bool removable = true;
};

struct AxisRange {
  double min = 0.0;
  double max = 0.0;
  double top_speed = 0.0;
};

struct Abilities {
  std::string ptz_token;
  PerAxis<std::optional<AxisRange>> axes;  // none for an axis that the camera does not have
};

struct CameraState {
  PerAxis<double> position{};  // of an axis that the camera does not have: where it is fixed
  std::uint32_t track_mode = 0;
  bool logged_in = false;
  Credentials credentials;  // with which the service is logged in, if it is
  std::vector<StoredPosition> presets;
  std::vector<MediaProfile> media;
};

struct CameraRecord {
  Identity identity;
  Abilities abilities;
  CameraState state;
};

}  // namespace vptzd

#endif
