#include "fleet/member.h"

namespace vptzd {
namespace {

constexpr AxisIndex kAxes[] = {kPan, kTilt, kZoom};

}  // namespace

Status Member::MoveTo(const AxisValues& positions, const AxisValues& speeds) {
  const Status status = camera.MoveTo(positions, speeds);
  if (status != Status::kDone) return status;
  for (const AxisIndex i : kAxes) {
    if (positions[i]) watchdog.Free(i);
  }
  return status;
}

Status Member::MoveAt(const AxisValues& velocities, const Driver& driver) {
  const Status status = camera.MoveAt(velocities);
  if (status != Status::kDone) return status;
  for (const AxisIndex i : kAxes) {
    if (velocities[i]) watchdog.Take(i, driver);
  }
  return status;
}

Status Member::GoHome(const AxisValues& speeds) {
  const Status status = camera.GoHome(speeds);
  if (status != Status::kDone) return status;
  for (const AxisIndex i : kAxes) watchdog.Free(i);
  return status;
}

Status Member::GoToPreset(const std::string& token, const AxisValues& speeds) {
  const Status status = camera.GoToPreset(token, speeds);
  if (status != Status::kDone) return status;
  for (const AxisIndex i : kAxes) watchdog.Free(i);
  return status;
}

void Member::Stop(const PerAxis<bool>& axes) {
  for (const AxisIndex i : kAxes) {
    if (axes[i]) watchdog.Free(i);
  }
  camera.Stop(axes);
}

Status Member::SetImage(const std::string& token, const ImageSettings& image) {
  const bool was_manual = camera.FindMediaProfile(token)->image.auto_focus == 0.0;
  const Status status = camera.SetImage(token, image);
  if (status == Status::kDone && was_manual && image.auto_focus != 0.0) watchdog.Free(Watchdog::kFocus);
  return status;
}

Status Member::DriveFocus(const std::string& token, double velocity, const Driver& driver) {
  const Status status = camera.DriveFocus(token, velocity);
  if (status == Status::kDone) watchdog.Take(Watchdog::kFocus, driver);
  return status;
}

void Member::StopFocus() {
  watchdog.Free(Watchdog::kFocus);
  camera.StopFocus();
}

void Member::PowerOff() {
  watchdog.FreeAll();
  camera.PowerOff();
}

void Member::End(const Watchdog::PerDrive<bool>& drives) {
  camera.Stop({drives[kPan], drives[kTilt], drives[kZoom]});
  if (drives[Watchdog::kFocus]) camera.StopFocus();
}

void Member::EndDrives() {
  End(watchdog.Driven());
  watchdog.FreeAll();
}

void Member::Advance(std::chrono::nanoseconds elapsed) {
  do {
    const std::chrono::nanoseconds step = watchdog.UntilNextEnd(elapsed);
    camera.Advance(step);
    End(watchdog.Advance(step));
    elapsed -= step;
  } while (elapsed > std::chrono::nanoseconds(0));
}

}  // namespace vptzd
