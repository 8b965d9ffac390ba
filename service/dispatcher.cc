#include "dispatcher.h"

#include "log.h"
#include "request.h"
#include "storage.h"

namespace vptzd {
namespace {

bool IsFocusDrive(std::string_view method) {
  return method == "focus_far" || method == "focus_near" || method == "focus_stop";
}

// A call about a camera tells that its caller is still there: for what this
// caller drives, of that camera and of the one that follows it.
void GiveSignOfLife(World& world, const Call& call) {
  Member* member = NamedMember(world, call);
  if (member == nullptr) return;
  member->camera.GiveSignOfLife(call.caller);
  Member* follower = world.MemberOfDevice(member->follower);
  if (follower != nullptr) follower->camera.GiveSignOfLife(call.caller);
}

}  // namespace

Member* NamedMember(World& world, const Call& call) {
  const tutorial::VptzCommand& command = call.command;
  if (command.has_ptz_command()) return world.MemberOfPtz(command.ptz_command().ptz_id());
  if (command.has_media_command()) return world.MemberOfMedia(command.media_command().media_id());
  if (command.has_nat_command()) return world.MemberOfDevice(command.nat_command().device_id());
  if (command.has_slave_device_command()) {
    return world.MemberOfDevice(static_cast<std::uint32_t>(command.slave_device_command().device_id()));
  }
  if (!command.has_device_command()) return nullptr;
  const std::uint32_t id = command.device_command().device_id();
  return IsFocusDrive(call.method->name) ? world.MemberOfMedia(id) : world.MemberOfDevice(id);
}

Status ReadCall(std::string_view method, const void* payload, int length, Call* call) {
  call->method = FindMethod(method);
  if (call->method == nullptr) return Status::kUnknownMethod;
  const bool readable = call->command.ParseFromArray(payload, length) && call->command.method_name() == method;
  return readable ? Status::kDone : Status::kBadRequest;
}

std::optional<tutorial::VptzResponse> AnswerAtOnce(Service& service, const Call& call) {
  const auto lock = service.world.Enter();
  GiveSignOfLife(service.world, call);
  if (call.method->handler == nullptr) return std::nullopt;
  service.world.set_caller(call.caller);
  const tutorial::VptzResponse answer = call.method->handler(service.world, call.command);
  const bool done = answer.status_code() == static_cast<int>(Status::kDone);
  return done && call.method->storing_handler != nullptr ? std::nullopt : std::optional(answer);
}

std::optional<tutorial::VptzResponse> AnswerStoring(Service& service, const Call& call) {
  try {
    return call.method->storing_handler(service, call.command);
  } catch (const StorageError& error) {
    VPTZD_LOG(LogLevel::kError, "%s: %s", call.command.method_name().c_str(), error.what());
    return Answer(Status::kNotStored);
  }
}

tutorial::VptzResponse Answer(Service& service, const Call& call) {
  const auto answer = AnswerAtOnce(service, call);
  return answer ? *answer : *AnswerStoring(service, call);
}

}  // namespace vptzd
