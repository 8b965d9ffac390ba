#include "handlers.h"
#include "request.h"

namespace vptzd {

using tutorial::VptzCommand;
using tutorial::VptzResponse;

VptzResponse AddUsbTtyDevice(World& world, const VptzCommand& command) {
  if (!command.has_usb_tty_device_params()) return Answer(Status::kBadRequest);
  return Answer(world.AddUsbTtyDevice(command.usb_tty_device_params().tty_device()));
}

VptzResponse RemoveUsbTtyDevice(World& world, const VptzCommand& command) {
  if (!command.has_usb_tty_device_params()) return Answer(Status::kBadRequest);
  return Answer(world.RemoveUsbTtyDevice(command.usb_tty_device_params().tty_device()));
}

VptzResponse FlushUsbTtyDevices(World& world, const VptzCommand&) {
  world.FlushUsbTtyDevices();
  return Answer(Status::kDone);
}

VptzResponse EnableReset2P0(World& world, const VptzCommand&) {
  world.set_reset_2p0(true);
  return Answer(Status::kDone);
}

VptzResponse DisableReset2P0(World& world, const VptzCommand&) {
  world.set_reset_2p0(false);
  return Answer(Status::kDone);
}

VptzResponse PowerOnDevices(World& world, const VptzCommand&) {
  world.PowerOn();
  return Answer(Status::kDone);
}

VptzResponse PowerOffDevices(World& world, const VptzCommand&) {
  world.PowerOff();
  return Answer(Status::kDone);
}

VptzResponse GetDevicesPowerStatus(World& world, const VptzCommand&) {
  VptzResponse response;
  response.set_status_code(static_cast<int>(world.powered() ? PowerStatus::kOn : PowerStatus::kOff));
  return response;
}

}  // namespace vptzd
