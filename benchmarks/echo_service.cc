// The other side of the benchmarked calls, in a process of its own:
//   echo_service bus ADDRESS     serves "vptz" through the bus library
//   echo_service hand SOCKET     the same written by hand
// Says "ready" when calls reach it.
#include <dorv_bus_service.h>
#include <mosquitto.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "hand_written.h"

namespace {

void Ready() {
  std::puts("ready");
  std::fflush(stdout);
}

// A query of the power status gets the service's shortest answer, everything else its own
// bytes.
void Answer(bus_service*, bus_request* request, void*) {
  static const char kStatusZero[] = {0x08, 0x00};
  if (std::strcmp(bus_request_method(request), "get_devices_power_status") == 0) {
    bus_request_reply(request, kStatusZero, sizeof kStatusZero);
    return;
  }
  int length = 0;
  const void* payload = bus_request_payload(request, &length);
  bus_request_reply(request, payload, length);
}

int ServeBus(const char* address) {
  bus_service* service = nullptr;
  const int result = bus_service_new("vptz", address, Answer, nullptr, &service);
  if (result < 0) {
    std::fprintf(stderr, "echo_service: %s: %s\n", address, std::strerror(-result));
    return 1;
  }
  Ready();
  for (;;) pause();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  if (std::string(arguments[1]) == "bus") return ServeBus(arguments[2]);
  mosquitto_lib_init();
  HandWritten service(arguments[2], "hand-service", "hand/call/#", 0);
  Ready();
  service.Serve();
}
