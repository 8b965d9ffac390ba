// What the web page shows of one camera.
#ifndef VPTZ_SERVICE_VIEW_CAMERA_VIEW_H
#define VPTZ_SERVICE_VIEW_CAMERA_VIEW_H

#include <cstdint>
#include <string>
#include <vector>

namespace vptzd {

struct AxisView {
  double position = 0;
  double speed = 0;  // how fast it moves, in the axis's units per second; never negative
  double min = 0;
  double max = 0;  // equal to min for an axis that the camera does not have
};

struct CameraView {
  std::uint32_t device = 0;  // row ids, by which commands name it
  std::uint32_t ptz = 0;
  std::string name;
  std::string protocol;
  bool powered = true;
  bool online = true;
  bool logged_in = true;   // false: the service may not command it
  AxisView pan;            // degrees
  AxisView tilt;           // degrees
  AxisView zoom;           // magnification factor
  double brightness = 50;  // image settings, 0 to 100
  double contrast = 50;
  double sharpness = 50;
  bool auto_focus = true;
  double blur = 0;  // how far out of focus: 0 is sharp, 1 as far as can be
  std::uint32_t track_mode = 0;
  std::vector<std::string> presets;  // their names, or the token of one without a name
};

}  // namespace vptzd

#endif
