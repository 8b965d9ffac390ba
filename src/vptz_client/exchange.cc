#include "vptz_client/exchange.h"

#include <string>

namespace vptz {
namespace {

constexpr int kReplyCapacity = 512;

// Whether the reply could be parsed is not looked at: what was read before the
// damage counts, so that a refusal stays one, and the rest keeps its defaults. A
// length that no reply can have counts as an empty reply.
void Parse(const char* reply, int length, tutorial::VptzResponse& response) {
  if (length >= 0 && length <= kReplyCapacity) response.ParseFromArray(reply, length);
}

}  // namespace

int Send(VptzClient& client, const char* method, int timeout, tutorial::VptzCommand& command,
         tutorial::VptzResponse& response) {
  command.set_method_name(method);
  std::string request;
  if (!command.SerializeToString(&request)) return -1;

  char reply[kReplyCapacity] = {};
  int reply_length = kReplyCapacity;
  const int result = client.CallSync(method, request.data(), static_cast<int>(request.size()), reply,
                                     &reply_length, client.GetVptzTimeout(timeout));
  if (result < 0) return result;
  Parse(reply, reply_length, response);
  return 0;
}

}  // namespace vptz
