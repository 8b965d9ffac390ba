#include "binding.h"

namespace vptz_python {

void AddPower(ClientClass& client) {
  client
      .def("config_devices", Command(&VptzClient::ConfigDevices), Timeout(),
           "Has the service read its device configuration again.")
      .def("add_usb_tty", Command(&VptzClient::AddUSBttyDevice), py::arg("tty"), Timeout(),
           "Adds a USB-serial port, by its device path.")
      .def("remove_usb_tty", Command(&VptzClient::RemoveUSBttyDevice), py::arg("tty"), Timeout(),
           "Removes a USB-serial port, by its device path.")
      .def("flush_usb_ttys", Command(&VptzClient::FlushUSBttydevices), Timeout(),
           "Forgets all USB-serial ports.")
      .def("enable_reset_2p0", Command(&VptzClient::EnableReset2P0), Timeout(),
           "Switches the service's reset-2P0 behaviour on.")
      .def("disable_reset_2p0", Command(&VptzClient::DisableReset2P0), Timeout(),
           "Switches the service's reset-2P0 behaviour off.")
      .def("power_on", Command(&VptzClient::PowerOnDevices), Timeout(), "Switches the devices' power on.")
      .def("power_off", Command(&VptzClient::PowerOffDevices), Timeout(), "Switches the devices' power off.")
      .def("power_status", Query(&VptzClient::GetDevicesPowerStatus), Timeout(),
           "The service's power status; the reference service answers 1 for on and 0 for off.");
}

}  // namespace vptz_python
