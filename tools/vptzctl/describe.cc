#include "describe.h"

namespace vptzctl {
namespace {

// "pan, tilt, zoom" as far as the axes can do it.
Value AxesThat(const VptzPtzData& ptz, bool VptzAxisData::*can) {
  std::string axes;
  const auto add = [&](const VptzAxisData& axis, const char* name) {
    if (axis.*can) axes += (axes.empty() ? "" : ", ") + std::string(name);
  };
  add(ptz.pan, "pan");
  add(ptz.tilt, "tilt");
  add(ptz.zoom, "zoom");
  return Known(axes);
}

Value Pixels(const VptzValue& value) {
  return value.valid ? Value(static_cast<std::uint32_t>(value.value)) : Value();
}

}  // namespace

Value From(const VptzValue& value) { return value.valid ? Value(value.value) : Value(); }

Value From(const VptzRange& range) { return range.valid ? Value(Range{range.min, range.max}) : Value(); }

Value Known(const std::string& text) { return text.empty() ? Value() : Value(text); }

std::vector<Field> Summary(const VptzDeviceData& device) {
  return {
      {"id", device.id, ""},
      {"name", Known(device.host_name), ""},
      {"protocol", Known(device.protocol), ""},
      {"model", Known(device.model_name), ""},
      {"address", Known(device.address), ""},
      {"alive", device.is_alive, ""},
      {"logged_in", device.authorized, ""},
  };
}

std::vector<Field> Details(const VptzDeviceData& device) {
  return {
      {"id", device.id, ""},
      {"name", Known(device.host_name), ""},
      {"protocol", Known(device.protocol), ""},
      {"type", Known(device.device_type), ""},
      {"manufacturer", Known(device.manufacture), ""},
      {"model", Known(device.model_name), ""},
      {"firmware", Known(device.firmware_version), ""},
      {"address", Known(device.address), ""},
      {"mac", Known(device.mac), ""},
      {"uuid", Known(device.uuid), ""},
      {"service_uri", Known(device.service_uri), ""},
      {"http_uri", Known(device.http_uri), ""},
      {"alive", device.is_alive, ""},
      {"logged_in", device.authorized, ""},
      {"removable", device.deletable, ""},
      {"settings_applied", device.is_setting_applied, ""},
      {"tracking", device.tracking, ""},
  };
}

List PtzProfiles(const CVptzDevice& device) {
  List list = {"ptz_profiles", {}};
  std::uint32_t number = 0;
  for (const VptzPtzData& ptz : device.ptz_list) {
    list.rows.push_back({{"profile", ++number, ""},
                         {"id", ptz.id, ""},
                         {"token", ptz.node, ""},
                         {"enabled", ptz.is_enable, ""},
                         {"moves_to", AxesThat(ptz, &VptzAxisData::have_absolute_move), ""},
                         {"drives", AxesThat(ptz, &VptzAxisData::have_continues_move), ""},
                         {"presets", static_cast<std::uint32_t>(ptz.presets.size()), ""}});
  }
  return list;
}

List MediaProfiles(const CVptzDevice& device) {
  List list = {"media_profiles", {}};
  std::uint32_t number = 0;
  for (const VptzMediaData& media : device.media_list) {
    list.rows.push_back({{"profile", ++number, ""},
                         {"id", media.id, ""},
                         {"token", media.node, ""},
                         {"enabled", media.is_enable, ""},
                         {"width", Pixels(media.width), "px"},
                         {"height", Pixels(media.height), "px"},
                         {"url", Known(media.url), ""}});
  }
  return list;
}

}  // namespace vptzctl
