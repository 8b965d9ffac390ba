#include "bus/fake_bus_service.h"

namespace {

vptz_test::FakeBusService* living = nullptr;

}  // namespace

namespace vptz_test {

FakeBusService::FakeBusService() { living = this; }

FakeBusService::~FakeBusService() { living = nullptr; }

void FakeBusService::Request(const std::string& method, const std::string& payload, std::uint64_t caller) {
  requests_.push_back({method, payload, caller});
  service->handler(service, &requests_.back(), service->user_data);
}

}  // namespace vptz_test

int bus_service_new(const char* name, const char* address, bus_method_handler handler, void* user_data,
                    bus_service** result) {
  living->name = name;
  if (address != nullptr) living->address = address;
  *result = living->start_result < 0 ? nullptr : new bus_service{handler, user_data};
  living->service = *result;
  return living->start_result;
}

int bus_service_free(bus_service* service) {
  delete service;
  living->service = nullptr;
  return 0;
}

const char* bus_request_method(const bus_request* request) { return request->method.c_str(); }

const void* bus_request_payload(const bus_request* request, int* length) {
  *length = static_cast<int>(request->payload.size());
  return request->payload.empty() ? nullptr : request->payload.data();
}

uint64_t bus_request_caller(const bus_request* request) { return request->caller; }

int bus_request_reply(bus_request*, const void* reply, int length) {
  ++living->ended;
  living->reply.assign(static_cast<const char*>(reply), static_cast<std::size_t>(length));
  return living->reply_result;
}

int bus_request_fail(bus_request*, int error) {
  ++living->ended;
  living->failure = error;
  return 0;
}

int bus_service_emit(bus_service*, const char* signal, const void* payload, int length) {
  living->signals.emplace_back(
      signal, std::string(static_cast<const char*>(payload), static_cast<std::size_t>(length)));
  return 0;
}
