#include "world.h"

#include <algorithm>

namespace vptzd {

World::World(std::size_t cameras, const Clock& clock)
    : clock_(clock), present_(clock.Now()), cameras_(cameras) {
  for (std::uint32_t number = 1; number <= cameras; ++number) ids_.push_back({number, number});
}

std::unique_lock<std::mutex> World::Enter() {
  std::unique_lock<std::mutex> lock(mutex_);
  const std::chrono::nanoseconds now = clock_.Now();
  for (Camera& camera : cameras_) camera.Advance(now - present_);
  present_ = now;
  return lock;
}

Camera* World::FindCamera(std::uint32_t number) {
  return number >= 1 && number <= cameras_.size() ? &cameras_[number - 1] : nullptr;
}

Camera* World::FindById(std::uint32_t CameraIds::*id, std::uint32_t value) {
  const auto found =
      std::find_if(ids_.begin(), ids_.end(), [&](const CameraIds& ids) { return ids.*id == value; });
  return found == ids_.end() ? nullptr : &cameras_[static_cast<std::size_t>(found - ids_.begin())];
}

Camera* World::FindDevice(std::uint32_t id) { return FindById(&CameraIds::device, id); }

Camera* World::FindPtz(std::uint32_t id) { return FindById(&CameraIds::ptz, id); }

bool World::powered() const {
  return std::all_of(cameras_.begin(), cameras_.end(), [](const Camera& camera) { return camera.powered(); });
}

void World::PowerOn() {
  for (Camera& camera : cameras_) camera.PowerOn();
}

void World::PowerOff() {
  for (Camera& camera : cameras_) camera.PowerOff();
}

Status World::AddUsbTtyDevice(const std::string& device) {
  if (device.empty() || device.size() > kMaxUsbTtyNameLength) return Status::kBadRequest;
  const auto found = std::find(usb_tty_devices_.begin(), usb_tty_devices_.end(), device);
  if (found != usb_tty_devices_.end()) return Status::kBusy;
  if (usb_tty_devices_.size() == kMaxUsbTtyDevices) return Status::kOutOfRange;
  usb_tty_devices_.push_back(device);
  return Status::kDone;
}

Status World::RemoveUsbTtyDevice(const std::string& device) {
  const auto found = std::find(usb_tty_devices_.begin(), usb_tty_devices_.end(), device);
  if (found == usb_tty_devices_.end()) return Status::kUnknownId;
  usb_tty_devices_.erase(found);
  return Status::kDone;
}

}  // namespace vptzd
