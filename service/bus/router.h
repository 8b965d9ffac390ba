// From a request's method and bytes to its answer.
#ifndef VPTZ_SERVICE_BUS_ROUTER_H
#define VPTZ_SERVICE_BUS_ROUTER_H

#include <cstdint>
#include <optional>
#include <string_view>

#include <vptz/vptz.pb.h>

#include "bus/methods.h"
#include "handlers/context.h"

namespace vptzd {

// A request that can be answered.
struct Call {
  const Method* method = nullptr;
  tutorial::VptzCommand command;
  std::uint64_t caller = 0;  // tells callers apart; 0 where the bus does not
};

// kUnknownMethod when there is no such method; kBadRequest when the bytes cannot
// be read or the command in them names another method. `payload` may be null
// when `length` is 0.
Status ReadCall(std::string_view method, const void* payload, int length, Call* call);

// Both have a method's handler answer; none when the other function is to answer.
using Answering = std::optional<tutorial::VptzResponse>(Context& context, const Call& call);

// When a call comes: what must not wait for the database. The call counts as a sign
// of life from then on.
Answering AnswerAtOnce;

// By the agenda only: what stores.
Answering AnswerStoring;

// The one and, where that does not answer, the other.
tutorial::VptzResponse Answer(Context& context, const Call& call);

// The camera that a command names; null for none.
Member* NamedMember(Fleet& fleet, const Call& call);

}  // namespace vptzd

#endif
