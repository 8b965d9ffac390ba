// One simulated pan-tilt-zoom camera.
//
// A value like its axes: nothing moves but by Advance. It knows nothing of how
// commands reach it. A command that it refuses changes nothing, on no axis.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_CAMERA_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_CAMERA_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drivers/camera_record.h"
#include "drivers/simulated/axis.h"
#include "drivers/simulated/description.h"
#include "drivers/status.h"

namespace vptzd {

class Camera {
 public:
  // Powered, at rest, at its home position: straight ahead, zoomed out, or as
  // near as its ranges allow.
  explicit Camera(const CameraDescription& description = {});

  const CameraDescription& description() const { return description_; }
  CameraDescription& description() { return description_; }

  // The axis, also one that the camera does not have: that one never moves.
  const Axis& axis(AxisIndex index) const { return axes_[index]; }
  bool HasAxis(AxisIndex index) const { return description_.axes[index].has_value(); }
  PerAxis<double> position() const;
  const std::string& ptz_token() const { return ptz_token_; }

  const std::vector<MediaProfile>& media_profiles() const { return media_profiles_; }

  Abilities abilities() const;

  // What the database is to tell of it.
  CameraRecord Record() const;

  // Null when there is no such profile.
  const MediaProfile* FindMediaProfile(const std::string& token) const;

  // Begins to move each axis that has a position, with its speed or, without
  // one, with its top speed. The speed of an axis without a position does not
  // count. kPoweredOff; kUnsupportedAxis; kOutOfRange for a position outside
  // the range, a speed of 0 and less or beyond the top speed, and numbers that
  // are not finite.
  Status MoveTo(const AxisValues& positions, const AxisValues& speeds);

  // Begins to move each axis that has a velocity, until Stop or a limit; a velocity
  // of 0 stops the axis. More than the top speed is taken as the top speed, as with
  // a joystick pushed to its end. kPoweredOff; kUnsupportedAxis; kOutOfRange for
  // numbers that are not finite.
  Status MoveAt(const AxisValues& velocities);

  // MoveTo of all axes to the home position.
  Status GoHome(const AxisValues& speeds);

  // Makes the present position the home position, also in motion.
  void SetHome() { SetHome(position()); }

  // The same with another position; what lies outside the ranges is brought in.
  void SetHome(const PerAxis<double>& position);

  // None while home is where it was at first.
  const std::optional<PerAxis<double>>& home() const { return home_; }

  // Slows the marked axes down to rest, whatever moves them.
  void Stop(const PerAxis<bool>& axes);

  // Loses its power after so much time in which an axis moves.
  void LosePowerAfter(std::chrono::nanoseconds motion) { power_left_ = motion; }
  void KeepPower() { power_left_.reset(); }

  // kPoweredOff; kUnknownId for a token that is not there; else as MoveTo.
  Status GoToPreset(const std::string& token, const AxisValues& speeds);
  const PresetList& presets() const { return presets_; }
  PresetList& presets() { return presets_; }

  // Both are kept and reported; a simulated camera follows nobody, so any
  // number will do.
  std::uint32_t track_mode() const { return track_mode_; }
  void set_track_mode(std::uint32_t mode) { track_mode_ = mode; }

  // The picture of a media profile that is there. kOutOfRange.
  Status SetImage(const std::string& token, const ImageSettings& image);

  // The lens: 0 focuses at the near end, 1 at the far end, kSharp at what there
  // is to see.
  static constexpr double kSharp = 0.6;
  const Axis& focus() const { return focus_; }

  // Drives the focus, at 1 towards the far end and at -1 towards the near end
  // with its top speed, until StopFocus or an end. The profile's focus becomes manual.
  // kPoweredOff.
  Status DriveFocus(const std::string& token, double velocity);
  void StopFocus();

  // Whether the service may command it: it wants no login or has been given one.
  bool logged_in() const { return logged_in_; }
  void set_logged_in(bool logged_in) { logged_in_ = logged_in; }

  // Without power the camera stands where it is, and keeps all it was told.
  bool powered() const { return powered_; }
  void PowerOn() { powered_ = true; }
  void PowerOff();

  // Lets time pass; `elapsed` is not negative.
  void Advance(std::chrono::nanoseconds elapsed);

 private:
  using TimeLeft = std::optional<std::chrono::nanoseconds>;

  MediaProfile* FindProfile(const std::string& token);
  Status CheckMove(const AxisValues& positions, const AxisValues& speeds) const;
  bool Moving() const;
  void AdvanceAxes(std::chrono::nanoseconds elapsed);

  CameraDescription description_;
  PerAxis<Axis> axes_;
  PerAxis<double> factory_home_;
  std::optional<PerAxis<double>> home_;
  Axis focus_;
  PresetList presets_;
  std::string ptz_token_ = "ptz0";
  std::vector<MediaProfile> media_profiles_;
  std::uint32_t track_mode_ = 0;
  bool logged_in_ = true;
  bool powered_ = true;
  TimeLeft power_left_;
};

}  // namespace vptzd

#endif
