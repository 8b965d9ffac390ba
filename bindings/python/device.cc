#include "binding.h"

namespace vptz_python {
namespace {

// Loading asks the service, and holds up other threads no more than a command.
template <class Loader>
auto Load(Loader loader) {
  return [loader](CVptzDevice& self) { return AnswerOrRaise(Unlocked([&] { return (self.*loader)(); })); };
}

constexpr double kLeave = kVptzNotCommanded;

void AddRecord(py::class_<CVptzDevice>& device) {
  device.def_readonly("id", &CVptzDevice::id)
      .def_readonly("device_type", &CVptzDevice::device_type)
      .def_readonly("service_uri", &CVptzDevice::service_uri)
      .def_readonly("address", &CVptzDevice::address)
      .def_readonly("http_uri", &CVptzDevice::http_uri)
      .def_readonly("nat_service_uri", &CVptzDevice::nat_service_uri)
      .def_readonly("nat_http_uri", &CVptzDevice::nat_http_uri)
      .def_readonly("mac", &CVptzDevice::mac)
      .def_readonly("uuid", &CVptzDevice::uuid)
      .def_readonly("authorized", &CVptzDevice::authorized)
      .def_readonly("is_alive", &CVptzDevice::is_alive)
      .def_readonly("protocol", &CVptzDevice::protocol)
      .def_readonly("host_name", &CVptzDevice::host_name)
      .def_readonly("manufacture", &CVptzDevice::manufacture)
      .def_readonly("model_name", &CVptzDevice::model_name)
      .def_readonly("firmware_version", &CVptzDevice::firmware_version)
      .def_readonly("deletable", &CVptzDevice::deletable)
      .def_readonly("is_setting_applied", &CVptzDevice::is_setting_applied)
      .def_readonly("tracking", &CVptzDevice::tracking)
      .def_readonly("ptz_list", &CVptzDevice::ptz_list)
      .def_readonly("media_list", &CVptzDevice::media_list)
      .def("__repr__", [](const CVptzDevice& self) {
        return "<vptz.Device " + std::to_string(self.id) + " " + self.protocol + ">";
      });
}

void AddMotion(py::class_<CVptzDevice>& device) {
  device
      .def("absolute_move", Command(&CVptzDevice::AbsoluteMove), py::arg("pan") = kLeave,
           py::arg("tilt") = kLeave, py::arg("zoom") = kLeave, py::arg("pan_speed") = kLeave,
           py::arg("tilt_speed") = kLeave, py::arg("zoom_speed") = kLeave, py::arg("idx") = 1,
           py::arg("timeout") = 0, "Moves to a position and stops there; axes without one are left alone.")
      .def("continuous_move", Command(&CVptzDevice::ContinuousMove), py::arg("pan") = kLeave,
           py::arg("tilt") = kLeave, py::arg("zoom") = kLeave, py::arg("idx") = 1, py::arg("timeout") = 0,
           "Moves until stopped or to a limit; axes without a velocity are left alone.")
      .def("stop", Command(&CVptzDevice::PtzStop), py::arg("idx") = 1, py::arg("pan") = true,
           py::arg("tilt") = true, py::arg("zoom") = true, py::arg("timeout") = 0, "Stops axes.")
      .def("goto_home", Command(&CVptzDevice::GotoHome), py::arg("pan_speed") = kLeave,
           py::arg("tilt_speed") = kLeave, py::arg("zoom_speed") = kLeave, py::arg("idx") = 1,
           py::arg("timeout") = 0, "Moves to the home position.")
      .def("set_home", Command(&CVptzDevice::SetHome), py::arg("idx") = 1, py::arg("timeout") = 0,
           "Stores the present position as home.")
      .def("set_track_mode", Command(&CVptzDevice::SetTrackMode), py::arg("mode"), py::arg("idx") = 1,
           py::arg("timeout") = 0, "Sets the tracking mode.");
}

void AddPresets(py::class_<CVptzDevice>& device) {
  device
      .def("update_presets", Command(&CVptzDevice::UpdatePresets), py::arg("idx") = 1, py::arg("timeout") = 0,
           "Has the service read the presets from the camera.")
      .def("set_preset", Command(&CVptzDevice::SetPreset), py::arg("name"), py::arg("token"),
           py::arg("idx") = 1, py::arg("timeout") = 0, "Stores the present position.")
      .def("set_preset_by_id", Command(&CVptzDevice::SetPresetById), py::arg("preset_id"), py::arg("idx") = 1,
           py::arg("timeout") = 0, "Stores the present position under a stored preset's name.")
      .def("goto_preset", Command(&CVptzDevice::GotoPreset), py::arg("token"), py::arg("pan_speed") = kLeave,
           py::arg("tilt_speed") = kLeave, py::arg("zoom_speed") = kLeave, py::arg("idx") = 1,
           py::arg("timeout") = 0, "Moves to a stored position.")
      .def("goto_preset_by_id", Command(&CVptzDevice::GotoPresetById), py::arg("preset_id"),
           py::arg("pan_speed") = kLeave, py::arg("tilt_speed") = kLeave, py::arg("zoom_speed") = kLeave,
           py::arg("idx") = 1, py::arg("timeout") = 0, "Moves to a stored position.")
      .def("remove_preset", Command(&CVptzDevice::RemovePreset), py::arg("token"), py::arg("idx") = 1,
           py::arg("timeout") = 0, "Removes a stored position.")
      .def("remove_preset_by_id", Command(&CVptzDevice::RemovePresetById), py::arg("preset_id"),
           py::arg("idx") = 1, py::arg("timeout") = 0, "Removes a stored position.");
}

void AddImaging(py::class_<CVptzDevice>& device) {
  device
      .def("set_imaging_settings", Command(&CVptzDevice::SetImagingSettings), py::arg("brightness") = kLeave,
           py::arg("contrast") = kLeave, py::arg("sharpness") = kLeave, py::arg("backlight_mode") = kLeave,
           py::arg("auto_focus") = kLeave, py::arg("auto_focus_mode") = "DEFAULT", py::arg("idx") = 0,
           py::arg("timeout") = 0, "Sets the image of a media profile, of all of them with idx 0.")
      .def("switch_focus_mode", Command(&CVptzDevice::SwitchFocusMode), py::arg("idx") = 1,
           py::arg("timeout") = 0, "Switches between automatic and manual focus.")
      .def("focus_far", Command(&CVptzDevice::FocusFar), py::arg("drive") = "", py::arg("idx") = 1,
           py::arg("timeout") = 0, "Drives the focus until focus_stop.")
      .def("focus_near", Command(&CVptzDevice::FocusNear), py::arg("drive") = "", py::arg("idx") = 1,
           py::arg("timeout") = 0, "Drives the focus until focus_stop.")
      .def("focus_stop", Command(&CVptzDevice::FocusStop), py::arg("drive") = "", py::arg("idx") = 1,
           py::arg("timeout") = 0, "Stops the focus drive.");
}

void AddMaintenance(py::class_<CVptzDevice>& device) {
  device
      .def("login", Command(&CVptzDevice::Login), py::arg("user"), py::arg("password"), py::arg("timeout") = 0,
           "Has the service log in to the device.")
      .def("logout", Command(&CVptzDevice::Logout), py::arg("timeout") = 0,
           "Has the service log out of the device.")
      .def("update_info", Command(&CVptzDevice::UpdateDeviceInfo), py::arg("timeout") = 0,
           "Has the service read what the device is.")
      .def("update_info_full", Command(&CVptzDevice::UpdateDeviceInfoFull), py::arg("timeout") = 0,
           "Has the service read all about the device.")
      .def("update_ptz_status", Command(&CVptzDevice::UpdatePtzStatus), py::arg("timeout") = 0,
           "Has the service read where the device's axes are.")
      .def("update_device_presets", Command(&CVptzDevice::UpdateDevicePresets), py::arg("timeout") = 0,
           "Has the service read the device's presets.")
      .def("update_capabilities", Command(&CVptzDevice::UpdateCapabilities), py::arg("timeout") = 0,
           "Has the service read what the device can do.")
      .def("load_info", Load(&CVptzDevice::LoadDeviceInfo), "Reads the record from the database.")
      .def("load_ptz_profiles", Load(&CVptzDevice::LoadPtzProfiles),
           "Asks for the live state of the PTZ profiles.")
      .def("load_media_profiles", Load(&CVptzDevice::LoadMediaProfiles),
           "Asks for the live state of the media profiles.");
}

}  // namespace

void AddDevice(py::module_& module) {
  py::class_<CVptzDevice> device(
      module, "Device",
      "A device as it was when it was looked up. Operations address the profile idx, "
      "counted from 1; timeout is in seconds, 0 is the configured one.");
  AddRecord(device);
  AddMotion(device);
  AddPresets(device);
  AddImaging(device);
  AddMaintenance(device);
}

}  // namespace vptz_python
