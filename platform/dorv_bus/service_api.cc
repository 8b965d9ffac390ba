// The C functions of the service half.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <system_error>

#include "dorv_bus_service.h"
#include "mosquitto_library.h"
#include "names.h"
#include "service.h"

namespace {

// Whether a service that answers has the name already; -EADDRINUSE then, else
// 0 or the reason why the broker cannot be reached.
int CheckFree(const char* name, const char* address) {
  const std::unique_ptr<bus_client, decltype(&bus_client_free)> client(bus_client_new(name), bus_client_free);
  if (client == nullptr) {
    return -ENOMEM;
  }
  const int connected = bus_connect(client.get(), address);
  if (connected < 0) {
    return connected;
  }
  int reply_length = 0;
  const int answered =
      bus_method_call_sync(client.get(), name, dorv::kPingMethod, nullptr, 0, nullptr, &reply_length, 1);
  return answered >= 0 ? -EADDRINUSE : 0;
}

int Begin(const char* name, const char* address, bus_method_handler handler, void* user_data,
          bus_service** result) {
  const int free = CheckFree(name, address);
  if (free < 0) {
    return free;
  }
  const int acquired = dorv::AcquireLibrary();
  if (acquired < 0) {
    return acquired;
  }
  std::shared_ptr<bus_service> service;
  try {
    service = std::make_shared<bus_service>(name, handler, user_data);  // its destructor releases the library
  } catch (const std::bad_alloc&) {
    dorv::ReleaseLibrary();
    throw;
  }
  const int began = service->valid() ? service->Begin(address) : -ENOMEM;
  *result = began < 0 ? nullptr : service.get();
  return began;
}

int Finish(bus_request* request, const void* reply, int length, int error) {
  const std::unique_ptr<bus_request> owned(request);
  if (!owned->service->InItsProcess()) {
    return -ENOTCONN;
  }
  return owned->service->Reply(*owned, reply, length, error);
}

}  // namespace

int bus_service_new(const char* name, const char* address, bus_method_handler handler, void* user_data,
                    bus_service** result) {
  if (result != nullptr) {
    *result = nullptr;
  }
  if (!dorv::IsServiceName(name) || handler == nullptr || result == nullptr) {
    return -EINVAL;
  }
  try {
    return Begin(name, address, handler, user_data, result);
  } catch (const std::bad_alloc&) {
    return -ENOMEM;
  } catch (const std::system_error& error) {
    return -error.code().value();
  }
}

int bus_service_free(bus_service* service) {
  if (service == nullptr || !service->InItsProcess()) {
    return 0;
  }
  const auto keep = service->shared_from_this();
  return keep->Free();
}

int bus_service_emit(bus_service* service, const char* signal, const void* payload, int length) {
  if (service == nullptr || !dorv::IsName(signal) || !dorv::IsBytes(payload, length)) {
    return -EINVAL;
  }
  if (!service->InItsProcess()) {
    return -ENOTCONN;
  }
  return service->Emit(signal, payload, length);
}

const char* bus_request_method(const bus_request* request) {
  return request == nullptr ? "" : request->method.c_str();
}

const void* bus_request_payload(const bus_request* request, int* length) {
  const bool empty = request == nullptr || request->payload.empty();
  if (length != nullptr) {
    *length = empty ? 0 : static_cast<int>(request->payload.size());
  }
  return empty ? nullptr : request->payload.data();
}

uint64_t bus_request_caller(const bus_request* request) {
  return request == nullptr ? 0 : request->identity.caller;
}

int bus_request_time_left(const bus_request* request) {
  if (request == nullptr) {
    return 0;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(request->identity.TimeLeft()).count();
  // A wall clock that is set meanwhile may lie anywhere.
  using Int = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<std::int64_t>(left, Int::min(), Int::max()));
}

int bus_request_reply(bus_request* request, const void* reply, int length) {
  if (request == nullptr) {
    return -EINVAL;
  }
  if (!dorv::IsBytes(reply, length)) {
    Finish(request, nullptr, 0, -EPROTO);
    return -EINVAL;
  }
  return Finish(request, reply, length, 0);
}

int bus_request_fail(bus_request* request, int error) {
  if (request == nullptr) {
    return -EINVAL;
  }
  return Finish(request, nullptr, 0, error < 0 && error >= -4095 ? error : -EPROTO);
}
