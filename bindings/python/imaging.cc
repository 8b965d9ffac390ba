#include "binding.h"

namespace vptz_python {
namespace {

py::arg_v Left(const char* name) { return py::arg(name) = kLeave; }
py::arg_v Mode() { return py::arg("auto_focus_mode") = "DEFAULT"; }
py::arg_v Drive() { return py::arg("drive") = ""; }
py::arg_v All() { return py::arg("idx") = 0; }
py::arg_v Index() { return py::arg("idx") = 1; }

constexpr char kCapabilities[] = "Has the service read, into the database, what the device can do.";
constexpr char kBrightness[] = "Sets the brightness; its scale is the service's.";
constexpr char kContrast[] = "Sets the contrast; its scale is the service's.";
constexpr char kSharpness[] = "Sets the sharpness; its scale is the service's.";
constexpr char kBacklight[] = "Sets the backlight mode; its numbers are the service's.";
constexpr char kSwitchFocus[] = "Switches between automatic and manual focus.";
constexpr char kFocusFar[] = "Drives the focus away until focus_stop; the texts of `drive` are the service's.";
constexpr char kFocusNear[] =
    "Drives the focus nearer until focus_stop; the texts of `drive` are the service's.";
constexpr char kFocusStop[] = "Stops the focus drive.";

void AddToClient(ClientClass& client) {
  const py::arg id("media_id");
  client
      .def("update_capabilities", Command(&VptzClient::UpdateCapabilities), py::arg("device_id"), Timeout(),
           kCapabilities)
      .def("set_imaging_settings", Command(&VptzClient::SetImagingSettings), id, Left("brightness"),
           Left("contrast"), Left("sharpness"), Left("backlight_mode"), Left("auto_focus"), Mode(), Timeout(),
           "Sets the image of a media source; values that are left out stay. Scales are the service's.")
      .def("set_brightness", Command(&VptzClient::SetBrightness), id, py::arg("value"), Timeout(), kBrightness)
      .def("set_contrast", Command(&VptzClient::SetContrast), id, py::arg("value"), Timeout(), kContrast)
      .def("set_sharpness", Command(&VptzClient::SetSharpness), id, py::arg("value"), Timeout(), kSharpness)
      .def("set_backlight_mode", Command(&VptzClient::SetBacklightMode), id, py::arg("value"), Timeout(),
           kBacklight)
      .def("set_auto_focus_mode", Command(&VptzClient::SetAutoFocusMode), id, py::arg("value"), Timeout(),
           "Sets the automatic focus; its numbers are the service's.")
      .def("switch_focus_mode", Command(&VptzClient::SwitchFocusMode), id, Timeout(), kSwitchFocus)
      .def("focus_far", Command(&VptzClient::FocusFar), id, Drive(), Timeout(), kFocusFar)
      .def("focus_near", Command(&VptzClient::FocusNear), id, Drive(), Timeout(), kFocusNear)
      .def("focus_stop", Command(&VptzClient::FocusStop), id, Drive(), Timeout(), kFocusStop);
}

void AddToDevice(DeviceClass& device) {
  device.def("update_capabilities", Command(&CVptzDevice::UpdateCapabilities), Timeout(), kCapabilities)
      .def(
          "set_imaging_settings", Command(&CVptzDevice::SetImagingSettings), Left("brightness"),
          Left("contrast"), Left("sharpness"), Left("backlight_mode"), Left("auto_focus"), Mode(), All(),
          Timeout(),
          "Sets the image of a media profile, of all of them with idx 0; values that are left out stay. Scales "
          "are the service's.")
      .def("set_brightness", Command(&CVptzDevice::SetBrightness), py::arg("value"), All(), Timeout(),
           kBrightness)
      .def("set_contrast", Command(&CVptzDevice::SetContrast), py::arg("value"), All(), Timeout(), kContrast)
      .def("set_sharpness", Command(&CVptzDevice::SetSharpness), py::arg("value"), All(), Timeout(), kSharpness)
      .def("set_backlight_mode", Command(&CVptzDevice::SetBacklightMode), py::arg("value"), All(), Timeout(),
           kBacklight)
      .def("set_auto_focus_mode", Command(&CVptzDevice::SetAutoFocusMode), py::arg("value"), Mode(), All(),
           Timeout(), "Sets the automatic focus, by number and by text; both are the service's.")
      .def("switch_focus_mode", Command(&CVptzDevice::SwitchFocusMode), Index(), Timeout(), kSwitchFocus)
      .def("focus_far", Command(&CVptzDevice::FocusFar), Drive(), Index(), Timeout(), kFocusFar)
      .def("focus_near", Command(&CVptzDevice::FocusNear), Drive(), Index(), Timeout(), kFocusNear)
      .def("focus_stop", Command(&CVptzDevice::FocusStop), Drive(), Index(), Timeout(), kFocusStop);
}

}  // namespace

void AddImaging(ClientClass& client, DeviceClass& device) {
  AddToClient(client);
  AddToDevice(device);
}

}  // namespace vptz_python
