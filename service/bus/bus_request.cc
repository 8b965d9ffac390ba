#include "bus/bus_request.h"

#include <cerrno>

#include "log.h"

namespace vptzd {

BusRequest::~BusRequest() {
  if (request_ != nullptr) Fail(-ECANCELED);
}

std::string BusRequest::payload() const {
  int length = 0;
  const void* payload = bus_request_payload(request_, &length);
  return payload == nullptr ? ""
                            : std::string(static_cast<const char*>(payload), static_cast<std::size_t>(length));
}

void BusRequest::Reply(const std::string& bytes) {
  const int result =
      bus_request_reply(std::exchange(request_, nullptr), bytes.data(), static_cast<int>(bytes.size()));
  if (result < 0) VPTZD_LOG(LogLevel::kWarning, "the answer to %s is lost: %d", method_.c_str(), result);
}

void BusRequest::Fail(int error) { bus_request_fail(std::exchange(request_, nullptr), error); }

}  // namespace vptzd
