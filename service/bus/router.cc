#include "bus/router.h"

#include "handlers/answers.h"
#include "log.h"
#include "store/row_access.h"

namespace vptzd {

namespace method = vptz::method;

namespace {

bool IsFocusDrive(std::string_view name) {
  return name == method::kFocusFar || name == method::kFocusNear || name == method::kFocusStop;
}

// A call about a camera tells that its caller is still there: for what this
// caller drives, of that camera and of the one that follows it.
void GiveSignOfLife(Fleet& fleet, const Call& call) {
  Member* member = NamedMember(fleet, call);
  if (member == nullptr) return;
  member->watchdog.GiveSignOfLife(call.caller);
  Member* follower = fleet.MemberOfDevice(member->follower);
  if (follower != nullptr) follower->watchdog.GiveSignOfLife(call.caller);
}

}  // namespace

Member* NamedMember(Fleet& fleet, const Call& call) {
  const tutorial::VptzCommand& command = call.command;
  if (command.has_ptz_command()) return fleet.MemberOfPtz(command.ptz_command().ptz_id());
  if (command.has_media_command()) return fleet.MemberOfMedia(command.media_command().media_id());
  if (command.has_nat_command()) return fleet.MemberOfDevice(command.nat_command().device_id());
  if (command.has_slave_device_command()) {
    return fleet.MemberOfDevice(static_cast<std::uint32_t>(command.slave_device_command().device_id()));
  }
  if (!command.has_device_command()) return nullptr;
  const std::uint32_t id = command.device_command().device_id();
  return IsFocusDrive(call.method->name) ? fleet.MemberOfMedia(id) : fleet.MemberOfDevice(id);
}

Status ReadCall(std::string_view method, const void* payload, int length, Call* call) {
  call->method = FindMethod(method);
  if (call->method == nullptr) return Status::kUnknownMethod;
  const bool readable = call->command.ParseFromArray(payload, length) && call->command.method_name() == method;
  return readable ? Status::kDone : Status::kBadRequest;
}

std::optional<tutorial::VptzResponse> AnswerAtOnce(Context& context, const Call& call) {
  const auto lock = context.fleet.Enter();
  GiveSignOfLife(context.fleet, call);
  if (call.method->handler == nullptr) return std::nullopt;
  context.fleet.set_caller(call.caller);
  const tutorial::VptzResponse answer = call.method->handler(context.fleet, call.command);
  const bool done = answer.status_code() == static_cast<int>(Status::kDone);
  return done && call.method->storing_handler != nullptr ? std::nullopt : std::optional(answer);
}

std::optional<tutorial::VptzResponse> AnswerStoring(Context& context, const Call& call) {
  try {
    return call.method->storing_handler(context, call.command);
  } catch (const StorageError& error) {
    VPTZD_LOG(LogLevel::kError, "%s: %s", call.command.method_name().c_str(), error.what());
    return Answer(Status::kNotStored);
  }
}

tutorial::VptzResponse Answer(Context& context, const Call& call) {
  const auto answer = AnswerAtOnce(context, call);
  return answer ? *answer : *AnswerStoring(context, call);
}

}  // namespace vptzd
