#include <exception>
#include <utility>

#include <vptz/method_names.h>
#include "log.h"
#include "vptz_client/exchange.h"
#include "vptz_client/serial_address.h"

namespace method = vptz::method;
using tutorial::DeviceCommand;
using vptz::Exchange;
using vptz::ExchangeDevice;
using vptz::LogLevel;
using vptz::log_source::kClient;

namespace {

constexpr char kSerial[] = "RS232";
constexpr char kAllProtocols[] = "ONVIF,QX310,NDI";

// Kept: whatever protocol is named, a device in the network that is added
// through a parameter block is declared as this one. Services rely on it.
constexpr char kNetworkBlockProtocol[] = "VISCA_OVER_IP";

int AddSerial(VptzClient& client, const VptzSerialDeviceParams& device, int timeout) {
  return client.AddRS232Device(device.port, device.name, device.line, device.baud_rate, device.unit, timeout);
}

int AddNetwork(VptzClient& client, const VptzNetworkDeviceParams& device, int timeout) {
  return client.AddDevice(device.mac, device.name, kNetworkBlockProtocol, device.address, device.user,
                          device.password, timeout);
}

}  // namespace

int VptzClient::GetStatus(int timeout) { return Exchange(*this, method::kGetStatus, timeout); }

int VptzClient::SearchDevice(std::string scope, std::string protocols, int timeout) {
  return ExchangeDevice(*this, method::kSearchDevice, timeout, [&](DeviceCommand& device) {
    device.set_search_scope(std::move(scope));
    device.set_protocol(protocols.empty() ? kAllProtocols : std::move(protocols));
  });
}

int VptzClient::AddDevice(const std::string& mac, const std::string& name, const std::string& protocol,
                          const std::string& address, const std::string& user, const std::string& password,
                          int timeout) {
  return ExchangeDevice(*this, method::kAddDevice, timeout, [&](DeviceCommand& device) {
    device.set_mac(mac);
    device.set_name(name);
    device.set_protocol(protocol);
    device.set_address(address);
    device.set_user(user);
    device.set_password(password);
  });
}

int VptzClient::AddDevice(const std::string& protocol, void* params, int timeout) {
  if (params == nullptr) return -1;
  try {
    // Works on a copy: what cannot be copied is logged, whichever shape it has.
    if (protocol == kSerial) {
      return AddSerial(*this, VptzSerialDeviceParams(*static_cast<VptzSerialDeviceParams*>(params)), timeout);
    }
    return AddNetwork(*this, VptzNetworkDeviceParams(*static_cast<VptzNetworkDeviceParams*>(params)), timeout);
  } catch (const std::exception&) {
    VPTZ_LOG(LogLevel::kNotice, kClient, "AddDevice exception");
    return -1;
  }
}

// cppcheck-suppress passedByValue
// NOLINTNEXTLINE(performance-unnecessary-value-param): texts by value are part of the interface
int VptzClient::AddRS232Device(std::string port, const std::string& name, std::string line, int baud_rate,
                               int unit, int timeout) {
  vptz::SerialAddress address;
  if (!address.Format("rs232://%s/%s/%d/%d", port.c_str(), line.c_str(), baud_rate, unit)) return -1;
  return vptz::NoThrow(-1, [&] { return AddDevice(port, name, kSerial, address.text(), "", "", timeout); });
}

int VptzClient::AddOnvifDeviceManually(const std::string& address, const std::string& user,
                                       const std::string& password, int timeout) {
  return ExchangeDevice(*this, method::kAddOnvifDeviceManually, timeout, [&](DeviceCommand& device) {
    device.set_address(address);
    device.set_user(user);
    device.set_password(password);
  });
}

int VptzClient::RemoveDevice(unsigned int device_id, int timeout) {
  return vptz::ExchangeDeviceId(*this, method::kRemoveDevice, device_id, timeout);
}
