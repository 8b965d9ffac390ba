// The service on the bus.
#ifndef VPTZ_SERVICE_SERVER_H
#define VPTZ_SERVICE_SERVER_H

#include <memory>

#include <dorv_bus_service.h>

#include "world.h"

namespace vptzd {

class Server {
 public:
  // The name under which the service is called.
  static constexpr const char* kName = "vptz";

  // The world outlives the server.
  explicit Server(World& world) : world_(world) {}
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Begins to answer calls, on a thread of the bus library; the destructor ends
  // it and waits for a call that is being answered. A null address means the
  // bus library's default. 0, or the bus library's negative errno value.
  int Start(const char* address);

 private:
  struct Free {
    void operator()(bus_service* service) const { bus_service_free(service); }
  };

  static void OnRequest(bus_service* service, bus_request* request, void* server) noexcept;
  void Answer(bus_request* request);

  World& world_;
  std::unique_ptr<bus_service, Free> service_;
};

}  // namespace vptzd

#endif
