#include "fleet/fleet.h"

#include <algorithm>
#include <utility>

#include "drivers/addresses.h"
#include "drivers/protocols.h"
#include "drivers/simulated/simulated_fleet.h"

namespace vptzd {

Fleet::Fleet(const std::vector<CameraDescription>& cameras, const Clock& clock)
    : clock_(clock), present_(clock.Now()) {
  for (const CameraDescription& camera : cameras) {
    Member* member = Add(camera);
    member->listed = true;
    member->camera.set_logged_in(camera.known || camera.credentials.empty());
  }
}

Fleet::Fleet(std::size_t cameras, const Clock& clock) : clock_(clock), present_(clock.Now()) {
  for (std::uint32_t number = 1; number <= cameras; ++number) {
    Member* member = Add(BuiltInCamera(number));
    member->listed = true;
    member->ids = {number, number, {2 * number - 1, 2 * number}};
  }
}

Fleet::Fleet(const Clock& clock) : clock_(clock), simulated_(false), present_(clock.Now()) {}

std::unique_lock<std::mutex> Fleet::Enter() {
  std::unique_lock<std::mutex> lock(mutex_);
  const std::chrono::nanoseconds now = clock_.Now();
  for (const auto& member : members_) member->Advance(now - present_);
  present_ = now;
  return lock;
}

template <class Condition>
Member* Fleet::FindIf(Condition condition) {
  const auto found =
      std::find_if(members_.begin(), members_.end(), [&](const auto& member) { return condition(*member); });
  return found == members_.end() ? nullptr : found->get();
}

Camera* Fleet::CameraNumber(std::uint32_t number) {
  Member* member = FindIf([&](const Member& other) { return other.number == number; });
  return member == nullptr ? nullptr : &member->camera;
}

Member* Fleet::MemberOfDevice(std::uint32_t id) {
  return FindIf([&](const Member& member) { return id != 0 && member.ids.device == id; });
}

Member* Fleet::MemberOfPtz(std::uint32_t id) {
  return FindIf([&](const Member& member) { return id != 0 && member.known() && member.ids.ptz == id; });
}

Member* Fleet::MemberOfMedia(std::uint32_t id) {
  return FindIf([&](const Member& member) {
    const auto& media = member.ids.media;
    return member.known() && std::find(media.begin(), media.end(), id) != media.end();
  });
}

Camera* Fleet::CameraOfDevice(std::uint32_t id) {
  Member* member = MemberOfDevice(id);
  return member == nullptr ? nullptr : &member->camera;
}

Camera* Fleet::CameraOfPtz(std::uint32_t id) {
  Member* member = MemberOfPtz(id);
  return member == nullptr ? nullptr : &member->camera;
}

Member* Fleet::MemberAt(const std::string& address) {
  return FindIf([&](const Member& member) {
    const CameraDescription& camera = member.camera.description();
    return camera.address == address ||
           (ProtocolNamed(camera.protocol).serial && PortPath(camera.address) == PortPath(address));
  });
}

Member* Fleet::MemberOfService(const std::string& service_uri) {
  return FindIf([&](const Member& member) { return member.camera.description().service_uri == service_uri; });
}

Member* Fleet::MemberReachedBy(const std::string& service_uri) {
  return FindIf(
      [&](const Member& member) { return IsSamePlace(member.camera.description().service_uri, service_uri); });
}

Member* Fleet::Add(const CameraDescription& description) {
  if (members_.size() == kMaxMembers) return nullptr;
  const std::uint32_t number = members_.empty() ? 1 : members_.back()->number + 1;
  members_.push_back(std::make_unique<Member>(Member{number, Camera(description), {}, false}));
  return members_.back().get();
}

void Fleet::SetFollower(Member* leader, std::uint32_t device) {
  const std::uint32_t former = std::exchange(leader->follower, device);
  Member* const freed = former == device ? nullptr : MemberOfDevice(former);
  if (freed != nullptr) freed->EndDrives();
}

void Fleet::Forget(Member* member) {
  const std::uint32_t device = member->ids.device;
  nat_.CloseAllOf(device);
  for (const auto& other : members_) {
    if (other->follower == device) SetFollower(other.get(), 0);
  }
  SetFollower(member, 0);
  member->EndDrives();
  member->ids = {};
  member->camera.set_logged_in(member->camera.description().credentials.empty());
  if (member->listed) return;
  members_.erase(
      std::find_if(members_.begin(), members_.end(), [&](const auto& other) { return other.get() == member; }));
}

bool Fleet::powered() const {
  return std::all_of(members_.begin(), members_.end(), [](const auto& member) {
    if (!member->known()) return true;
    return member->driven ? member->camera.powered() : !member->camera.logged_in();
  });
}

Status Fleet::PowerOn() {
  for (const auto& member : members_) member->camera.PowerOn();
  return simulated_ ? Status::kDone : Status::kUnsupported;
}

Status Fleet::PowerOff() {
  for (const auto& member : members_) member->PowerOff();
  return simulated_ ? Status::kDone : Status::kUnsupported;
}

const Fault* Fleet::FindFault(FaultKind kind, const Member* member, std::string_view method) const {
  FaultPlace place{0, "", method};
  if (member != nullptr) place = {member->number, member->camera.description().name, method};
  return vptzd::FindFault(faults_, kind, place);
}

Status Fleet::CheckThere(const Member* member, std::string_view method) const {
  if (member == nullptr) return Status::kUnknownId;
  if (!member->driven) return Status::kUnsupported;
  return FindFault(FaultKind::kOffline, member, method) == nullptr ? Status::kDone : Status::kOffline;
}

Status Fleet::CheckUsable(const Member* member, std::string_view method) const {
  const Status status = CheckThere(member, method);
  if (status != Status::kDone) return status;
  return member->camera.logged_in() ? Status::kDone : Status::kNotLoggedIn;
}

}  // namespace vptzd
