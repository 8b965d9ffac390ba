#include <algorithm>

#include "binding.h"

namespace vptz_python {
namespace {

// Copies: what the client's own list holds is gone after the next lookup. Each
// keeps its client alive.
py::list Wrap(Client& client, std::vector<CVptzDevice> handles) {
  py::list list;
  for (CVptzDevice& handle : handles) list.append(Device(std::move(handle), client.shared_from_this()));
  return list;
}

py::list ByProtocol(Client& client, std::string protocol) {
  return Wrap(client, client.Run([protocol = std::move(protocol)](VptzClient& self) {
    std::vector<CVptzDevice> handles;
    for (const CVptzDevice* handle : self.QueryDeviceByProtocol(protocol)) handles.push_back(*handle);
    return handles;
  }));
}

Device ById(Client& client, int id) {
  auto handle = client.Run([id](VptzClient& self) {
    const CVptzDevice* const found = self.QueryDeviceById(id);
    return found == nullptr ? std::optional<CVptzDevice>() : std::optional<CVptzDevice>(*found);
  });
  if (!handle) RaiseUnknownDevice(id);
  return Device(std::move(*handle), client.shared_from_this());
}

template <class Profile>
std::optional<Profile> Find(const std::vector<Profile>& list, unsigned int id) {
  const auto found = std::find_if(list.begin(), list.end(), [&](const Profile& one) { return one.id == id; });
  return found == list.end() ? std::nullopt : std::optional<Profile>(*found);
}

}  // namespace

py::list Devices(Client& client) {
  return Wrap(client,
              client.Run([](VptzClient& self) { return std::vector<CVptzDevice>(*self.QueryDeviceAll()); }));
}

void AddDevice(DeviceClass& device) {
  device.def_readonly("id", &Device::id)
      .def_readonly("device_type", &Device::device_type)
      .def_readonly("service_uri", &Device::service_uri)
      .def_readonly("address", &Device::address)
      .def_readonly("http_uri", &Device::http_uri)
      .def_readonly("nat_service_uri", &Device::nat_service_uri)
      .def_readonly("nat_http_uri", &Device::nat_http_uri)
      .def_readonly("mac", &Device::mac)
      .def_readonly("uuid", &Device::uuid)
      .def_readonly("authorized", &Device::authorized)
      .def_readonly("is_alive", &Device::is_alive)
      .def_readonly("protocol", &Device::protocol)
      .def_readonly("host_name", &Device::host_name)
      .def_readonly("manufacture", &Device::manufacture)
      .def_readonly("model_name", &Device::model_name)
      .def_readonly("firmware_version", &Device::firmware_version)
      .def_readonly("deletable", &Device::deletable)
      .def_readonly("is_setting_applied", &Device::is_setting_applied)
      .def_readonly("tracking", &Device::tracking)
      .def_readonly("ptz_list", &Device::ptz_list)
      .def_readonly("media_list", &Device::media_list)
      .def("__repr__", [](const Device& self) {
        return "<vptz.Device " + std::to_string(self.id) + " " + self.protocol + ">";
      });
}

void AddRegistry(ClientClass& client, DeviceClass& device) {
  client
      .def(
          "devices", Devices,
          "All devices of the database, in the order of their rows, as copies. Connected, asks the service for "
          "each one's outside addresses.")
      .def("device", ById, py::arg("id"), "The device with that id. Raises UnknownDeviceError, a LookupError.")
      .def("devices_by_protocol", ByProtocol, py::arg("protocol"),
           "The devices whose protocol has exactly that name, such as 'ONVIF'.")
      .def("device_count", Query(&VptzClient::QueryDeviceCount),
           "The number of devices in the database; 0 also when it cannot be read.")
      .def("ptz_count", Query(&VptzClient::QueryPtzCountByDevice), py::arg("device_id"),
           "The number of PTZ nodes of a device in the database.")
      .def("media_count", Query(&VptzClient::QueryMediaCountByDevice), py::arg("device_id"),
           "The number of media sources of a device in the database.")
      .def("preset_count", Query(&VptzClient::QueryPresetCountByPtz), py::arg("ptz_id"),
           "The number of presets of a PTZ node in the database.");
  device
      .def(
          "ptz", [](const Device& self, unsigned int id) { return Find(self.ptz_list, id); }, py::arg("id"),
          "The PTZ profile with that row id in ptz_list, or None.")
      .def(
          "media", [](const Device& self, unsigned int id) { return Find(self.media_list, id); }, py::arg("id"),
          "The media profile with that row id in media_list, or None.")
      .def("load_info", Load(&CVptzDevice::LoadDeviceInfo),
           "Reads the record from the database again, and asks for the outside addresses. Raises when the row "
           "is "
           "gone.")
      .def("load_ptz_info", Load(&CVptzDevice::LoadPtzInfo),
           "Brings ptz_list in step with the database; stored presets are appended. The number of PTZ nodes.")
      .def("load_media_info", Load(&CVptzDevice::LoadMediaInfo),
           "Brings media_list in step with the database, and asks for the outside addresses.");
}

}  // namespace vptz_python
