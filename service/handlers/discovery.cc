#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include <vptz/method_names.h>

#include "drivers/addresses.h"
#include "drivers/protocols.h"
#include "drivers/simulated/simulated_fleet.h"
#include "handlers/answers.h"
#include "handlers/handlers.h"
#include "handlers/lookup.h"
#include "log.h"
#include "store/changes.h"
#include "store/device_rows.h"
#include "store/kept.h"
#include "store/row_access.h"

namespace vptzd {

using tutorial::DeviceCommand;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

// ---- search ----

std::vector<std::string> ProtocolsOf(const DeviceCommand& command) {
  std::vector<std::string> protocols;
  if (command.protocol().empty()) {
    for (const ControlProtocol& protocol : Protocols()) {
      if (protocol.searched_unnamed) protocols.push_back(protocol.name);
    }
  }
  std::istringstream list(command.protocol());
  for (std::string name; std::getline(list, name, ',');) {
    name.erase(0, name.find_first_not_of(' '));
    name.erase(name.find_last_not_of(' ') + 1);
    protocols.push_back(name);
  }
  return protocols;
}

bool IsWanted(const Fleet& fleet, const Member& member, const std::vector<std::string>& protocols) {
  const std::string& protocol = member.camera.description().protocol;
  return !member.known() && std::find(protocols.begin(), protocols.end(), protocol) != protocols.end() &&
         fleet.CheckThere(&member, vptz::method::kSearchDevice) == Status::kDone;
}

// A search under way: finds its cameras one by one until its time is over.
struct Search {
  std::vector<Member*> found;
  std::size_t next = 0;
  bool lost = false;  // the database has not taken a camera
  std::chrono::nanoseconds step{0};
};

void MakeKnown(Context& context, Member* member) {
  std::optional<Camera> camera;
  {
    const auto lock = context.fleet.Enter();
    if (member->known()) return;  // added meanwhile
    camera = member->camera;
  }
  StoreRemoval(camera->description().service_uri, false);
  const CameraIds ids = StoreCamera(camera->Record());
  {
    const auto lock = context.fleet.Enter();
    member->ids = ids;
  }
  context.AnnounceRowsOf(ids.device);
}

// Tells how many cameras were found, or that not all of them could be stored.
void EndSearch(Context& context, const Search& search) {
  {
    const auto lock = context.fleet.Enter();
    context.fleet.set_searching(false);
  }
  VptzResponse result = Answer(Status::kNotStored);
  if (!search.lost) result.set_status_code(static_cast<int>(search.found.size()));
  context.emit("finish/search_device", result.SerializeAsString());
}

void FindNext(Context& context, const std::shared_ptr<Search>& search) {
  if (search->next == search->found.size()) {
    EndSearch(context, *search);
    return;
  }
  try {
    MakeKnown(context, search->found[search->next]);
  } catch (const StorageError& error) {
    VPTZD_LOG(LogLevel::kError, "a camera that was found is lost: %s", error.what());
    search->lost = true;
  }
  ++search->next;
  context.agenda.PostIn(search->step, [&context, search] { FindNext(context, search); });
}

// ---- addition ----

bool AreUsable(const DeviceCommand& device) {
  for (const std::string* text : {&device.mac(), &device.name(), &device.address(), &device.user(),
                                  &device.password(), &device.protocol()}) {
    if (text->size() > kMaxTextLength || text->find('\0') != std::string::npos) return false;
  }
  return true;
}

// What the command says about the camera. None when the address cannot be read.
std::optional<CameraDescription> Described(const DeviceCommand& device, const std::string& protocol) {
  CameraDescription camera;
  if (ProtocolNamed(protocol).serial) {
    const auto serial = ReadSerialAddress(device.address());
    if (!serial) return std::nullopt;
    camera = PlainCamera(protocol, serial->port);
    camera.service_uri = device.address();
    camera.uuid = "simulated-" + device.address();
  } else {
    const auto address = ReadAddress(device.address());
    if (!address) return std::nullopt;
    camera = PlainCamera(protocol, address->host);
    if (!address->scheme.empty()) camera.service_uri = device.address();
  }
  if (!device.mac().empty()) camera.mac = device.mac();
  if (!device.name().empty()) camera.name = device.name();
  camera.credentials = {device.user(), device.password()};
  return camera;
}

bool HasBaudRate(const CameraDescription& camera) {
  return !ProtocolNamed(camera.protocol).serial || IsBaudRate(ReadSerialAddress(camera.service_uri)->baud_rate);
}

// The camera of the list that is meant; null for a camera of its own.
Member* ListedMemberFor(Fleet& fleet, const CameraDescription& camera) {
  return ProtocolNamed(camera.protocol).serial ? fleet.MemberReachedBy(camera.service_uri)
                                               : fleet.MemberAt(camera.address);
}

// The camera takes on what it is added as.
void DeclareAs(const CameraDescription& added, const DeviceCommand& device, Camera* camera) {
  CameraDescription& own = camera->description();
  own.protocol = added.protocol;
  if (!device.mac().empty()) own.mac = device.mac();
  if (!device.name().empty()) own.name = device.name();
  camera->set_logged_in(own.credentials.empty() || own.credentials == added.credentials);
}

// Whether a camera that is there takes the credentials that it is added with.
Status CheckCredentials(const Fleet& fleet, const Member* member, const CameraDescription& added,
                        const std::string& method) {
  const Status status = fleet.CheckThere(member, method);
  if (status != Status::kDone) return status;
  const Credentials& wanted = member->camera.description().credentials;
  if (added.credentials.empty() || wanted.empty()) return Status::kDone;
  if (fleet.FindFault(FaultKind::kRefuseLogin, member, method) != nullptr) return Status::kNotLoggedIn;
  return added.credentials == wanted ? Status::kDone : Status::kNotLoggedIn;
}

Status CheckAddition(const Fleet& fleet, const Member* member, const CameraDescription& added,
                     const std::string& method) {
  if (member == nullptr) return Status::kDone;
  const Status status = fleet.CheckThere(member, method);
  if (status != Status::kDone) return status;
  return member->known() ? Status::kBusy : CheckCredentials(fleet, member, added, method);
}

// Whether the command's "mac" means a camera: by its hardware address, or by its
// uuid where that is not known.
bool IsMeant(const Member& member, const DeviceCommand& device) {
  const CameraDescription& own = member.camera.description();
  if (!member.known() || ProtocolNamed(own.protocol).serial) return false;
  return (own.mac.empty() ? own.uuid : own.mac) == device.mac();
}

// The known camera in the network that the command's "mac" means: it is declared
// anew. Null for every other addition.
Member* DeclaredBefore(Fleet& fleet, const DeviceCommand& device, const CameraDescription& added) {
  if (device.mac().empty() || ProtocolNamed(added.protocol).serial) return nullptr;
  // A uuid that comes from an address may be there twice.
  Member* const there = fleet.MemberAt(added.address);
  if (there != nullptr && IsMeant(*there, device)) return there;
  for (const auto& member : fleet.members()) {
    if (IsMeant(*member, device)) return member.get();
  }
  return nullptr;
}

bool IsTaken(Fleet& fleet, const CameraDescription& added, const Member* by_other_than) {
  const Member* const there = ListedMemberFor(fleet, added);
  return there != nullptr && there != by_other_than && there->known();
}

void StoreDeclaration(std::uint32_t device, const Camera& camera, const Credentials& credentials) {
  const CameraDescription& description = camera.description();
  if (!ChangeProtocol(device, description.protocol)) throw StorageError("the protocol has no row");
  ChangeDevice(device, [&](Device& row) {
    row.set_host_name(description.name);
    row.set_address(description.address);
    row.set_service_uri(description.service_uri);
    row.update_http_uri();
  });
  if (!credentials.empty() && camera.logged_in()) StoreLogin(device, credentials);
}

VptzResponse DeclareAnew(Context& context, const VptzCommand& command, const CameraDescription& added,
                         Member* member) {
  std::optional<Camera> camera;
  {
    const auto lock = context.fleet.Enter();
    if (IsTaken(context.fleet, added, member)) return Answer(Status::kBusy);
    const Status status = CheckCredentials(context.fleet, member, added, command.method_name());
    if (status != Status::kDone) return Answer(status);
    camera = member->camera;
  }
  const bool logged_in = camera->logged_in();
  const std::string mac = camera->description().mac;
  DeclareAs(added, command.device_command(), &*camera);
  camera->description().mac = mac;  // not the uuid by which it was named
  camera->description().address = added.address;
  camera->description().service_uri = added.service_uri;
  camera->set_logged_in(logged_in || camera->logged_in());
  StoreDeclaration(member->ids.device, *camera, added.credentials);
  {
    const auto lock = context.fleet.Enter();
    member->camera.description() = camera->description();
    member->camera.set_logged_in(camera->logged_in());
  }
  context.AnnounceRowsOf(member->ids.device);
  return Answer(Status::kDone);
}

VptzResponse Add(Context& context, const VptzCommand& command, const std::string& protocol) {
  const DeviceCommand& device = command.device_command();
  if (!command.has_device_command() || !AreUsable(device)) return Answer(Status::kBadRequest);
  if (!IsProtocol(protocol)) return Answer(Status::kUnknownId);
  const auto added = Described(device, protocol);
  if (!added || !CanStore(added->credentials)) return Answer(Status::kBadRequest);
  if (!HasBaudRate(*added)) return Answer(Status::kOutOfRange);
  Member* member = nullptr;
  Member* declared_before = nullptr;
  {
    const auto lock = context.fleet.Enter();
    declared_before = DeclaredBefore(context.fleet, device, *added);
  }
  if (declared_before != nullptr) return DeclareAnew(context, command, *added, declared_before);
  {
    const auto lock = context.fleet.Enter();
    member = ListedMemberFor(context.fleet, *added);
    const Status status = CheckAddition(context.fleet, member, *added, command.method_name());
    if (status != Status::kDone) return Answer(status);
    if (!context.fleet.simulated()) return Answer(Status::kUnsupported);
    if (member == nullptr) member = context.fleet.Add(*added);
    if (member == nullptr) return Answer(Status::kOutOfRange);
    DeclareAs(*added, device, &member->camera);
  }
  try {
    MakeKnown(context, member);
  } catch (const StorageError&) {
    const auto lock = context.fleet.Enter();
    context.fleet.Forget(member);
    throw;
  }
  return Answer(Status::kDone);
}

}  // namespace

