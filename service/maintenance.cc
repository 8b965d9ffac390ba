#include <algorithm>
#include <optional>

#include "addresses.h"
#include "handlers.h"
#include "lookup.h"
#include "request.h"
#include "rows.h"
#include "settings.h"
#include "storage.h"

namespace vptzd {

using tutorial::SlaveDeviceCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

VptzResponse Announced(Service& service, const Member& member) {
  service.AnnounceRowsOf(member.ids.device);
  return Answer(Status::kDone);
}

// The camera as it is now.
Camera Copy(Service& service, const Member& member) {
  const auto lock = service.world.Enter();
  return member.camera;
}

// A camera that wants no login takes any.
Status CheckLogin(Service& service, const VptzCommand& command, const Member& member,
                  const Credentials& credentials) {
  const auto lock = service.world.Enter();
  if (service.world.FindFault(FaultKind::kRefuseLogin, &member, command.method_name()) != nullptr) {
    return Status::kNotLoggedIn;
  }
  const Credentials& wanted = member.camera.description().credentials;
  return wanted.empty() || wanted == credentials ? Status::kDone : Status::kNotLoggedIn;
}

void SetLoggedIn(Service& service, Member* member, bool logged_in) {
  const auto lock = service.world.Enter();
  member->camera.set_logged_in(logged_in || member->camera.description().credentials.empty());
}

void FillState(const Camera& camera, Device* row) {
  row->set_is_alive(true);
  row->set_authorized(camera.logged_in());
  row->set_host_name(camera.description().name);
}

// The rows of a camera that does not answer tell so.
VptzResponse Unreachable(Service& service, const Member& member) {
  ChangeDevice(member.ids.device, [](Device& row) { row.set_is_alive(false); });
  service.AnnounceRowsOf(member.ids.device);
  return Answer(Status::kOffline);
}

// ---- slaves ----

// The device that is to follow; 0 for none.
Status FollowerFor(World& world, const Member* leader, const SlaveDeviceCommand& slave, std::uint32_t* device) {
  *device = 0;
  if (slave.address().empty()) return Status::kDone;
  const auto host = ReadAddress(slave.address());
  const Member* follower = world.MemberAt(slave.address());
  if (follower == nullptr && host) follower = world.MemberAt(host->host);
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

void MoveToLine(Service& service, Member* member, const SerialAddress& settings, int unit) {
  CameraDescription description;
  {
    const auto lock = service.world.Enter();
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
  const auto lock = service.world.Enter();
  member->camera.description() = description;
}

std::vector<Member*> SerialMembers(Service& service) {
  const auto lock = service.world.Enter();
  std::vector<Member*> serial;
  for (const auto& member : service.world.members()) {
    if (member->known() && IsSerial(member->camera.description().protocol)) serial.push_back(member.get());
  }
  return serial;
}

}  // namespace

VptzResponse UpdateDeviceControlProtocol(Service& service, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(service, command, Need::kAnswer, &member);
  if (status != Status::kDone) return Answer(status);
  const std::string& protocol = command.device_command().protocol();
  // A camera is in the network or on a line, and stays there.
  const bool serial = IsSerial(Copy(service, *member).description().protocol);
  if (serial != IsSerial(protocol))
    return Answer(IsProtocol(protocol) ? Status::kBadRequest : Status::kUnknownId);
  if (!ChangeProtocol(member->ids.device, protocol)) return Answer(Status::kUnknownId);
  {
    const auto lock = service.world.Enter();
    member->camera.description().protocol = protocol;
  }
  return Announced(service, *member);
}

VptzResponse Login(Service& service, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(service, command, Need::kAnswer, &member);
  if (status != Status::kDone) return Answer(status);
  const Credentials credentials = {command.device_command().user(), command.device_command().password()};
  if (!CanStore(credentials)) return Answer(Status::kBadRequest);
  const Status refusal = CheckLogin(service, command, *member, credentials);
  if (refusal != Status::kDone) return Answer(refusal);
  StoreLogin(member->ids.device, credentials);
  SetLoggedIn(service, member, true);
  return Announced(service, *member);
}

VptzResponse Logout(Service& service, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(service, command, Need::kAnswer, &member);
  if (status != Status::kDone) return Answer(status);
  StoreLogin(member->ids.device, std::nullopt);
  SetLoggedIn(service, member, false);
  return Announced(service, *member);
}

VptzResponse UpdateDeviceInfo(Service& service, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(service, command, Need::kAnswer, &member);
  if (status == Status::kOffline) return Unreachable(service, *member);
  if (status != Status::kDone) return Answer(status);
  const Camera camera = Copy(service, *member);
  ChangeDevice(member->ids.device, [&](Device& row) { FillState(camera, &row); });
  return Announced(service, *member);
}

VptzResponse UpdateDeviceInfoFull(Service& service, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(service, command, Need::kLogin, &member);
  if (status == Status::kOffline) return Unreachable(service, *member);
  if (status != Status::kDone) return Answer(status);
  const Camera camera = Copy(service, *member);
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
  return Announced(service, *member);
}

VptzResponse SetSlaveDevice(Service& service, const VptzCommand& command) {
  if (!command.has_slave_device_command()) return Answer(Status::kBadRequest);
  const SlaveDeviceCommand& slave = command.slave_device_command();
  World& world = service.world;
  Member* leader = nullptr;
  std::uint32_t follower = 0;
  {
    const auto lock = world.Enter();
    leader = world.MemberOfDevice(static_cast<std::uint32_t>(slave.device_id()));
    Status status = world.CheckThere(leader, command.method_name());
    if (status == Status::kDone) status = FollowerFor(world, leader, slave, &follower);
    if (status != Status::kDone) return Answer(status);
  }
  StoreFollower(leader->ids.device, follower);
  {
    const auto lock = world.Enter();
    world.SetFollower(leader, follower);
  }
  return Announced(service, *leader);
}

VptzResponse UpdatePtzStatus(Service& service, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(service, command, Need::kAnswer, &member);
  if (status != Status::kDone) return Answer(status);
  const Camera camera = Copy(service, *member);
  StoreAxes(member->ids.ptz, camera);
  StoreTrackMode(member->ids, camera.track_mode());
  return Announced(service, *member);
}

VptzResponse UpdateAllRs232Devices(Service& service, const VptzCommand& command) {
  if (!command.has_device_command()) return Answer(Status::kBadRequest);
  const auto settings = ReadLineSettings(command.device_command().address());
  if (!settings) return Answer(Status::kBadRequest);
  if (!IsBaudRate(settings->baud_rate)) return Answer(Status::kOutOfRange);
  int unit = settings->unit;
  const std::vector<Member*> serial = SerialMembers(service);
  for (Member* member : serial) MoveToLine(service, member, *settings, unit++);
  if (serial.size() == 1) return Announced(service, *serial.front());
  if (!serial.empty()) service.AnnounceRows();
  return Answer(Status::kDone);
}

}  // namespace vptzd
