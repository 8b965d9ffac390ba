// The media profiles of a camera.
#ifndef VPTZ_SERVICE_DRIVERS_MEDIA_H
#define VPTZ_SERVICE_DRIVERS_MEDIA_H

#include <string>

namespace vptzd {

struct VideoEncoder {
  double width;       // pixels
  double height;      // pixels
  double frame_rate;  // frames per second
  double bit_rate;    // kilobits per second
};

struct ImageSettings {
  double brightness = 50.0;     // 0 ... 100
  double contrast = 50.0;       // 0 ... 100
  double sharpness = 50.0;      // 0 ... 100
  double auto_focus = 1.0;      // 0 manual, 1 automatic
  double backlight_mode = 0.0;  // 0 off, 1 on
};

struct MediaProfile {
  std::string token;
  VideoEncoder encoder;
  ImageSettings image;
};

}  // namespace vptzd

#endif
