#include <algorithm>
#include <optional>

#include "drivers/addresses.h"
#include "drivers/protocols.h"
#include "handlers/answers.h"
#include "handlers/handlers.h"
#include "handlers/lookup.h"
#include "store/changes.h"
#include "store/kept.h"
#include "store/row_access.h"

namespace vptzd {

using tutorial::SlaveDeviceCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

VptzResponse Announced(Context& context, const Member& member) {
  context.AnnounceRowsOf(member.ids.device);
  return Answer(Status::kDone);
}

// The camera as it is now.
Camera Copy(Context& context, const Member& member) {
  const auto lock = context.fleet.Enter();
  return member.camera;
}

// A camera that wants no login takes any.
Status CheckLogin(Context& context, const VptzCommand& command, const Member& member,
                  const Credentials& credentials) {
  const auto lock = context.fleet.Enter();
  if (context.fleet.FindFault(FaultKind::kRefuseLogin, &member, command.method_name()) != nullptr) {
    return Status::kNotLoggedIn;
  }
  const Credentials& wanted = member.camera.description().credentials;
  return wanted.empty() || wanted == credentials ? Status::kDone : Status::kNotLoggedIn;
}

void SetLoggedIn(Context& context, Member* member, bool logged_in) {
  const auto lock = context.fleet.Enter();
  member->camera.set_logged_in(logged_in || member->camera.description().credentials.empty());
}

void FillState(const Camera& camera, Device* row) {
  row->set_is_alive(true);
  row->set_authorized(camera.logged_in());
  row->set_host_name(camera.description().name);
}

// The rows of a camera that does not answer tell so.
VptzResponse Unreachable(Context& context, const Member& member) {
  ChangeDevice(member.ids.device, [](Device& row) { row.set_is_alive(false); });
  context.AnnounceRowsOf(member.ids.device);
  return Answer(Status::kOffline);
}

// ---- slaves ----

// The device that is to follow; 0 for none.
Status FollowerFor(Fleet& fleet, const Member* leader, const SlaveDeviceCommand& slave, std::uint32_t* device) {
  *device = 0;
  if (slave.address().empty()) return Status::kDone;
  const auto host = ReadAddress(slave.address());
  const Member* follower = fleet.MemberAt(slave.address());
  if (follower == nullptr && host) follower = fleet.MemberAt(host->host);
  if (follower == nullptr || !follower->known()) return Status::kUnknownId;
  if (follower == leader) return Status::kBadRequest;
  const Credentials& wanted = follower->camera.description().credentials;
  if (!wanted.empty() && !(wanted == Credentials{slave.account(), slave.credentials()})) {
    return Status::kNotLoggedIn;
  }
  *device = follower->ids.device;
  return Status::kDone;
}

// ---- serial lines ----

// rs232://PORT/BAUD_RATE/UNIT/FLAGS. The flags mean nothing to a simulated line.
std::optional<SerialAddress> ReadLineSettings(const std::string& text) {
  auto address = ReadSerialAddress(text);  // the baud rate stands where the line is, the unit one before
  if (!address || address->line.empty() || address->line.size() > 9) return std::nullopt;
  if (address->line.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  address->unit = address->baud_rate;
  address->baud_rate = std::stoi(address->line);
  return address;
}

void MoveToLine(Context& context, Member* member, const SerialAddress& settings, int unit) {
  CameraDescription description;
  {
    const auto lock = context.fleet.Enter();
    description = member->camera.description();
  }
  auto own = ReadSerialAddress(description.service_uri);
  if (!own) throw StorageError("a serial device has no serial address");
  own->port = settings.port;
  own->baud_rate = settings.baud_rate;
  own->unit = unit;
  description.service_uri = SerialUri(*own);
  description.address = description.mac = own->port;
  ChangeDevice(member->ids.device, [&](Device& row) {
    row.set_service_uri(description.service_uri);
    row.set_address(description.address);
    row.set_mac(description.mac);
  });
  const auto lock = context.fleet.Enter();
  member->camera.description() = description;
}

std::vector<Member*> SerialMembers(Context& context) {
  const auto lock = context.fleet.Enter();
  std::vector<Member*> serial;
  for (const auto& member : context.fleet.members()) {
    if (!member->known() || !member->driven) continue;
    if (ProtocolNamed(member->camera.description().protocol).serial) serial.push_back(member.get());
  }
  return serial;
}

}  // namespace

VptzResponse UpdateDeviceControlProtocol(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kAnswer, &member);
  if (status != Status::kDone) return Answer(status);
  const std::string& protocol = command.device_command().protocol();
  // A camera is in the network or on a line, and stays there.
  const bool serial = ProtocolNamed(Copy(context, *member).description().protocol).serial;
  if (serial != ProtocolNamed(protocol).serial)
    return Answer(IsProtocol(protocol) ? Status::kBadRequest : Status::kUnknownId);
  if (!ChangeProtocol(member->ids.device, protocol)) return Answer(Status::kUnknownId);
  {
    const auto lock = context.fleet.Enter();
    member->camera.description().protocol = protocol;
  }
  return Announced(context, *member);
}

