#include "drivers/simulated/camera.h"

#include <algorithm>
#include <cmath>

#include "drivers/protocols.h"

namespace vptzd {
namespace {

using std::chrono::nanoseconds;

constexpr AxisIndex kAxes[] = {kPan, kTilt, kZoom};
constexpr PerAxis<double> kFactoryHome = {0.0, 0.0, 1.0};
constexpr Axis::Limits kFocusLimits = {0.0, 1.0, 0.5, 2.0};

bool IsFiniteOrAbsent(const std::optional<double>& value) { return !value || std::isfinite(*value); }

Axis NewAxis(const CameraDescription& description, AxisIndex index) {
  const double home = kFactoryHome[index];
  const auto& limits = description.axes[index];
  if (!limits) return Axis({home, home, 1.0, 1.0}, home);
  return Axis(*limits, std::clamp(home, limits->min, limits->max));
}

bool InPercent(double value) { return value >= 0.0 && value <= 100.0; }

bool IsSwitch(double value) { return value == 0.0 || value == 1.0; }

}  // namespace

Camera::Camera(const CameraDescription& description)
    : description_(description),
      axes_{NewAxis(description, kPan), NewAxis(description, kTilt), NewAxis(description, kZoom)},
      factory_home_(position()),
      focus_(kFocusLimits, kSharp),
      presets_(ProtocolNamed(description.protocol).preset_shift),
      media_profiles_{{"main", {1920.0, 1080.0, 50.0, 8000.0}, {}}, {"sub", {640.0, 360.0, 25.0, 512.0}, {}}} {
  for (const StoredPosition& preset : description.presets) presets_.Store(preset);
}

PerAxis<double> Camera::position() const {
  return {axes_[kPan].position(), axes_[kTilt].position(), axes_[kZoom].position()};
}

Abilities Camera::abilities() const {
  Abilities abilities;
  abilities.ptz_token = ptz_token_;
  for (const AxisIndex i : kAxes) {
    const Axis::Limits& limits = axes_[i].limits();
    if (HasAxis(i)) abilities.axes[i] = {limits.min, limits.max, limits.top_speed};
  }
  return abilities;
}

CameraRecord Camera::Record() const {
  const CameraState state = {position(),     track_mode_,    logged_in_, description_.credentials,
                             presets_.all(), media_profiles_};
  return {description_, abilities(), state};
}

MediaProfile* Camera::FindProfile(const std::string& token) {
  const auto found = std::find_if(media_profiles_.begin(), media_profiles_.end(),
                                  [&](const MediaProfile& profile) { return profile.token == token; });
  return found == media_profiles_.end() ? nullptr : &*found;
}

const MediaProfile* Camera::FindMediaProfile(const std::string& token) const {
  return const_cast<Camera*>(this)->FindProfile(token);
}

Status Camera::CheckMove(const AxisValues& positions, const AxisValues& speeds) const {
  if (!powered_) return Status::kPoweredOff;
  for (const AxisIndex i : kAxes) {
    if (positions[i] && !HasAxis(i)) return Status::kUnsupportedAxis;
  }
  for (const AxisIndex i : kAxes) {
    if (!positions[i]) continue;
    if (!axes_[i].CanReach(*positions[i])) return Status::kOutOfRange;
    if (speeds[i] && !axes_[i].CanMoveWith(*speeds[i])) return Status::kOutOfRange;
  }
  return Status::kDone;
}

Status Camera::MoveTo(const AxisValues& positions, const AxisValues& speeds) {
  const Status status = CheckMove(positions, speeds);
  if (status != Status::kDone) return status;
  for (const AxisIndex i : kAxes) {
    if (!positions[i]) continue;
    axes_[i].MoveTo(*positions[i], speeds[i].value_or(axes_[i].limits().top_speed));
  }
  return Status::kDone;
}

Status Camera::MoveAt(const AxisValues& velocities) {
  if (!powered_) return Status::kPoweredOff;
  for (const AxisIndex i : kAxes) {
    if (velocities[i] && !HasAxis(i)) return Status::kUnsupportedAxis;
  }
  if (!std::all_of(velocities.begin(), velocities.end(), IsFiniteOrAbsent)) return Status::kOutOfRange;
  for (const AxisIndex i : kAxes) {
    if (!velocities[i]) continue;
    axes_[i].MoveAt(*velocities[i]);
  }
  return Status::kDone;
}

Status Camera::GoHome(const AxisValues& speeds) {
  AxisValues positions;
  for (const AxisIndex i : kAxes) {
    if (HasAxis(i)) positions[i] = home_.value_or(factory_home_)[i];
  }
  return MoveTo(positions, speeds);
}

void Camera::SetHome(const PerAxis<double>& position) {
  home_ = position;
  for (const AxisIndex i : kAxes) {
    const Axis::Limits& limits = axes_[i].limits();
    (*home_)[i] = std::clamp((*home_)[i], limits.min, limits.max);
  }
}

void Camera::Stop(const PerAxis<bool>& axes) {
  for (const AxisIndex i : kAxes) {
    if (axes[i]) axes_[i].Stop();
  }
}

Status Camera::GoToPreset(const std::string& token, const AxisValues& speeds) {
  if (!powered_) return Status::kPoweredOff;
  const StoredPosition* preset = presets_.Find(token);
  if (preset == nullptr) return Status::kUnknownId;
  AxisValues positions;
  for (const AxisIndex i : kAxes) {
    if (HasAxis(i)) positions[i] = preset->position[i];
  }
  return MoveTo(positions, speeds);
}

Status Camera::SetImage(const std::string& token, const ImageSettings& image) {
  if (!InPercent(image.brightness) || !InPercent(image.contrast) || !InPercent(image.sharpness)) {
    return Status::kOutOfRange;
  }
  if (!IsSwitch(image.auto_focus) || !IsSwitch(image.backlight_mode)) return Status::kOutOfRange;
  MediaProfile* profile = FindProfile(token);
  const bool focuses = image.auto_focus == 1.0 && profile->image.auto_focus == 0.0;
  profile->image = image;
  if (focuses && powered_) {
    focus_.MoveTo(kSharp, kFocusLimits.top_speed);
  }
  return Status::kDone;
}

Status Camera::DriveFocus(const std::string& token, double velocity) {
  if (!powered_) return Status::kPoweredOff;
  FindProfile(token)->image.auto_focus = 0.0;
  focus_.MoveAt(velocity * kFocusLimits.top_speed);
  return Status::kDone;
}

void Camera::StopFocus() { focus_.Stop(); }

void Camera::PowerOff() {
  powered_ = false;
  for (Axis& axis : axes_) axis.Halt();
  focus_.Halt();
}

bool Camera::Moving() const {
  return std::any_of(axes_.begin(), axes_.end(), [](const Axis& axis) { return axis.moving(); });
}

void Camera::AdvanceAxes(nanoseconds elapsed) {
  if (power_left_ && Moving()) *power_left_ -= elapsed;
  for (Axis& axis : axes_) axis.Advance(elapsed);
  focus_.Advance(elapsed);
}

void Camera::Advance(nanoseconds elapsed) {
  const bool runs_out = power_left_ && Moving();
  const nanoseconds step = runs_out ? std::min(elapsed, *power_left_) : elapsed;
  AdvanceAxes(step);
  if (power_left_ && *power_left_ <= nanoseconds(0)) {
    power_left_.reset();
    PowerOff();
  }
  if (step < elapsed) Advance(elapsed - step);
}

}  // namespace vptzd
