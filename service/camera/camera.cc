#include "camera/camera.h"

#include <algorithm>
#include <cmath>

namespace vptzd {
namespace {

constexpr PerAxis<double> kFactoryHome = {0.0, 0.0, 1.0};
constexpr Axis::Limits kPanLimits = {-170.0, 170.0, 100.0};
constexpr Axis::Limits kTiltLimits = {-30.0, 90.0, 80.0};
constexpr Axis::Limits kZoomLimits = {1.0, 20.0, 8.0};

bool IsFiniteOrAbsent(const std::optional<double>& value) { return !value || std::isfinite(*value); }

}  // namespace

Camera::Camera()
    : axes_{Axis(kPanLimits, kFactoryHome[kPan]), Axis(kTiltLimits, kFactoryHome[kTilt]),
            Axis(kZoomLimits, kFactoryHome[kZoom])},
      home_(kFactoryHome),
      media_profiles_{{"main", {1920.0, 1080.0, 50.0, 8000.0}, {}}, {"sub", {640.0, 360.0, 25.0, 512.0}, {}}} {}

const MediaProfile* Camera::FindMediaProfile(const std::string& token) const {
  const auto found = std::find_if(media_profiles_.begin(), media_profiles_.end(),
                                  [&](const MediaProfile& profile) { return profile.token == token; });
  return found == media_profiles_.end() ? nullptr : &*found;
}

bool Camera::CanMoveTo(const AxisValues& positions, const AxisValues& speeds) const {
  for (std::size_t i = 0; i < axes_.size(); ++i) {
    if (!positions[i]) continue;
    if (!axes_[i].CanReach(*positions[i])) return false;
    if (speeds[i] && !axes_[i].CanMoveWith(*speeds[i])) return false;
  }
  return true;
}

Status Camera::MoveTo(const AxisValues& positions, const AxisValues& speeds) {
  if (!powered_) return Status::kPoweredOff;
  if (!CanMoveTo(positions, speeds)) return Status::kOutOfRange;
  for (std::size_t i = 0; i < axes_.size(); ++i) {
    if (positions[i]) axes_[i].MoveTo(*positions[i], speeds[i].value_or(axes_[i].limits().top_speed));
  }
  return Status::kDone;
}

Status Camera::MoveAt(const AxisValues& velocities) {
  if (!powered_) return Status::kPoweredOff;
  if (!std::all_of(velocities.begin(), velocities.end(), IsFiniteOrAbsent)) return Status::kOutOfRange;
  for (std::size_t i = 0; i < axes_.size(); ++i) {
    if (velocities[i]) axes_[i].MoveAt(*velocities[i]);
  }
  return Status::kDone;
}

Status Camera::GoHome(const AxisValues& speeds) {
  return MoveTo({home_[kPan], home_[kTilt], home_[kZoom]}, speeds);
}

void Camera::SetHome() {
  for (std::size_t i = 0; i < axes_.size(); ++i) home_[i] = axes_[i].position();
}

void Camera::Stop(const PerAxis<bool>& axes) {
  for (std::size_t i = 0; i < axes_.size(); ++i) {
    if (axes[i]) axes_[i].Stop();
  }
}

void Camera::PowerOff() {
  powered_ = false;
  Stop({true, true, true});
}

void Camera::Advance(std::chrono::nanoseconds elapsed) {
  for (Axis& axis : axes_) axis.Advance(elapsed);
}

}  // namespace vptzd
