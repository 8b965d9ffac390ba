#include <dorv_bus.h>
#include <zerklog.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <vptz/vptz_client.h>

#include "installed_paths.h"

// A bus that answers with the input, and a log that is not read.

struct bus_client {};

namespace {

const std::uint8_t* reply_data;
std::size_t reply_size;

}  // namespace

int bus_init() { return 0; }
void bus_cleanup() {}
bus_client* bus_client_new(const char*) { return new bus_client; }
void bus_client_free(bus_client* client) { delete client; }
int bus_connect(bus_client*, const char*) { return 0; }
int bus_disconnect(bus_client*) { return 0; }
int bus_method_call_sync(bus_client*, const char*, const char*, const void*, int, void* reply, int* length,
                         int) {
  const std::size_t size = std::min<std::size_t>(reply_size, static_cast<std::size_t>(*length));
  if (size > 0) std::memcpy(reply, reply_data, size);
  *length = static_cast<int>(size);
  return 0;
}
int bus_method_call_async(bus_client*, const char*, const char*, const void*, int, bus_callback, int) {
  return 0;
}
int bus_signal_subscribe(bus_client*, const char*, const char*, bus_callback) { return 0; }
int bus_signal_subscribe_all(bus_client*, const char*, bus_callback) { return 0; }
int bus_signal_unsubscribe(bus_client*, const char*, const char*) { return 0; }
void ZERK_LOG_write_newline(int, int, const char*, int, const char*, const char*, ...) {}

const char* vptz::ConfigFile() { return "/nonexistent/vptz.conf"; }
const char* vptz::DatabaseFile() { return "/nonexistent/vptz.db"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static VptzClient& client = *new VptzClient;
  static const bool connected = client.Connect("fuzz", nullptr) == 0;
  reply_data = data;
  reply_size = size;
  VptzPtzData ptz;
  VptzMediaData media;
  std::string uri = "rtsp://192.0.2.1/main";
  const int status = client.GetStatus();
  const bool agree = client.QueryPtzProfiles(1, "ptz0", &ptz) == status &&
                     client.QueryMediaProfiles(1, "main", &media) == status &&
                     client.QueryNATuri(1, NAT_MEDIA, uri) == status;
  if (!connected || !agree || (ptz.pan.position.valid & ~1) != 0) std::abort();
  return 0;
}
