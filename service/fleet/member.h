// A camera that the service looks after.
#ifndef VPTZ_SERVICE_FLEET_MEMBER_H
#define VPTZ_SERVICE_FLEET_MEMBER_H

#include <chrono>
#include <cstdint>
#include <string>

#include "drivers/simulated/camera.h"
#include "drivers/status.h"
#include "fleet/watchdog.h"
#include "store/camera_ids.h"

namespace vptzd {

struct Member {
  std::uint32_t number;  // 1 ..., in the order of the list, then of addition
  Camera camera;
  CameraIds ids{};             // all 0 while it has no rows
  bool listed = true;          // by --cameras or the fleet file; else there only as long as it has rows
  std::uint32_t follower = 0;  // device id of the camera that does what it does; 0: none
  bool driven = true;          // else only its rows are there: nothing commands the camera
  Watchdog watchdog{};

  bool known() const { return ids.device != 0; }

  // The camera's motions, as Camera tells of each; the watchdog learns who drives
  // what. A command that is refused takes nothing over.
  Status MoveTo(const AxisValues& positions, const AxisValues& speeds);
  Status MoveAt(const AxisValues& velocities, const Driver& driver);
  Status GoHome(const AxisValues& speeds);
  Status GoToPreset(const std::string& token, const AxisValues& speeds);
  void Stop(const PerAxis<bool>& axes);
  Status SetImage(const std::string& token, const ImageSettings& image);
  Status DriveFocus(const std::string& token, double velocity, const Driver& driver);
  void StopFocus();
  void PowerOff();

  // Stops what runs until it is stopped.
  void EndDrives();

  // Lets time pass: the camera moves, and what has lost its driver stops at the end
  // of its grace, however late that is noticed.
  void Advance(std::chrono::nanoseconds elapsed);

 private:
  void End(const Watchdog::PerDrive<bool>& drives);
};

}  // namespace vptzd

#endif