VptzResponse Login(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kAnswer, &member);
  if (status != Status::kDone) return Answer(status);
  const Credentials credentials = {command.device_command().user(), command.device_command().password()};
  if (!CanStore(credentials)) return Answer(Status::kBadRequest);
  const Status refusal = CheckLogin(context, command, *member, credentials);
  if (refusal != Status::kDone) return Answer(refusal);
  StoreLogin(member->ids.device, credentials);
  SetLoggedIn(context, member, true);
  return Announced(context, *member);
}

VptzResponse Logout(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kAnswer, &member);
  if (status != Status::kDone) return Answer(status);
  StoreLogin(member->ids.device, std::nullopt);
  SetLoggedIn(context, member, false);
  return Announced(context, *member);
}

VptzResponse UpdateDeviceInfo(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kAnswer, &member);
  if (status == Status::kOffline) return Unreachable(context, *member);
  if (status != Status::kDone) return Answer(status);
  const Camera camera = Copy(context, *member);
  ChangeDevice(member->ids.device, [&](Device& row) { FillState(camera, &row); });
  return Announced(context, *member);
}

VptzResponse UpdateDeviceInfoFull(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kLogin, &member);
  if (status == Status::kOffline) return Unreachable(context, *member);
  if (status != Status::kDone) return Answer(status);
  const Camera camera = Copy(context, *member);
  const CameraDescription& description = camera.description();
  ChangeDevice(member->ids.device, [&](Device& row) {
    FillState(camera, &row);
    row.set_mac(description.mac);
    row.set_uuid(description.uuid);
    row.set_manufacture(description.manufacturer);
    row.set_model_name(description.model);
    row.set_firmware_version(description.firmware);
    row.update_http_uri();
  });
  return Announced(context, *member);
}

VptzResponse SetSlaveDevice(Context& context, const VptzCommand& command) {
  if (!command.has_slave_device_command()) return Answer(Status::kBadRequest);
  const SlaveDeviceCommand& slave = command.slave_device_command();
  Fleet& fleet = context.fleet;
  Member* leader = nullptr;
  std::uint32_t follower = 0;
  {
    const auto lock = fleet.Enter();
    leader = fleet.MemberOfDevice(static_cast<std::uint32_t>(slave.device_id()));
    Status status = fleet.CheckThere(leader, command.method_name());
    if (status == Status::kDone) status = FollowerFor(fleet, leader, slave, &follower);
    if (status != Status::kDone) return Answer(status);
  }
  StoreFollower(leader->ids.device, follower);
  {
    const auto lock = fleet.Enter();
    fleet.SetFollower(leader, follower);
  }
  return Announced(context, *leader);
}

VptzResponse UpdatePtzStatus(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kAnswer, &member);
  if (status != Status::kDone) return Answer(status);
  const Camera camera = Copy(context, *member);
  StoreAxes(member->ids.ptz, camera.abilities(), camera.position());
  StoreTrackMode(member->ids, camera.track_mode());
  return Announced(context, *member);
}

VptzResponse UpdateAllRs232Devices(Context& context, const VptzCommand& command) {
  if (!command.has_device_command()) return Answer(Status::kBadRequest);
  const auto settings = ReadLineSettings(command.device_command().address());
  if (!settings) return Answer(Status::kBadRequest);
  if (!IsBaudRate(settings->baud_rate)) return Answer(Status::kOutOfRange);
  int unit = settings->unit;
  const std::vector<Member*> serial = SerialMembers(context);
  for (Member* member : serial) MoveToLine(context, member, *settings, unit++);
  if (serial.size() == 1) return Announced(context, *serial.front());
  if (!serial.empty()) context.AnnounceRows();
  return Answer(Status::kDone);
}

}  // namespace vptzd
