#include "handlers/lookup.h"

#include <algorithm>

namespace vptzd {
namespace {

Status Check(Fleet& fleet, const Member* member, const tutorial::VptzCommand& command, Need need) {
  return need == Need::kLogin ? fleet.CheckUsable(member, command.method_name())
                              : fleet.CheckThere(member, command.method_name());
}

}  // namespace

Status LookUpDevice(Context& context, const tutorial::VptzCommand& command, Need need, Member** member) {
  if (!command.has_device_command()) return Status::kBadRequest;
  const auto lock = context.fleet.Enter();
  *member = context.fleet.MemberOfDevice(command.device_command().device_id());
  return Check(context.fleet, *member, command, need);
}

Status LookUpPtz(Context& context, const tutorial::VptzCommand& command, Need need, Member** member) {
  if (!command.has_ptz_command()) return Status::kBadRequest;
  const auto lock = context.fleet.Enter();
  *member = context.fleet.MemberOfPtz(command.ptz_command().ptz_id());
  return Check(context.fleet, *member, command, need);
}

std::string MediaTokenOf(const Member& member, std::uint32_t media) {
  const auto& ids = member.ids.media;
  const auto index = std::find(ids.begin(), ids.end(), media) - ids.begin();
  return member.camera.media_profiles()[static_cast<std::size_t>(index)].token;
}

Status LookUpMedia(Context& context, const tutorial::VptzCommand& command, std::uint32_t media, Need need,
                   Member** member, std::string* token) {
  const auto lock = context.fleet.Enter();
  *member = context.fleet.MemberOfMedia(media);
  if (*member != nullptr && (*member)->driven) *token = MediaTokenOf(**member, media);
  return Check(context.fleet, *member, command, need);
}

}  // namespace vptzd