VptzResponse GetStatus(Fleet&, const VptzCommand&) { return Answer(Status::kDone); }

VptzResponse SearchDevice(Context& context, const VptzCommand& command) {
  if (!command.has_device_command()) return Answer(Status::kBadRequest);
  const auto protocols = ProtocolsOf(command.device_command());
  const auto search = std::make_shared<Search>();
  {
    const auto lock = context.fleet.Enter();
    if (context.fleet.searching()) return Answer(Status::kBusy);
    context.fleet.set_searching(true);
    for (const auto& member : context.fleet.members()) {
      if (IsWanted(context.fleet, *member, protocols)) search->found.push_back(member.get());
    }
  }
  search->step = context.search_time / static_cast<std::int64_t>(search->found.size() + 1);
  context.agenda.PostIn(search->step, [&context, search] { FindNext(context, search); });
  return Answer(Status::kDone);
}

VptzResponse AddDevice(Context& context, const VptzCommand& command) {
  return Add(context, command, command.device_command().protocol());
}

VptzResponse AddOnvifDeviceManually(Context& context, const VptzCommand& command) {
  return Add(context, command, "ONVIF");
}

VptzResponse RemoveDevice(Context& context, const VptzCommand& command) {
  Member* member = nullptr;
  const Status status = LookUpDevice(context, command, Need::kAnswer, &member);
  // One that does not answer, or that nothing commands, can be removed as well.
  const bool there = status == Status::kDone || status == Status::kOffline || status == Status::kUnsupported;
  if (!there) return Answer(status);
  std::string service_uri;
  {
    const auto lock = context.fleet.Enter();
    if (!member->camera.description().removable) return Answer(Status::kNotRemovable);
    service_uri = member->camera.description().service_uri;
  }
  const CameraIds ids = member->ids;
  StoreFollower(ids.device, 0);
  ForgetHome(ids.ptz);
  if (member->listed) StoreRemoval(service_uri, true);
  RemoveCamera(ids.device);
  {
    const auto lock = context.fleet.Enter();
    context.fleet.Forget(member);
  }
  context.AnnounceRowsOf(ids.device);
  return Answer(Status::kDone);
}

}  // namespace vptzd
