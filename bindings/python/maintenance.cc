#include "binding.h"

namespace vptz_python {
namespace {

template <class Params>
void Update(Device& device, Params params, int timeout) {
  RaiseUnlessDone(RunAndKeep(device, [params = std::move(params), timeout](CVptzDevice& copy) mutable {
    return copy.UpdateDevice(&params, timeout);
  }));
}

constexpr char kUpdateText[] =
    "Declares the device anew with a SerialDeviceParams, of a device with the protocol 'RS232', else with a "
    "NetworkDeviceParams, and loads the record. Port or mac of the block is not read: the device keeps its "
    "own. "
    "Raises ValueError for the other block.";

void UpdateSerial(Device& device, const VptzSerialDeviceParams& params, int timeout) {
  if (device.protocol != "RS232") throw py::value_error("this device takes NetworkDeviceParams");
  Update(device, params, timeout);
}

void UpdateNetwork(Device& device, const VptzNetworkDeviceParams& params, int timeout) {
  if (device.protocol == "RS232") throw py::value_error("this device takes SerialDeviceParams");
  Update(device, params, timeout);
}

void AddToClient(ClientClass& client) {
  client
      .def("login", Command(&VptzClient::Login), py::arg("device_id"), py::arg("user"), py::arg("password"),
           Timeout(), "Has the service log in to a device.")
      .def("logout", Command(&VptzClient::Logout), py::arg("device_id"), Timeout(),
           "Has the service log out of a device.")
      .def("update_device_info", Command(&VptzClient::UpdateDeviceInfo), py::arg("device_id"), Timeout(),
           "Has the service read, into the database, what a device is and how it is.")
      .def("update_device_info_full", Command(&VptzClient::UpdateDeviceInfoFull), py::arg("device_id"),
           Timeout(), "Has the service read, into the database, all about a device.")
      .def("update_ptz_status", Command(&VptzClient::UpdatePtzStatus), py::arg("device_id"), Timeout(),
           "Has the service read, into the database, where a device's axes are.")
      .def("update_device_presets", Command(&VptzClient::UpdateDevicePresets), py::arg("device_id"), Timeout(),
           "Has the service read, into the database, a device's presets.")
      .def("update_control_protocol", Command(&VptzClient::UpdateDeviceControlProtocol), py::arg("device_id"),
           py::arg("protocol"), Timeout(), "Sets the protocol by which the service controls a device.")
      .def("set_slave_device", Command(&VptzClient::SetSlaveDevice), py::arg("device_id"), py::arg("address"),
           py::arg("account"), py::arg("credentials"), Timeout(),
           "Couples a slave device, by its address and its account; empty texts end the coupling.")
      .def("set_slave_device_by_id", Command(&VptzClient::SetSlaveDeviceById), py::arg("device_id"),
           py::arg("slave_id"), Timeout(),
           "Couples a stored device as slave, with its stored account; 0 ends the coupling.")
      .def("update_all_rs232_devices", Command(&VptzClient::UpdateAllRS232Devices), py::arg("port"),
           py::arg("baud_rate"), py::arg("unit"), py::arg("flags"), Timeout(),
           "Sets the line of all serial devices: port, bits per second, number and flags.");
}

void AddToDevice(DeviceClass& device) {
  device
      .def("login", Command(&CVptzDevice::Login), py::arg("user"), py::arg("password"), Timeout(),
           "Has the service log in to the device.")
      .def("logout", Command(&CVptzDevice::Logout), Timeout(), "Has the service log out of the device.")
      .def("update", UpdateNetwork, py::arg("params"), Timeout(), kUpdateText)
      .def("update", UpdateSerial, py::arg("params"), Timeout(), kUpdateText)
      .def("update_control_protocol", Command(&CVptzDevice::UpdateDeviceControlProtocol), py::arg("protocol"),
           Timeout(), "Sets the protocol by which the service controls the device; the record stays as it is.")
      .def("update_info", Command(&CVptzDevice::UpdateDeviceInfo), Timeout(),
           "Has the service read, into the database, what the device is and how it is.")
      .def("update_info_full", Command(&CVptzDevice::UpdateDeviceInfoFull), Timeout(),
           "Has the service read, into the database, all about the device.")
      .def("update_ptz_status", Command(&CVptzDevice::UpdatePtzStatus), Timeout(),
           "Has the service read, into the database, where the device's axes are.")
      .def("update_device_presets", Command(&CVptzDevice::UpdateDevicePresets), Timeout(),
           "Has the service read, into the database, the device's presets.")
      .def("set_slave", Command(&CVptzDevice::SetSlaveDevice), py::arg("address"), py::arg("account"),
           py::arg("credentials"), Timeout(),
           "Couples a slave device, by its address and its account; empty texts end the coupling.")
      .def("set_slave_by_id", Command(&CVptzDevice::SetSlaveDeviceById), py::arg("slave_id"), Timeout(),
           "Couples a stored device as slave, with its stored account; 0 ends the coupling.");
}

}  // namespace

void AddMaintenance(ClientClass& client, DeviceClass& device) {
  AddToClient(client);
  AddToDevice(device);
}

}  // namespace vptz_python
