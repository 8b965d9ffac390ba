#include "bus/delivery.h"

namespace vptzd {
namespace {

// Bytes that no message begins with.
constexpr char kGarbage[] = "\xff\xff\xff\xff\xff\xff no message \xff";

// The answer with a text that is too long.
std::string Oversize(const tutorial::VptzResponse& response) {
  tutorial::VptzResponse padded = response;
  padded.set_nat_address(std::string(Delivery::kOversize, 'x'));
  return padded.SerializeAsString();
}

}  // namespace

Delivery PlanDelivery(Fleet& fleet, const Call& call, const tutorial::VptzResponse& response) {
  Delivery delivery;
  const auto lock = fleet.Enter();
  const Member* member = NamedMember(fleet, call);
  const auto fault = [&](FaultKind kind) { return fleet.FindFault(kind, member, call.method->name); };
  if (member != nullptr) delivery.delay = member->camera.description().delay;
  if (const Fault* slow = fault(FaultKind::kDelay)) delivery.delay += slow->time;
  delivery.lost = fault(FaultKind::kDrop) != nullptr;
  if (delivery.lost) delivery.delay = Delivery::kLost;
  delivery.bytes = response.SerializeAsString();
  if (fault(FaultKind::kOversize) != nullptr) delivery.bytes = Oversize(response);
  if (fault(FaultKind::kGarble) != nullptr) delivery.bytes = kGarbage;
  return delivery;
}

}  // namespace vptzd
