#include <memory>
#include <optional>

#include "binding.h"

namespace vptz_python {
namespace {

// The bus's threads end with the client, and a callback that runs meanwhile
// needs the interpreter.
struct Deleter {
  void operator()(VptzClient* client) const {
    ForgetCallbacks(*client);
    const py::gil_scoped_release release;
    delete client;
  }
};

using Holder = py::class_<VptzClient, std::unique_ptr<VptzClient, Deleter>>;

void Connect(VptzClient& client, const std::string& name, const std::optional<std::string>& address) {
  const char* text = address ? address->c_str() : nullptr;
  if (Unlocked([&] { return client.Connect(name, text); }) == 0) return;
  PyErr_SetString(PyExc_ConnectionError, "cannot connect to the message bus; the log tells why");
  throw py::error_already_set();
}

// Copies: what the client's own list holds is gone after the next lookup. Each
// keeps its client alive.
py::list Devices(const py::object& client) {
  std::vector<CVptzDevice> devices;
  auto& self = client.cast<VptzClient&>();
  Unlocked([&] {
    devices = *self.QueryDeviceAll();
    return 0;
  });
  py::list list;
  for (CVptzDevice& device : devices) {
    const py::object copy = py::cast(std::move(device));
    py::detail::keep_alive_impl(copy, client);
    list.append(copy);
  }
  return list;
}

std::optional<CVptzDevice> Device(VptzClient& client, int id) {
  const py::gil_scoped_release release;
  const CVptzDevice* const device = client.QueryDeviceById(id);
  return device == nullptr ? std::nullopt : std::optional<CVptzDevice>(*device);
}

template <class Profile>
Profile Live(VptzClient& client, unsigned int device_id, const std::string& token, int timeout,
             int (VptzClient::*query)(unsigned int, const std::string&, Profile*, int)) {
  Profile profile;
  AnswerOrRaise(Unlocked([&] { return (client.*query)(device_id, token, &profile, timeout); }));
  return profile;
}

std::string NatUri(VptzClient& client, unsigned int device_id, NATType type, std::string uri, int timeout) {
  RaiseUnlessDone(Unlocked([&] { return client.QueryNATuri(device_id, type, uri, timeout); }));
  return uri;
}

void EnableNat(VptzClient& client, unsigned int device_id, NATType type, std::vector<VptzNATData> mappings,
               int timeout) {
  RaiseUnlessDone(Unlocked([&] { return client.EnableNAT(device_id, type, &mappings, timeout); }));
}

void AddLifecycle(Holder& client) {
  client.def(py::init<>(), "Reads the configuration and opens the database; does not connect.")
      .def("connect", Connect, py::arg("name") = "python", py::arg("address") = py::none(),
           "Connects to the message bus; None is the default address. Raises ConnectionError.")
      .def(
          "disconnect", [](VptzClient& self) { Unlocked([&] { return self.Release(); }); },
          "Leaves the message bus.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](VptzClient& self, const py::args&) { Unlocked([&] { return self.Release(); }); })
      .def("version", &VptzClient::Version, "The library's version.")
      .def("subscribe", Subscribe, py::arg("signal"), py::arg("callback"),
           "Calls callback(payload: bytes), on another thread, for each signal of that name.")
      .def("unsubscribe", Unsubscribe, py::arg("signal"), "Ends the subscription of a signal.");
}

void AddDiscovery(Holder& client) {
  using SixTexts = int (VptzClient::*)(const std::string&, const std::string&, const std::string&,
                                       const std::string&, const std::string&, const std::string&, int);
  client
      .def("status", Query(&VptzClient::GetStatus), py::arg("timeout") = 0, "The service's state; 0 is ready.")
      .def("search", Command(&VptzClient::SearchDevice), py::arg("scope") = "", py::arg("protocols") = "",
           py::arg("timeout") = 0, "Starts a search; the signal 'finish/search_device' tells its end.")
      .def("add_device", Command(static_cast<SixTexts>(&VptzClient::AddDevice)), py::arg("mac"),
           py::arg("name"), py::arg("protocol"), py::arg("address"), py::arg("user"), py::arg("password"),
           py::arg("timeout") = 0, "Has the service add a camera.")
      .def("add_rs232_device", Command(&VptzClient::AddRS232Device), py::arg("port"), py::arg("name"),
           py::arg("line"), py::arg("baud_rate"), py::arg("unit"), py::arg("timeout") = 0,
           "Adds a serial device.")
      .def("add_onvif_device", Command(&VptzClient::AddOnvifDeviceManually), py::arg("address"),
           py::arg("user"), py::arg("password"), py::arg("timeout") = 0, "Adds an ONVIF camera by its address.")
      .def("remove_device", Command(&VptzClient::RemoveDevice), py::arg("device_id"), py::arg("timeout") = 0,
           "Has the service forget a device.");
}

void AddLookups(Holder& client) {
  client.def("devices", Devices, "All devices, as copies.")
      .def("device", Device, py::keep_alive<0, 1>(), py::arg("id"), "The device with that id, or None.")
      .def("device_count", Query(&VptzClient::QueryDeviceCount), "The number of devices.")
      .def(
          "ptz_profile",
          [](VptzClient& self, unsigned int id, const std::string& token, int timeout) {
            return Live(self, id, token, timeout, &VptzClient::QueryPtzProfiles);
          },
          py::arg("device_id"), py::arg("token"), py::arg("timeout") = 0, "The live state of a PTZ profile.")
      .def(
          "media_profile",
          [](VptzClient& self, unsigned int id, const std::string& token, int timeout) {
            return Live(self, id, token, timeout, &VptzClient::QueryMediaProfiles);
          },
          py::arg("device_id"), py::arg("token"), py::arg("timeout") = 0, "The live state of a media profile.");
}

void AddNat(Holder& client) {
  client
      .def("enable_nat", EnableNat, py::arg("device_id"), py::arg("type"),
           py::arg("mappings") = std::vector<VptzNATData>(), py::arg("timeout") = 0, "Opens mappings.")
      .def("disable_nat", Command(&VptzClient::DisableNAT), py::arg("device_id"), py::arg("type"),
           py::arg("timeout") = 0, "Closes mappings.")
      .def("nat_uri", NatUri, py::arg("device_id"), py::arg("type"), py::arg("uri"), py::arg("timeout") = 0,
           "An address as it is reachable from outside.")
      .def("clear_nat", Command(&VptzClient::ClearNAT), py::arg("timeout") = 0, "Closes all mappings.");
}

void AddPower(Holder& client) {
  client
      .def("config_devices", Command(&VptzClient::ConfigDevices), py::arg("timeout") = 0,
           "Has the service read its device configuration again.")
      .def("add_usb_tty", Command(&VptzClient::AddUSBttyDevice), py::arg("tty"), py::arg("timeout") = 0,
           "Adds a USB-serial port.")
      .def("remove_usb_tty", Command(&VptzClient::RemoveUSBttyDevice), py::arg("tty"), py::arg("timeout") = 0,
           "Removes a USB-serial port.")
      .def("flush_usb_ttys", Command(&VptzClient::FlushUSBttydevices), py::arg("timeout") = 0,
           "Forgets all USB-serial ports.")
      .def("power_on", Command(&VptzClient::PowerOnDevices), py::arg("timeout") = 0, "Powers the devices on.")
      .def("power_off", Command(&VptzClient::PowerOffDevices), py::arg("timeout") = 0,
           "Powers the devices off.")
      .def("power_status", Query(&VptzClient::GetDevicesPowerStatus), py::arg("timeout") = 0,
           "The service's power status; the reference service answers 1 for on and 0 for off.");
}

}  // namespace

void AddClient(py::module_& module) {
  Holder client(
      module, "Client",
      "Drives cameras through the service 'vptz'. Use it from one thread at a time; other threads run "
      "while it waits. Failed and refused calls raise VptzError.");
  AddLifecycle(client);
  AddDiscovery(client);
  AddLookups(client);
  AddNat(client);
  AddPower(client);
}

}  // namespace vptz_python
