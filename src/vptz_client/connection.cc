#include <dorv_bus.h>

#include <vptz/config.h>
#include <vptz/model/vptzmodel.h>
#include <vptz/vptz_client.h>

#include "installed_paths.h"
#include "log.h"
#include "no_throw.h"

namespace {

using vptz::LogLevel;
using vptz::log_source::kClient;

constexpr char kService[] = "vptz";
constexpr char kSearchDeviceFinishSignal[] = "finish/search_device";
constexpr char kUpdateDevicesSignal[] = "update_devices";

}  // namespace

// Each client reads the configuration by itself, so that threads may make clients
// side by side.
VptzClient::VptzClient() {
  bus_init();
  const int loaded = vptz::NoThrow(-1, [this] {
    Config configuration(vptz::ConfigFile());
    if (configuration.Load() < 0) return -1;
    configuration.GetValue("MQTT", "timeout", 2, timeout_);
    configuration.GetValue("VPTZ", "ndi_preset_shift", 0, ndi_preset_shift_);
    return 0;
  });
  if (loaded < 0) {
    VPTZ_LOG(LogLevel::kError, kClient, "Failed to load the config file: %s", vptz::ConfigFile());
    return;
  }
  vptz::NoThrow(-1, [] { return VptzModel::Instance().Connect(vptz::DatabaseFile()); });
}

VptzClient::~VptzClient() {
  if (bus_client_ != nullptr) {
    bus_client_free(bus_client_);
    bus_client_ = nullptr;
  }
  bus_cleanup();
  VptzModel::Instance().Release();
}

const char* VptzClient::Version() const { return VPTZ_VERSION; }

int VptzClient::Connect(const std::string& name, const char* address) {
  if (bus_client_ == nullptr) bus_client_ = bus_client_new(name.c_str());
  if (bus_client_ == nullptr) {
    VPTZ_LOG(LogLevel::kError, kClient, "vptz_client: Failed to create a bus client!");
    return -1;
  }
  const int result = bus_connect(bus_client_, address);
  if (result < 0) {
    VPTZ_LOG(LogLevel::kError, kClient, "vptz_client: Failed to connect to dorv bus. (%d)", result);
    return -1;
  }
  return 0;
}

int VptzClient::Disconnect() {
  if (bus_client_ == nullptr) {
    VPTZ_LOG(LogLevel::kError, kClient, "vptz_client: NULL bus client!");
    return -1;
  }
  const int result = bus_disconnect(bus_client_);
  if (result < 0) {
    VPTZ_LOG(LogLevel::kError, kClient, "vptz_client: Failed to disconnect from dorv bus. (%d)", result);
    return -1;
  }
  return 0;
}

int VptzClient::Release() {
  Disconnect();
  return 0;
}

int VptzClient::Init() {
  Connect("vptz_client", nullptr);
  LoadDevices();
  return 0;
}

int VptzClient::GetVptzTimeout(int timeout) const { return timeout > 0 ? timeout : timeout_; }

// Raw calls and signals hand even a null bus client to the bus library, which
// refuses it with a code of its own.

int VptzClient::CallSync(const char* method, const void* request, int request_length, void* reply,
                         int* reply_length, int timeout) {
  return bus_method_call_sync(bus_client_, kService, method, request, request_length, reply, reply_length,
                              timeout);
}

int VptzClient::CallAsync(const char* method, const void* request, int request_length, VptzCallback callback,
                          int timeout) {
  return bus_method_call_async(bus_client_, kService, method, request, request_length, callback, timeout);
}

int VptzClient::SubscribeSignal(const char* signal, VptzCallback callback) {
  return bus_signal_subscribe(bus_client_, kService, signal, callback);
}

int VptzClient::SubscribeAllSignal(VptzCallback callback) {
  return bus_signal_subscribe_all(bus_client_, kService, callback);
}

int VptzClient::SubscribeSearchDeviceFinishSignal(VptzCallback callback) {
  return SubscribeSignal(kSearchDeviceFinishSignal, callback);
}

int VptzClient::SubscribeUpdateDevicesSignal(VptzCallback callback) {
  return SubscribeSignal(kUpdateDevicesSignal, callback);
}

int VptzClient::UnsubscribeSignal(const char* signal) {
  return bus_signal_unsubscribe(bus_client_, kService, signal);
}

int VptzClient::UnSubscribeSearchDeviceFinishSignal() { return UnsubscribeSignal(kSearchDeviceFinishSignal); }

int VptzClient::UnSubscribeUpdateDevicesSignal() { return UnsubscribeSignal(kUpdateDevicesSignal); }

int VptzClient::HandleUpdateSignal() { return 0; }
