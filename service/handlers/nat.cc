#include <algorithm>
#include <optional>
#include <vector>

#include "drivers/addresses.h"
#include "handlers/answers.h"
#include "handlers/handlers.h"

namespace vptzd {

using tutorial::NATCommand;
using tutorial::NATParams;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

namespace {

constexpr NatKind kKinds[] = {NatKind::kMedia, NatKind::kService, NatKind::kHttp};
constexpr int kMaxMappings = 16;

// Which mappings a number means; none for a number that means nothing.
std::vector<NatKind> KindsOf(std::int32_t type) {
  if (type == static_cast<std::int32_t>(NatKind::kAll)) return {std::begin(kKinds), std::end(kKinds)};
  for (const NatKind kind : kKinds) {
    if (type == static_cast<std::int32_t>(kind)) return {kind};
  }
  return {};
}

// Of the eight members of a mapping text1 is the outside host, number1 the
// outside port and number2 what the mapping is for; an empty text and zeros leave
// the choice to the service. The other texts mean nothing.
std::vector<NatKind> KindsOf(const NATCommand& nat, const NATParams& mapping) {
  return KindsOf(mapping.number2() == 0 ? nat.nat_type() : mapping.number2());
}

// Opens what a mapping asks for in a table that is taken over only as a whole.
Status Open(const NATCommand& nat, const NATParams& mapping, NatTable* table) {
  const std::vector<NatKind> kinds = KindsOf(nat, mapping);
  const int port = mapping.number1();
  if (kinds.empty() || port < 0 || port > NatTable::kLastPort) return Status::kOutOfRange;
  if (mapping.text1().size() > kMaxTextLength) return Status::kBadRequest;
  if (port != 0 && kinds.size() > 1) return Status::kBadRequest;  // one port cannot be that of several
  for (const NatKind kind : kinds) {
    const NatTable::Key key = {nat.device_id(), kind};
    if (port != 0 && !table->IsFree(port, key)) return Status::kBusy;
    if (!table->Open(key, mapping.text1(), port)) return Status::kOutOfRange;
  }
  return Status::kDone;
}

Status CheckDevice(Fleet& fleet, const VptzCommand& command) {
  if (!command.has_nat_command()) return Status::kBadRequest;
  const NATCommand& nat = command.nat_command();
  if (fleet.MemberOfDevice(nat.device_id()) == nullptr) return Status::kUnknownId;
  return KindsOf(nat.nat_type()).empty() ? Status::kOutOfRange : Status::kDone;
}

// The kind that an address is of when the command names none.
NatKind KindOfAddress(const Member& member, const std::string& address, std::int32_t type) {
  if (type != static_cast<std::int32_t>(NatKind::kAll)) return static_cast<NatKind>(type);
  if (address.rfind("rtsp://", 0) == 0) return NatKind::kMedia;
  return address == member.camera.description().service_uri ? NatKind::kService : NatKind::kHttp;
}

std::string Outside(const std::string& inside, const NatTable::Mapping& mapping) {
  const auto address = ReadAddress(inside);
  if (!address) return "";
  const std::string scheme = address->scheme.empty() ? "" : address->scheme + "://";
  return scheme + mapping.host + ":" + std::to_string(mapping.port) + address->path;
}

}  // namespace

VptzResponse ClearNat(Fleet& fleet, const VptzCommand&) {
  fleet.nat().Clear();
  return Answer(Status::kDone);
}

VptzResponse QueryNatUri(Fleet& fleet, const VptzCommand& command) {
  VptzResponse response = Answer(CheckDevice(fleet, command));
  response.set_nat_address("");
  if (response.status_code() != 0) return response;
  const NATCommand& nat = command.nat_command();
  if (nat.address().size() > kMaxTextLength) return Answer(Status::kBadRequest);
  const NatKind kind = KindOfAddress(*fleet.MemberOfDevice(nat.device_id()), nat.address(), nat.nat_type());
  const NatTable::Mapping* mapping = fleet.nat().Find({nat.device_id(), kind});
  if (mapping != nullptr) response.set_nat_address(Outside(nat.address(), *mapping));
  return response;
}

VptzResponse EnableNat(Fleet& fleet, const VptzCommand& command) {
  Status status = CheckDevice(fleet, command);
  if (status != Status::kDone) return Answer(status);
  const NATCommand& nat = command.nat_command();
  if (nat.params_size() > kMaxMappings) return Answer(Status::kOutOfRange);
  NatTable table = fleet.nat();
  if (nat.params_size() == 0) status = Open(nat, NATParams(), &table);
  for (const NATParams& mapping : nat.params()) {
    if (status == Status::kDone) status = Open(nat, mapping, &table);
  }
  if (status == Status::kDone) fleet.nat() = table;
  return Answer(status);
}

VptzResponse DisableNat(Fleet& fleet, const VptzCommand& command) {
  const Status status = CheckDevice(fleet, command);
  if (status != Status::kDone) return Answer(status);
  const NATCommand& nat = command.nat_command();
  for (const NatKind kind : KindsOf(nat.nat_type())) fleet.nat().Close({nat.device_id(), kind});
  return Answer(Status::kDone);
}

}  // namespace vptzd
