#include "binding.h"

namespace vptz_python {
namespace {

using SixTexts = int (VptzClient::*)(const std::string&, const std::string&, const std::string&,
                                     const std::string&, const std::string&, const std::string&, int);
using Block = int (VptzClient::*)(const std::string&, void*, int);

template <class Params>
void Declare(Client& client, const std::string& protocol, const Params& params, int timeout) {
  RaiseUnlessDone(client.Run([protocol, params = Params(params), timeout](VptzClient& self) mutable {
    return (self.*static_cast<Block>(&VptzClient::AddDevice))(protocol, &params, timeout);
  }));
}

constexpr char kDeclareText[] =
    "Has the service add the device that a block of parameters describes: a SerialDeviceParams with the "
    "protocol 'RS232', else a NetworkDeviceParams, which is declared as 'VISCA_OVER_IP' whatever protocol is "
    "named. Raises ValueError for the other block.";

void DeclareSerial(Client& client, const std::string& protocol, const VptzSerialDeviceParams& params,
                   int timeout) {
  if (protocol != "RS232") throw py::value_error("SerialDeviceParams go with the protocol 'RS232'");
  Declare(client, protocol, params, timeout);
}

void DeclareNetwork(Client& client, const std::string& protocol, const VptzNetworkDeviceParams& params,
                    int timeout) {
  if (protocol == "RS232") throw py::value_error("the protocol 'RS232' goes with SerialDeviceParams");
  Declare(client, protocol, params, timeout);
}

}  // namespace

void AddDiscovery(ClientClass& client) {
  client.def("status", Query(&VptzClient::GetStatus), Timeout(), "The service's state; 0 is ready.")
      .def("add_device", Command(static_cast<SixTexts>(&VptzClient::AddDevice)), py::arg("mac"),
           py::arg("name"), py::arg("protocol"), py::arg("address"), py::arg("user"), py::arg("password"),
           Timeout(), "Has the service add a camera; lookups then show it. User and password may be empty.")
      .def("declare_device", DeclareNetwork, py::arg("protocol"), py::arg("params"), Timeout(), kDeclareText)
      .def("declare_device", DeclareSerial, py::arg("protocol"), py::arg("params"), Timeout(), kDeclareText)
      .def("add_rs232_device", Command(&VptzClient::AddRS232Device), py::arg("port"), py::arg("name"),
           py::arg("line"), py::arg("baud_rate"), py::arg("unit"), Timeout(),
           "Adds a serial device: its port, name, wiring, bits per second and number on the line.")
      .def("add_onvif_device", Command(&VptzClient::AddOnvifDeviceManually), py::arg("address"),
           py::arg("user"), py::arg("password"), Timeout(),
           "Adds an ONVIF camera that no search finds, by its service address.")
      .def("remove_device", Command(&VptzClient::RemoveDevice), py::arg("device_id"), Timeout(),
           "Has the service forget a device.");
}

}  // namespace vptz_python
