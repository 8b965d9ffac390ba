// The service on the bus.
#ifndef VPTZ_SERVICE_BUS_SERVER_H
#define VPTZ_SERVICE_BUS_SERVER_H

#include <memory>

#include <dorv_bus_service.h>

#include "bus/bus_request.h"
#include "bus/router.h"
#include "handlers/context.h"

namespace vptzd {

class Server {
 public:
  // The name under which the service is called.
  static constexpr const char* kName = "vptz";

  // The context outlives the server, and sends its signals through it.
  explicit Server(Context& context) : context_(context) {}
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Begins to answer calls, on a thread of the bus library; those that store on
  // the context's agenda, which does not run yet. The destructor ends it and waits
  // for a call that is being answered; the agenda does not run any more then. A
  // null address means the bus library's default. 0, or the bus library's
  // negative errno value.
  int Start(const char* address);

 private:
  using RequestPtr = std::shared_ptr<BusRequest>;

  struct Free {
    void operator()(bus_service* service) const { bus_service_free(service); }
  };

  static void OnRequest(bus_service* service, bus_request* request, void* server) noexcept;
  void Receive(const RequestPtr& request);
  void Handle(const RequestPtr& request, const Call& call, Answering* answering);
  void Send(const RequestPtr& request, const Call& call, const tutorial::VptzResponse& response);
  void EmitSignal(const char* signal, const std::string& payload);

  Context& context_;
  std::unique_ptr<bus_service, Free> bus_;
};

}  // namespace vptzd

#endif
