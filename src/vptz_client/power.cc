#include <utility>

#include <vptz/method_names.h>
#include "vptz_client/exchange.h"

namespace method = vptz::method;
using tutorial::VptzCommand;
using vptz::Exchange;

int VptzClient::ConfigDevices(int timeout) { return Exchange(*this, method::kConfigDevices, timeout); }

int VptzClient::AddUSBttyDevice(std::string tty_device, int timeout) {
  return Exchange(*this, method::kAddUSBttyDevice, timeout, [&](VptzCommand& command) {
    command.mutable_usb_tty_device_params()->set_tty_device(std::move(tty_device));
  });
}

int VptzClient::RemoveUSBttyDevice(std::string tty_device, int timeout) {
  return Exchange(*this, method::kRemoveUSBttyDevice, timeout, [&](VptzCommand& command) {
    command.mutable_usb_tty_device_params()->set_tty_device(std::move(tty_device));
  });
}

int VptzClient::FlushUSBttydevices(int timeout) {
  return Exchange(*this, method::kFlushUSBttyDevices, timeout);
}

int VptzClient::EnableReset2P0(int timeout) { return Exchange(*this, method::kEnableReset2P0, timeout); }

int VptzClient::DisableReset2P0(int timeout) { return Exchange(*this, method::kDisableReset2P0, timeout); }

int VptzClient::PowerOnDevices(int timeout) { return Exchange(*this, method::kPowerOnDevices, timeout); }

int VptzClient::PowerOffDevices(int timeout) { return Exchange(*this, method::kPowerOffDevices, timeout); }

int VptzClient::GetDevicesPowerStatus(int timeout) {
  return Exchange(*this, method::kGetDevicesPowerStatus, timeout);
}
