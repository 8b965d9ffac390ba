#include "fake_service.h"

#include <stdexcept>
#include <utility>

namespace vptz_test {

FakeService::FakeService(const std::string& address, Handler handler) : handler_(std::move(handler)) {
  const auto call = [](bus_service*, bus_request* request, void* self) {
    static_cast<FakeService*>(self)->handler_(request);
  };
  const int result = bus_service_new("vptz", address.c_str(), call, this, &service_);
  if (result < 0) throw std::runtime_error("cannot serve: " + std::to_string(result));
}

FakeService::~FakeService() { bus_service_free(service_); }

void FakeService::Emit(const std::string& signal, const std::string& payload) {
  bus_service_emit(service_, signal.c_str(), payload.data(), static_cast<int>(payload.size()));
}

FakeService::Handler Answering(const tutorial::VptzResponse& response) {
  return [bytes = response.SerializeAsString()](bus_request* request) {
    bus_request_reply(request, bytes.data(), static_cast<int>(bytes.size()));
  };
}

FakeService::Handler AnsweringStatus(int status_code) {
  tutorial::VptzResponse response;
  response.set_status_code(status_code);
  return Answering(response);
}

FakeService::Handler FailingWith(int error) {
  return [error](bus_request* request) { bus_request_fail(request, error); };
}

}  // namespace vptz_test
