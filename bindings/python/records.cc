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

void AddPreset(py::module_& module) {
  py::class_<VptzPresetData>(module, "Preset", "A stored position.")
      .def_readonly("preset_id", &VptzPresetData::preset_id)
      .def_readonly("token", &VptzPresetData::token)
      .def_readonly("name", &VptzPresetData::name)
      .def_readonly("pan", &VptzPresetData::pan)
      .def_readonly("tilt", &VptzPresetData::tilt)
      .def_readonly("zoom", &VptzPresetData::zoom)
      .def("__repr__", [](const VptzPresetData& self) {
        return "<vptz.Preset " + std::to_string(self.preset_id) + " " +
               std::string(py::repr(py::str(self.name))) + ">";
      });
}

void AddAxis(py::module_& module) {
  py::class_<VptzAxisData> axis(module, "Axis", "What one axis can do, and where it is.");
  axis.def_readonly("have_absolute_move", &VptzAxisData::have_absolute_move)
      .def_readonly("have_continues_move", &VptzAxisData::have_continues_move)
      .def_readonly("have_relative_move", &VptzAxisData::have_relative_move);
  AddOptional(axis, "position", &VptzAxisData::position);
  AddOptional(axis, "speed", &VptzAxisData::speed);
  AddOptional(axis, "position_range", &VptzAxisData::position_range);
  AddOptional(axis, "speed_range", &VptzAxisData::speed_range);
}

void AddPtzProfile(py::module_& module) {
  py::class_<VptzPtzData>(module, "PtzProfile", "One PTZ profile of a device.")
      .def_readonly("id", &VptzPtzData::id)
      .def_readonly("node", &VptzPtzData::node)
      .def_readonly("is_enable", &VptzPtzData::is_enable)
      .def_readonly("pan", &VptzPtzData::pan)
      .def_readonly("tilt", &VptzPtzData::tilt)
      .def_readonly("zoom", &VptzPtzData::zoom)
      .def_readonly("track_mode", &VptzPtzData::track_mode)
      .def_readonly("preset_count", &VptzPtzData::preset_count)
      .def_readonly("presets", &VptzPtzData::presets);
}

void AddMediaProfile(py::module_& module) {
  py::class_<VptzMediaData> media(module, "MediaProfile", "One media profile of a device.");
  media.def_readonly("id", &VptzMediaData::id)
      .def_readonly("node", &VptzMediaData::node)
      .def_readonly("url", &VptzMediaData::url)
      .def_readonly("nat_url", &VptzMediaData::nat_url)
      .def_readonly("is_enable", &VptzMediaData::is_enable);
  AddOptional(media, "width", &VptzMediaData::width);
  AddOptional(media, "height", &VptzMediaData::height);
  AddOptional(media, "frame_rate", &VptzMediaData::frame_rate);
  AddOptional(media, "bit_rate", &VptzMediaData::bit_rate);
  AddOptional(media, "brightness", &VptzMediaData::brightness);
  AddOptional(media, "contrast", &VptzMediaData::contrast);
  AddOptional(media, "sharpness", &VptzMediaData::sharpness);
  AddOptional(media, "brightness_range", &VptzMediaData::brightness_range);
  AddOptional(media, "contrast_range", &VptzMediaData::contrast_range);
  AddOptional(media, "sharpness_range", &VptzMediaData::sharpness_range);
  AddOptional(media, "auto_focus", &VptzMediaData::auto_focus);
  AddOptional(media, "backlight_mode", &VptzMediaData::backlight_mode);
}

void AddNat(py::module_& module) {
  py::enum_<NATType>(module, "NATType")
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
      .def_readwrite("number2", &VptzNATData::number2);
}

}  // namespace

void AddRecords(py::module_& module) {
  AddPreset(module);
  AddAxis(module);
  AddPtzProfile(module);
  AddMediaProfile(module);
  AddNat(module);
}

}  // namespace vptz_python
