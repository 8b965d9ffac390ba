#include "binding.h"

namespace vptz_python {
namespace {

py::arg_v Left(const char* name) { return py::arg(name) = kLeave; }
py::arg_v Index() { return py::arg("idx") = 1; }

constexpr char kUpdate[] = "Has the service read, into the database, the presets from the camera.";
constexpr char kSet[] = "Stores the present position under a name and a token.";
constexpr char kSetById[] = "Stores the present position as the preset with that number in the database.";
constexpr char kGoto[] = "Moves to a stored position; speeds that are left out are the service's.";
constexpr char kGotoById[] = "Moves to the position with that number in the database.";
constexpr char kRemove[] = "Removes a stored position.";
constexpr char kRemoveById[] = "Removes the position with that number in the database.";

void AddToClient(ClientClass& client) {
  const py::arg id("ptz_id");
  client.def("update_presets", Command(&VptzClient::UpdatePresets), id, Timeout(), kUpdate)
      .def("set_preset", Command(&VptzClient::SetPreset), id, py::arg("name"), py::arg("token"), Timeout(),
           kSet)
      .def("set_preset_by_id", Command(&VptzClient::SetPresetById), id, py::arg("preset_id"), Timeout(),
           kSetById)
      .def("goto_preset", Command(&VptzClient::GotoPreset), id, py::arg("token"), Left("pan_speed"),
           Left("tilt_speed"), Left("zoom_speed"), Timeout(), kGoto)
      .def("goto_preset_by_id", Command(&VptzClient::GotoPresetById), id, py::arg("preset_id"),
           Left("pan_speed"), Left("tilt_speed"), Left("zoom_speed"), Timeout(), kGotoById)
      .def("remove_preset", Command(&VptzClient::RemovePreset), id, py::arg("token"), Timeout(), kRemove)
      .def("remove_preset_by_id", Command(&VptzClient::RemovePresetById), id, py::arg("preset_id"), Timeout(),
           kRemoveById);
}

void AddToDevice(DeviceClass& device) {
  device.def("update_presets", Command(&CVptzDevice::UpdatePresets), Index(), Timeout(), kUpdate)
      .def("set_preset", Command(&CVptzDevice::SetPreset), py::arg("name"), py::arg("token"), Index(),
           Timeout(), kSet)
      .def("set_preset_by_id", Command(&CVptzDevice::SetPresetById), py::arg("preset_id"), Index(), Timeout(),
           kSetById)
      .def("goto_preset", Command(&CVptzDevice::GotoPreset), py::arg("token"), Left("pan_speed"),
           Left("tilt_speed"), Left("zoom_speed"), Index(), Timeout(), kGoto)
      .def("goto_preset_by_id", Command(&CVptzDevice::GotoPresetById), py::arg("preset_id"), Left("pan_speed"),
           Left("tilt_speed"), Left("zoom_speed"), Index(), Timeout(), kGotoById)
      .def("remove_preset", Command(&CVptzDevice::RemovePreset), py::arg("token"), Index(), Timeout(), kRemove)
      .def("remove_preset_by_id", Command(&CVptzDevice::RemovePresetById), py::arg("preset_id"), Index(),
           Timeout(), kRemoveById);
}

}  // namespace

void AddPresets(ClientClass& client, DeviceClass& device) {
  AddToClient(client);
  AddToDevice(device);
}

}  // namespace vptz_python
