// A request on the bus until it has been answered.
#ifndef VPTZ_SERVICE_BUS_BUS_REQUEST_H
#define VPTZ_SERVICE_BUS_BUS_REQUEST_H

#include <cstdint>
#include <string>
#include <utility>

#include <dorv_bus_service.h>

namespace vptzd {

// A request that is destroyed unanswered, because the service ends, fails.
class BusRequest {
 public:
  explicit BusRequest(bus_request* request) : request_(request), method_(bus_request_method(request)) {}
  ~BusRequest();
  BusRequest(const BusRequest&) = delete;
  BusRequest& operator=(const BusRequest&) = delete;

  const std::string& method() const { return method_; }
  std::string payload() const;
  std::uint64_t caller() const { return bus_request_caller(request_); }

  // Each ends the request.
  void Reply(const std::string& bytes);
  void Fail(int error);

 private:
  bus_request* request_;
  std::string method_;
};

}  // namespace vptzd

#endif
