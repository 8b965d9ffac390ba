#include "dispatcher.h"

#include <algorithm>

#include "methods.h"
#include "request.h"

namespace vptzd {
namespace {

Handler* FindHandler(std::string_view name) {
  const MethodTable& methods = Methods();
  const auto found =
      std::find_if(methods.begin(), methods.end(), [&](const Method& method) { return method.name == name; });
  return found == methods.end() ? nullptr : found->handler;
}

}  // namespace

tutorial::VptzResponse Dispatch(World& world, std::string_view method, const void* payload, int length) {
  Handler* handler = FindHandler(method);
  if (handler == nullptr) return Answer(Status::kUnknownMethod);
  tutorial::VptzCommand command;
  if (!command.ParseFromArray(payload, length) || command.method_name() != method) {
    return Answer(Status::kBadRequest);
  }
  const auto lock = world.Enter();
  return handler(world, command);
}

}  // namespace vptzd
