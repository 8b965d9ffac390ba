// A name served through dorv_bus_service.h itself, and what goes with it.
#ifndef VPTZ_TESTS_CONTRACT_SERVED_NAME_H
#define VPTZ_TESTS_CONTRACT_SERVED_NAME_H

#include <dorv_bus_service.h>

#include <functional>
#include <string>
#include <utility>

#include "contract/bus_fixture.h"

namespace vptz_test {

using Handler = std::function<void(bus_service*, bus_request*)>;

// A bus_service that is freed with the object; null when it could not serve.
class ServedName {
 public:
  ServedName(const std::string& name, const std::string& address, Handler handler)
      : handler_(std::move(handler)),
        result_(bus_service_new(name.c_str(), address.c_str(), &Handle, this, &service_)) {}
  ~ServedName() { Free(); }
  ServedName(const ServedName&) = delete;
  ServedName& operator=(const ServedName&) = delete;

  // Of bus_service_new.
  int result() const { return result_; }
  bus_service* get() const { return service_; }
  int Free() { return bus_service_free(std::exchange(service_, nullptr)); }

 private:
  static void Handle(bus_service* service, bus_request* request, void* self) {
    static_cast<ServedName*>(self)->handler_(service, request);
  }

  Handler handler_;
  bus_service* service_ = nullptr;
  int result_;
};

inline std::string Payload(const bus_request* request) {
  int length = 0;
  const void* bytes = bus_request_payload(request, &length);
  return bytes == nullptr ? "" : std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

inline int Reply(bus_request* request, const std::string& bytes) {
  return bus_request_reply(request, bytes.data(), static_cast<int>(bytes.size()));
}

inline void Echo(bus_service*, bus_request* request) { Reply(request, Payload(request)); }

inline int Emit(bus_service* service, const std::string& signal, const std::string& payload = "") {
  return bus_service_emit(service, signal.c_str(), payload.data(), static_cast<int>(payload.size()));
}

}  // namespace vptz_test

#endif
