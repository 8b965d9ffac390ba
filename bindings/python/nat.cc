#include "binding.h"

namespace vptz_python {
namespace {

using Mappings = std::vector<VptzNATData>;

void Enable(Client& client, unsigned int device_id, NATType type, Mappings mappings, int timeout) {
  RaiseUnlessDone(
      client.Run([device_id, type, mappings = std::move(mappings), timeout](VptzClient& self) mutable {
        return self.EnableNAT(device_id, type, &mappings, timeout);
      }));
}

std::string Uri(Client& client, unsigned int device_id, NATType type, std::string uri, int timeout) {
  auto [result, answer] =
      client.Run([device_id, type, uri = std::move(uri), timeout](VptzClient& self) mutable {
        const int status = self.QueryNATuri(device_id, type, uri, timeout);
        return std::make_pair(status, std::move(uri));
      });
  RaiseUnlessDone(result);
  return std::move(answer);
}

void SetMediaInfo(Client& client, Device& device, NATType type, int timeout) {
  auto [result, changed] =
      client.Run([copy = static_cast<CVptzDevice&>(device), type, timeout](VptzClient& self) mutable {
        const int status = self.SetMediaInfoNAT(&copy, static_cast<int>(copy.id), type, timeout);
        return std::make_pair(status, std::move(copy));
      });
  static_cast<CVptzDevice&>(device) = std::move(changed);
  RaiseUnlessDone(result);
}

constexpr char kEnable[] =
    "Opens mappings, so that the device is reachable from outside; without `mappings` the service chooses.";
constexpr char kDisable[] = "Closes mappings.";
constexpr char kUri[] = "An address as it is reachable from outside.";

}  // namespace

void AddNat(ClientClass& client, DeviceClass& device) {
  client
      .def("enable_nat", Enable, py::arg("device_id"), py::arg("type"), py::arg("mappings") = Mappings(),
           Timeout(), kEnable)
      .def("disable_nat", Command(&VptzClient::DisableNAT), py::arg("device_id"), py::arg("type"), Timeout(),
           kDisable)
      .def("nat_uri", Uri, py::arg("device_id"), py::arg("type"), py::arg("uri"), Timeout(), kUri)
      .def("set_media_info_nat", SetMediaInfo, py::arg("device"), py::arg("type"), Timeout(),
           "Sets nat_url of a device's media profiles to the outside addresses of their streams.")
      .def("clear_nat", Command(&VptzClient::ClearNAT), Timeout(), "Closes all mappings of all devices.");
  device
      .def(
          "enable_nat",
          [](Device& self, NATType type, Mappings mappings, int timeout) {
            Enable(*self.client, self.id, type, std::move(mappings), timeout);
          },
          py::arg("type"), py::arg("mappings") = Mappings(), Timeout(), kEnable)
      .def("disable_nat", Command(&CVptzDevice::DisableNAT), py::arg("type"), Timeout(), kDisable)
      .def(
          "nat_uri",
          [](Device& self, NATType type, std::string uri, int timeout) {
            return Uri(*self.client, self.id, type, std::move(uri), timeout);
          },
          py::arg("type"), py::arg("uri"), Timeout(), kUri);
}

}  // namespace vptz_python
