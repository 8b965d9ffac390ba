// Everything that the service looks after: the cameras, their power and the
// ports. Guarded by one lock, which whoever uses the world holds meanwhile.
#ifndef VPTZ_SERVICE_WORLD_H
#define VPTZ_SERVICE_WORLD_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "camera/clock.h"
#include "status.h"

namespace vptzd {

// The rows by which a camera is known in the database, and so in commands.
struct CameraIds {
  std::uint32_t device;
  std::uint32_t ptz;
};

class World {
 public:
  static constexpr std::size_t kMaxCameras = 64;

  // What a caller can make the service remember is limited: this many ports,
  // named by texts of at most this many bytes.
  static constexpr std::size_t kMaxUsbTtyDevices = 64;
  static constexpr std::size_t kMaxUsbTtyNameLength = 255;

  // `cameras` is 1 ... kMaxCameras; the clock outlives the world.
  World(std::size_t cameras, const Clock& clock);

  // Locks the world and brings it to the present time.
  std::unique_lock<std::mutex> Enter();

  std::size_t size() const { return cameras_.size(); }

  // Camera 1 ... N by its number. Null when there is none.
  Camera* FindCamera(std::uint32_t number);

  // A camera by the id of its device, or of its PTZ node. Both are its number
  // until SetIds tells otherwise. Null when there is none.
  Camera* FindDevice(std::uint32_t id);
  Camera* FindPtz(std::uint32_t id);

  // What a camera is called in commands.
  void SetIds(std::size_t number, CameraIds ids) { ids_[number - 1] = ids; }

  // Whether all cameras have power.
  bool powered() const;
  void PowerOn();
  void PowerOff();

  // kBadRequest for an empty or too long text, kBusy for a port that is there
  // already, kOutOfRange when no more fit.
  Status AddUsbTtyDevice(const std::string& device);

  // kUnknownId for a port that is not there.
  Status RemoveUsbTtyDevice(const std::string& device);

  void FlushUsbTtyDevices() { usb_tty_devices_.clear(); }
  const std::vector<std::string>& usb_tty_devices() const { return usb_tty_devices_; }

  bool reset_2p0() const { return reset_2p0_; }
  void set_reset_2p0(bool enabled) { reset_2p0_ = enabled; }

 private:
  Camera* FindById(std::uint32_t CameraIds::*id, std::uint32_t value);

  std::mutex mutex_;
  const Clock& clock_;
  std::chrono::nanoseconds present_;
  std::vector<Camera> cameras_;
  std::vector<CameraIds> ids_;  // of the cameras, in the same order
  std::vector<std::string> usb_tty_devices_;
  bool reset_2p0_ = false;
};

}  // namespace vptzd

#endif
