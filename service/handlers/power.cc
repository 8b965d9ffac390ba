#include <optional>
#include <vector>

#include "handlers/answers.h"
#include "handlers/handlers.h"
#include "store/changes.h"
#include "store/device_rows.h"

namespace vptzd {

using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

// Brings the rows of a camera up to what it is.
void Configure(Context& context, Member* member) {
  std::optional<Camera> camera;
  {
    const auto lock = context.fleet.Enter();
    camera = member->camera;
  }
  const CameraIds ids = StoreCamera(camera->Record());
  StorePresets(ids.ptz, camera->presets());
  StoreAxes(ids.ptz, camera->abilities(), camera->position());
  const auto lock = context.fleet.Enter();
  member->ids = ids;
}

}  // namespace

VptzResponse ConfigDevices(Context& context, const VptzCommand&) {
  std::vector<Member*> known;
  {
    const auto lock = context.fleet.Enter();
    for (const auto& member : context.fleet.members()) {
      if (member->known() && member->driven) known.push_back(member.get());
    }
  }
  for (Member* member : known) Configure(context, member);
  context.AnnounceRows();
  return Answer(Status::kDone);
}

VptzResponse AddUsbTtyDevice(Fleet& fleet, const VptzCommand& command) {
  if (!command.has_usb_tty_device_params()) return Answer(Status::kBadRequest);
  return Answer(fleet.ports().Add(command.usb_tty_device_params().tty_device()));
}

VptzResponse RemoveUsbTtyDevice(Fleet& fleet, const VptzCommand& command) {
  if (!command.has_usb_tty_device_params()) return Answer(Status::kBadRequest);
  return Answer(fleet.ports().Remove(command.usb_tty_device_params().tty_device()));
}

VptzResponse FlushUsbTtyDevices(Fleet& fleet, const VptzCommand&) {
  fleet.ports().Clear();
  return Answer(Status::kDone);
}

VptzResponse EnableReset2P0(Fleet& fleet, const VptzCommand&) {
  fleet.set_reset_2p0(true);
  return Answer(Status::kDone);
}

VptzResponse DisableReset2P0(Fleet& fleet, const VptzCommand&) {
  fleet.set_reset_2p0(false);
  return Answer(Status::kDone);
}

VptzResponse PowerOnDevices(Fleet& fleet, const VptzCommand&) { return Answer(fleet.PowerOn()); }

VptzResponse PowerOffDevices(Fleet& fleet, const VptzCommand&) { return Answer(fleet.PowerOff()); }

VptzResponse GetDevicesPowerStatus(Fleet& fleet, const VptzCommand&) {
  VptzResponse response;
  response.set_status_code(static_cast<int>(fleet.powered() ? PowerStatus::kOn : PowerStatus::kOff));
  return response;
}

}  // namespace vptzd
