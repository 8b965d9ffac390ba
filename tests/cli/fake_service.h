// A service "vptz" whose answers the test decides.
#ifndef VPTZ_TESTS_CLI_FAKE_SERVICE_H
#define VPTZ_TESTS_CLI_FAKE_SERVICE_H

#include <functional>
#include <string>

#include <dorv_bus_service.h>

#include <vptz/vptz.pb.h>

namespace vptz_test {

class FakeService {
 public:
  // Ends the request, on the bus library's thread.
  using Handler = std::function<void(bus_request*)>;

  FakeService(const std::string& address, Handler handler);
  ~FakeService();
  FakeService(const FakeService&) = delete;
  FakeService& operator=(const FakeService&) = delete;

  void Emit(const std::string& signal, const std::string& payload = "");

 private:
  Handler handler_;
  bus_service* service_ = nullptr;
};

// Handlers that answer every call alike.
FakeService::Handler Answering(const tutorial::VptzResponse& response);
FakeService::Handler AnsweringStatus(int status_code);
FakeService::Handler FailingWith(int error);

}  // namespace vptz_test

#endif
