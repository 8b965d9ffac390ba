// One simulated pan-tilt-zoom camera.
//
// A value like its axes: nothing moves but by Advance. It knows nothing of how
// commands reach it. A command that it refuses changes nothing, on no axis.
#ifndef VPTZ_SERVICE_CAMERA_CAMERA_H
#define VPTZ_SERVICE_CAMERA_CAMERA_H

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "camera/axis.h"
#include "camera/media.h"
#include "status.h"

namespace vptzd {

// Pan and tilt in degrees, positive to the right and upwards; zoom as the
// magnification factor. Speeds and velocities in these units per second.
enum AxisIndex { kPan, kTilt, kZoom };

template <class T>
using PerAxis = std::array<T, 3>;

// A number for each axis that a command names; the others are left alone.
using AxisValues = PerAxis<std::optional<double>>;

class Camera {
 public:
  // Powered, at rest, at its home position: straight ahead, zoomed out.
  Camera();

  const Axis& axis(AxisIndex index) const { return axes_[index]; }
  const std::string& ptz_token() const { return ptz_token_; }

  const std::vector<MediaProfile>& media_profiles() const { return media_profiles_; }

  // Null when there is no such profile.
  const MediaProfile* FindMediaProfile(const std::string& token) const;

  // Begins to move each axis that has a position, with its speed or, without
  // one, with its top speed. The speed of an axis without a position does not
  // count. kPoweredOff; kOutOfRange for a position outside the range, a speed
  // of 0 and less or beyond the top speed, and numbers that are not finite.
  Status MoveTo(const AxisValues& positions, const AxisValues& speeds);

  // Begins to move each axis that has a velocity, until Stop or a limit; a
  // velocity of 0 stops the axis. More than the top speed is taken as the top
  // speed, as with a joystick pushed to its end. kPoweredOff; kOutOfRange for
  // numbers that are not finite.
  Status MoveAt(const AxisValues& velocities);

  // MoveTo of all axes to the home position.
  Status GoHome(const AxisValues& speeds);

  // Makes the present position the home position, also in motion.
  void SetHome();

  // Stops the marked axes, whatever moves them.
  void Stop(const PerAxis<bool>& axes);

  // Kept and reported; a simulated camera follows nobody, so any number will do.
  std::uint32_t track_mode() const { return track_mode_; }
  void set_track_mode(std::uint32_t mode) { track_mode_ = mode; }

  // Without power the camera stands where it is, and keeps all it was told.
  bool powered() const { return powered_; }
  void PowerOn() { powered_ = true; }
  void PowerOff();

  // Lets time pass; `elapsed` is not negative.
  void Advance(std::chrono::nanoseconds elapsed);

 private:
  bool CanMoveTo(const AxisValues& positions, const AxisValues& speeds) const;

  PerAxis<Axis> axes_;
  PerAxis<double> home_;
  std::string ptz_token_ = "ptz0";
  std::vector<MediaProfile> media_profiles_;
  std::uint32_t track_mode_ = 0;
  bool powered_ = true;
};

}  // namespace vptzd

#endif
