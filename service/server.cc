#include "server.h"

#include <cerrno>
#include <exception>
#include <string>

#include "dispatcher.h"
#include "log.h"

namespace vptzd {

int Server::Start(const char* address) {
  bus_service* service = nullptr;
  const int result = bus_service_new(kName, address, &Server::OnRequest, this, &service);
  if (result < 0) return result;
  service_.reset(service);
  return 0;
}

// An exception must not leave into the bus library, which is C.
void Server::OnRequest(bus_service*, bus_request* request, void* server) noexcept {
  try {
    static_cast<Server*>(server)->Answer(request);
  } catch (const std::exception& error) {
    VPTZD_LOG(ZERK_LOG_ERROR, "%s failed: %s", bus_request_method(request), error.what());
    bus_request_fail(request, -EIO);
  }
}

void Server::Answer(bus_request* request) {
  int length = 0;
  const void* payload = bus_request_payload(request, &length);
  const std::string method = bus_request_method(request);
  const tutorial::VptzResponse response = Dispatch(world_, method, payload, length);
  if (response.status_code() < 0) {
    VPTZD_LOG(ZERK_LOG_NOTICE, "%s is refused with %d", method.c_str(), response.status_code());
  }
  const std::string reply = response.SerializeAsString();
  const int result = bus_request_reply(request, reply.data(), static_cast<int>(reply.size()));
  if (result < 0) VPTZD_LOG(ZERK_LOG_WARNING, "the answer to %s is lost: %d", method.c_str(), result);
}

}  // namespace vptzd
