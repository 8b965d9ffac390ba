#include <optional>
#include <vector>

#include "camera_rows.h"
#include "handlers.h"
#include "request.h"
#include "rows.h"

namespace vptzd {

using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

// Brings the rows of a camera up to what it is.
void Configure(Service& service, Member* member) {
  std::optional<Camera> camera;
  {
    const auto lock = service.world.Enter();
    camera = member->camera;
  }
  const CameraIds ids = StoreCamera(*camera);
  StorePresets(ids.ptz, camera->presets());
  StoreAxes(ids.ptz, *camera);
  const auto lock = service.world.Enter();
  member->ids = ids;
}

}  // namespace

VptzResponse ConfigDevices(Service& service, const VptzCommand&) {
  std::vector<Member*> known;
  {
    const auto lock = service.world.Enter();
    for (const auto& member : service.world.members()) {
      if (member->known()) known.push_back(member.get());
    }
  }
  for (Member* member : known) Configure(service, member);
  service.AnnounceRows();
  return Answer(Status::kDone);
}

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
