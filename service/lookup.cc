#include "lookup.h"

#include <algorithm>

namespace vptzd {
namespace {

Status Check(World& world, const Member* member, const tutorial::VptzCommand& command, Need need) {
  return need == Need::kLogin ? world.CheckUsable(member, command.method_name())
                              : world.CheckThere(member, command.method_name());
}

}  // namespace

Status LookUpDevice(Service& service, const tutorial::VptzCommand& command, Need need, Member** member) {
  if (!command.has_device_command()) return Status::kBadRequest;
  const auto lock = service.world.Enter();
  *member = service.world.MemberOfDevice(command.device_command().device_id());
  return Check(service.world, *member, command, need);
}

Status LookUpPtz(Service& service, const tutorial::VptzCommand& command, Need need, Member** member) {
  if (!command.has_ptz_command()) return Status::kBadRequest;
  const auto lock = service.world.Enter();
  *member = service.world.MemberOfPtz(command.ptz_command().ptz_id());
  return Check(service.world, *member, command, need);
}

std::string MediaTokenOf(const Member& member, std::uint32_t media) {
  const auto& ids = member.ids.media;
  const auto index = std::find(ids.begin(), ids.end(), media) - ids.begin();
  return member.camera.media_profiles()[static_cast<std::size_t>(index)].token;
}

Status LookUpMedia(Service& service, const tutorial::VptzCommand& command, std::uint32_t media, Need need,
                   Member** member, std::string* token) {
  const auto lock = service.world.Enter();
  *member = service.world.MemberOfMedia(media);
  if (*member != nullptr) *token = MediaTokenOf(**member, media);
  return Check(service.world, *member, command, need);
}

}  // namespace vptzd
