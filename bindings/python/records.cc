#include "binding.h"

namespace vptz_python {
namespace {

py::object Optional(const VptzValue& value) {
  return value.valid != 0 ? py::object(py::float_(value.value)) : py::none();
}

py::object Optional(const VptzRange& range) {
  return range.valid != 0 ? py::object(py::make_tuple(range.min, range.max)) : py::none();
}

// A number that may be unknown, as an attribute that may be None.
template <class Record, class Member>
void AddOptional(py::class_<Record>& record, const char* name, Member Record::*member) {
  record.def_property_readonly(name, [member](const Record& self) { return Optional(self.*member); });
}

std::string Quoted(const std::string& text) { return py::repr(py::str(WithoutCredentials(text))); }

std::string Number(double value) { return py::repr(py::float_(value)); }

std::string Known(const VptzValue& value) { return value.valid != 0 ? Number(value.value) : "?"; }

void AddPreset(py::module_& module) {
  py::class_<VptzPresetData>(module, "Preset", "A stored position: degrees, and the magnification factor.")
      .def_readonly("preset_id", &VptzPresetData::preset_id)
      .def_readonly("token", &VptzPresetData::token)
      .def_readonly("name", &VptzPresetData::name)
      .def_readonly("pan", &VptzPresetData::pan)
      .def_readonly("tilt", &VptzPresetData::tilt)
      .def_readonly("zoom", &VptzPresetData::zoom)
      .def("__repr__", [](const VptzPresetData& self) {
        return "<vptz.Preset " + std::to_string(self.preset_id) + " " + Quoted(self.name) + ">";
      });
}

void AddAxis(py::module_& module) {
  py::class_<VptzAxisData> axis(
      module, "Axis", "What one axis can do, and where it is. What is not known is None; ranges are pairs.");
  axis.def_readonly("have_absolute_move", &VptzAxisData::have_absolute_move)
      .def_readonly("have_continues_move", &VptzAxisData::have_continues_move)
      .def_readonly("have_relative_move", &VptzAxisData::have_relative_move)
      .def("__repr__", [](const VptzAxisData& self) {
        return "<vptz.Axis at " + Known(self.position) + ", speed " + Known(self.speed) + ">";
      });
  AddOptional(axis, "position", &VptzAxisData::position);
  AddOptional(axis, "speed", &VptzAxisData::speed);
  AddOptional(axis, "position_range", &VptzAxisData::position_range);
  AddOptional(axis, "speed_range", &VptzAxisData::speed_range);
  AddOptional(axis, "spare_range", &VptzAxisData::spare_range);
}

void AddPtzProfile(py::module_& module) {
  py::class_<VptzPtzData>(module, "PtzProfile", "One PTZ profile of a device; `id` is the id in commands.")
      .def_readonly("id", &VptzPtzData::id)
      .def_readonly("node", &VptzPtzData::node)
      .def_readonly("is_enable", &VptzPtzData::is_enable)
      .def_readonly("pan", &VptzPtzData::pan)
      .def_readonly("tilt", &VptzPtzData::tilt)
      .def_readonly("zoom", &VptzPtzData::zoom)
      .def_readonly("track_mode", &VptzPtzData::track_mode)
      .def_readonly("preset_count", &VptzPtzData::preset_count)
      .def_readonly("presets", &VptzPtzData::presets)
      .def("__repr__", [](const VptzPtzData& self) {
        return "<vptz.PtzProfile " + std::to_string(self.id) + " " + Quoted(self.node) + " pan " +
               Known(self.pan.position) + ", tilt " + Known(self.tilt.position) + ", zoom " +
               Known(self.zoom.position) + ">";
      });
}

void AddMediaProfile(py::module_& module) {
  py::class_<VptzMediaData> media(
      module, "MediaProfile",
      "One media profile of a device; `id` is the id in commands. Pixels, frames per second, kilobits per "
      "second; the scales of the image are the service's. What is not known is None.");
  media.def_readonly("id", &VptzMediaData::id)
      .def_readonly("node", &VptzMediaData::node)
      .def_readonly("url", &VptzMediaData::url)
      .def_readonly("nat_url", &VptzMediaData::nat_url)
      .def_readonly("is_enable", &VptzMediaData::is_enable)
      .def("__repr__", [](const VptzMediaData& self) {
        return "<vptz.MediaProfile " + std::to_string(self.id) + " " + Quoted(self.node) + " " +
               Known(self.width) + " x " + Known(self.height) + ">";
      });
  AddOptional(media, "width", &VptzMediaData::width);
  AddOptional(media, "height", &VptzMediaData::height);
  AddOptional(media, "frame_rate", &VptzMediaData::frame_rate);
  AddOptional(media, "bit_rate", &VptzMediaData::bit_rate);
  AddOptional(media, "frame_rate_range", &VptzMediaData::frame_rate_range);
  AddOptional(media, "bit_rate_range", &VptzMediaData::bit_rate_range);
  AddOptional(media, "brightness", &VptzMediaData::brightness);
  AddOptional(media, "contrast", &VptzMediaData::contrast);
  AddOptional(media, "sharpness", &VptzMediaData::sharpness);
  AddOptional(media, "brightness_range", &VptzMediaData::brightness_range);
  AddOptional(media, "contrast_range", &VptzMediaData::contrast_range);
  AddOptional(media, "sharpness_range", &VptzMediaData::sharpness_range);
  AddOptional(media, "auto_focus", &VptzMediaData::auto_focus);
  AddOptional(media, "backlight_mode", &VptzMediaData::backlight_mode);
}

std::string MappingText(const VptzNATData& self) {
  std::string text = "<vptz.NATMapping";
  for (const std::string* each :
       {&self.text1, &self.text2, &self.text3, &self.text4, &self.text5, &self.text6}) {
    text += " " + Quoted(*each);
  }
  return text + " " + std::to_string(self.number1) + " " + std::to_string(self.number2) + ">";
}

void AddNat(py::module_& module) {
  py::enum_<NATType>(module, "NATType", "Which mappings of a device a NAT operation is about.")
      .value("ALL", NAT_ALL)
      .value("MEDIA", NAT_MEDIA)
      .value("SERVICE", NAT_SERVICE)
      .value("HTTP", NAT_HTTP);
  py::class_<VptzNATData>(module, "NATMapping", "One NAT mapping; the service gives the members their roles.")
      .def(py::init<>())
      .def_readwrite("text1", &VptzNATData::text1)
      .def_readwrite("text2", &VptzNATData::text2)
      .def_readwrite("text3", &VptzNATData::text3)
      .def_readwrite("text4", &VptzNATData::text4)
      .def_readwrite("text5", &VptzNATData::text5)
      .def_readwrite("text6", &VptzNATData::text6)
      .def_readwrite("number1", &VptzNATData::number1)
      .def_readwrite("number2", &VptzNATData::number2)
      .def("__repr__", MappingText);
}

void AddNetworkParams(py::module_& module) {
  using Params = VptzNetworkDeviceParams;
  py::class_<Params>(module, "NetworkDeviceParams",
                     "A device in the network, to be declared. User and password travel over the bus.")
      .def(py::init([](std::string mac, std::string name, std::string address, std::string user,
                       std::string password) {
             return Params{std::move(mac),     std::move(name), "",
                           std::move(address), std::move(user), std::move(password)};
           }),
           py::arg("mac") = "", py::arg("name") = "", py::arg("address") = "", py::arg("user") = "",
           py::arg("password") = "")
      .def_readwrite("mac", &Params::mac)
      .def_readwrite("name", &Params::name)
      .def_readwrite("address", &Params::address)
      .def_readwrite("user", &Params::user)
      .def_readwrite("password", &Params::password)
      .def("__repr__", [](const Params& self) {
        return "<vptz.NetworkDeviceParams " + Quoted(self.name) + " " + Quoted(self.address) + ">";
      });
}

void AddSerialParams(py::module_& module) {
  using Params = VptzSerialDeviceParams;
  py::class_<Params>(module, "SerialDeviceParams",
                     "A serial device, to be declared: wiring, bits per second, number on the line, port.")
      .def(py::init([](std::string name, std::string line, int baud_rate, int unit, std::string port) {
             return Params{std::move(name), std::move(line), baud_rate, unit, std::move(port)};
           }),
           py::arg("name") = "", py::arg("line") = "", py::arg("baud_rate") = 0, py::arg("unit") = 0,
           py::arg("port") = "")
      .def_readwrite("name", &Params::name)
      .def_readwrite("line", &Params::line)
      .def_readwrite("baud_rate", &Params::baud_rate)
      .def_readwrite("unit", &Params::unit)
      .def_readwrite("port", &Params::port)
      .def("__repr__", [](const Params& self) {
        return "<vptz.SerialDeviceParams " + Quoted(self.name) + " " + Quoted(self.port) + ">";
      });
}

}  // namespace

std::string WithoutCredentials(const std::string& text) {
  const std::size_t begin = text.find("://");
  if (begin == std::string::npos) return text;
  const std::size_t host = text.find_last_of('@');
  return host == std::string::npos || host < begin ? text : text.substr(0, begin + 3) + text.substr(host + 1);
}

void AddRecords(py::module_& module) {
  AddPreset(module);
  AddAxis(module);
  AddPtzProfile(module);
  AddMediaProfile(module);
  AddNat(module);
  AddNetworkParams(module);
  AddSerialParams(module);
}

}  // namespace vptz_python
