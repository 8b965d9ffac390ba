#include <utility>

#include <vptz/method_names.h>
#include "vptz_client/credentials.h"
#include "vptz_client/exchange.h"
#include "vptz_client/serial_address.h"

namespace method = vptz::method;
using tutorial::DeviceCommand;
using vptz::ExchangeDevice;
using vptz::ExchangeDeviceId;

int VptzClient::UpdateDeviceControlProtocol(unsigned int device_id, std::string protocol, int timeout) {
  return ExchangeDevice(*this, method::kUpdateDeviceControlProtocol, timeout, [&](DeviceCommand& device) {
    device.set_device_id(device_id);
    device.set_protocol(std::move(protocol));
  });
}

int VptzClient::Login(unsigned int device_id, std::string user, std::string password, int timeout) {
  return ExchangeDevice(*this, method::kLogin, timeout, [&](DeviceCommand& device) {
    device.set_device_id(device_id);
    device.set_user(std::move(user));
    device.set_password(std::move(password));
  });
}

int VptzClient::Logout(unsigned int device_id, int timeout) {
  return ExchangeDeviceId(*this, method::kLogout, device_id, timeout);
}

int VptzClient::UpdateDeviceInfo(unsigned int device_id, int timeout) {
  return ExchangeDeviceId(*this, method::kUpdateDeviceInfo, device_id, timeout);
}

int VptzClient::UpdateDeviceInfoFull(unsigned int device_id, int timeout) {
  return ExchangeDeviceId(*this, method::kUpdateDeviceInfoFull, device_id, timeout);
}

int VptzClient::UpdatePtzStatus(unsigned int device_id, int timeout) {
  return ExchangeDeviceId(*this, method::kUpdatePtzStatus, device_id, timeout);
}

int VptzClient::UpdateDevicePresets(unsigned int device_id, int timeout) {
  return ExchangeDeviceId(*this, method::kUpdateDevicePresets, device_id, timeout);
}

int VptzClient::SetSlaveDevice(int device_id, const std::string& address, const std::string& account,
                               const std::string& credentials, int timeout) {
  return vptz::Exchange(*this, method::kSetSlaveDevice, timeout, [&](tutorial::VptzCommand& command) {
    tutorial::SlaveDeviceCommand& slave = *command.mutable_slave_device_command();
    slave.set_device_id(device_id);
    slave.set_address(address);
    slave.set_account(account);
    slave.set_credentials(credentials);
  });
}

// Kept: the caller's time-out is not used; callers have long relied on the
// configured one here.
int VptzClient::SetSlaveDeviceById(int device_id, int slave_id, int) {
  // Without a bus nothing can be sent, so the registry is left as it is.
  if (!vptz::ClientAccess::HasBusClient(*this)) return -1;
  if (slave_id == 0) return SetSlaveDevice(device_id, "", "", "", 0);
  const CVptzDevice* const slave = QueryDeviceById(slave_id);
  if (slave == nullptr) return -1;
  return vptz::NoThrow(-1, [&] {
    const std::optional<vptz::Credentials> stored = vptz::ReadCredentials(slave->authorization);
    if (!stored) return -1;
    return SetSlaveDevice(device_id, slave->address, stored->account, stored->credentials, 0);
  });
}

// cppcheck-suppress passedByValue
// NOLINTNEXTLINE(performance-unnecessary-value-param): a text by value is part of the interface
int VptzClient::UpdateAllRS232Devices(std::string port, int baud_rate, int unit, int flags, int timeout) {
  vptz::SerialAddress address;
  if (!address.Format("rs232://%s/%d/%d/%d", port.c_str(), baud_rate, unit, flags)) return -1;
  return ExchangeDevice(*this, method::kUpdateAllRS232Devices, timeout,
                        [&](DeviceCommand& device) { device.set_address(address.text()); });
}
