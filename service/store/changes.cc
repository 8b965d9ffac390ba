#include "store/changes.h"

#include <algorithm>
#include <utility>

#include <vptz/model/media_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/protocol.h>
#include <vptz/model/ptz.h>
#include <nlohmann/json.hpp>
#include <vptz/model/movement_parameter-odb.hxx>

#include "drivers/protocols.h"
#include "store/database.h"
#include "store/row_access.h"

namespace vptzd {
namespace {

using Json = nlohmann::json;

constexpr unsigned kAll = 65535;

std::unique_ptr<Preset> RowOf(std::uint32_t ptz, const std::string& token) {
  return FoundRow<Preset>([&](Preset** row) { return Preset::QueryByToken(row, ptz, token); });
}

std::unique_ptr<Ptz> NodeOf(std::uint32_t ptz) {
  auto node = FoundRow<Ptz>([&](Ptz** row) { return Ptz::QueryById(row, ptz); });
  if (node == nullptr) throw StorageError("the database has no such PTZ node");
  return node;
}

std::vector<std::unique_ptr<Preset>> PresetRows(std::uint32_t ptz) {
  return FoundRows<Preset>([&](std::vector<Preset*>* rows) { return Preset::QueryByPtz(rows, ptz, 0, kAll); });
}

void Fill(Preset* row, const StoredPosition& preset) {
  row->set_preset_id(preset.id);
  row->set_token(preset.token);
  row->set_name(preset.name);
  row->set_pan(preset.position[kPan]);
  row->set_tilt(preset.position[kTilt]);
  row->set_zoom(preset.position[kZoom]);
}

bool Same(const Preset& row, const StoredPosition& preset) {
  return row.preset_id() == preset.id && row.name() == preset.name && row.pan() == preset.position[kPan] &&
         row.tilt() == preset.position[kTilt] && row.zoom() == preset.position[kZoom];
}

StoredPosition PositionOf(const Preset& row) {
  return {row.preset_id(), row.token(), row.name(), {row.pan(), row.tilt(), row.zoom()}};
}

std::unique_ptr<MediaParameter> ParameterOf(std::uint32_t media, const char* name) {
  return FoundRow<MediaParameter>(
      [&](MediaParameter** row) { return MediaParameter::QueryByName(row, media, name); });
}

// Whether it was to be changed.
bool StoreParameter(std::uint32_t media, const char* name, double value) {
  const auto row = ParameterOf(media, name);
  if (row == nullptr) throw StorageError(std::string("the database has no parameter ") + name);
  if (row->value() == value) return false;
  row->set_value(value);
  UpdateRow(*row, "media parameters");
  return true;
}

void LoadParameter(std::uint32_t media, const char* name, double* value) {
  if (const auto row = ParameterOf(media, name)) *value = row->value();
}

}  // namespace

void ChangeDevice(std::uint32_t device, const std::function<void(Device&)>& change) {
  const auto row = FoundRow<Device>([&](Device** found) { return Device::QueryById(found, device); });
  if (row == nullptr) throw StorageError("the database has no such device");
  change(*row);
  UpdateRow(*row, "devices");
}

bool IsProtocol(const std::string& name) {
  return FoundRow<Protocol>([&](Protocol** row) { return Protocol::QueryByName(row, name); }) != nullptr;
}

bool ChangeProtocol(std::uint32_t device, const std::string& protocol) {
  const auto row = FoundRow<Protocol>([&](Protocol** found) { return Protocol::QueryByName(found, protocol); });
  if (row == nullptr) return false;
  ChangeDevice(device, [&](Device& changed) { changed.set_protocol(row.get()); });
  return true;
}

std::string CredentialsText(const Credentials& credentials) {
  return Json{{"account", credentials.user}, {"credentials", credentials.password}}.dump();
}

bool CanStore(const Credentials& credentials) {
  try {
    CredentialsText(credentials);
    return true;
  } catch (const Json::exception&) {
    return false;
  }
}

void StoreLogin(std::uint32_t device, const std::optional<Credentials>& credentials) {
  const std::string text = credentials ? CredentialsText(*credentials) : "";
  ChangeDevice(device, [&](Device& row) {
    row.set_authorization(text);
    row.set_authorized(credentials.has_value());
  });
}

Credentials StoredCredentials(const Device& device) {
  const Json text = Json::parse(device.authorization(), nullptr, false);
  if (!text.is_object()) return {};
  const auto member = [&](const char* name) {
    return text.contains(name) && text[name].is_string() ? text[name].get<std::string>() : std::string();
  };
  return {member("account"), member("credentials")};
}

void StorePreset(std::uint32_t ptz, const StoredPosition& preset) {
  if (const auto row = RowOf(ptz, preset.token)) {
    Fill(row.get(), preset);
    UpdateRow(*row, "presets");
    return;
  }
  const auto node = NodeOf(ptz);
  Preset row;
  row.set_ptz(node.get());
  Fill(&row, preset);
  InsertRow(&row, "preset");
}

void ForgetPreset(std::uint32_t ptz, const std::string& token) {
  const auto row = RowOf(ptz, token);
  if (row != nullptr && Preset::Remove(row->id()) < 0) throw StorageError("the database keeps a preset");
}

bool StorePresets(std::uint32_t ptz, const PresetList& presets) {
  bool changed = false;
  const auto rows = PresetRows(ptz);
  for (const auto& row : rows) {
    if (presets.Find(row->token()) != nullptr) continue;
    ForgetPreset(ptz, row->token());
    changed = true;
  }
  for (const StoredPosition& preset : presets.all()) {
    const auto same = [&](const auto& row) { return row->token() == preset.token && Same(*row, preset); };
    if (std::any_of(rows.begin(), rows.end(), same)) continue;
    StorePreset(ptz, preset);
    changed = true;
  }
  return changed;
}

PresetList StoredPresets(std::uint32_t ptz, const std::string& protocol) {
  PresetList presets(ProtocolNamed(protocol).preset_shift);
  for (const auto& row : PresetRows(ptz)) presets.Store(PositionOf(*row));
  return presets;
}

void StoreTrackMode(const CameraIds& ids, std::uint32_t mode) {
  const auto node = NodeOf(ids.ptz);
  node->set_track_mode(static_cast<int>(mode));
  UpdateRow(*node, "PTZ nodes");
  ChangeDevice(ids.device, [&](Device& row) { row.set_tracking(mode != 0); });
}

bool StoreImage(std::uint32_t media, const ImageSettings& image) {
  bool changed = StoreParameter(media, "brightness", image.brightness);
  changed |= StoreParameter(media, "contrast", image.contrast);
  changed |= StoreParameter(media, "sharpness", image.sharpness);
  changed |= StoreParameter(media, "auto_focus", image.auto_focus);
  changed |= StoreParameter(media, "backlight_mode", image.backlight_mode);
  return changed;
}

ImageSettings StoredImage(std::uint32_t media, const ImageSettings& factory) {
  ImageSettings image = factory;
  LoadParameter(media, "brightness", &image.brightness);
  LoadParameter(media, "contrast", &image.contrast);
  LoadParameter(media, "sharpness", &image.sharpness);
  LoadParameter(media, "auto_focus", &image.auto_focus);
  LoadParameter(media, "backlight_mode", &image.backlight_mode);
  return image;
}

void AxisRows::CompareParameter(std::uint32_t movement, const char* name, double value, double min,
                                double max) {
  auto row = FoundRow<MovementParameter>(
      [&](MovementParameter** found) { return MovementParameter::QueryByName(found, movement, name); });
  if (row == nullptr) throw StorageError(std::string("the database has no movement parameter ") + name);
  if (row->value() == value && row->min() == min && row->max() == max) return;
  row->set_value(value);
  row->set_min(min);
  row->set_max(max);
  changed_.push_back(std::move(row));
}

void AxisRows::Compare(std::uint32_t ptz, const Abilities& abilities, const PerAxis<double>& position) {
  const auto node = NodeOf(ptz);
  const PerAxis<std::uint32_t> movements = {node->pan_id(), node->tilt_id(), node->zoom_id()};
  for (const AxisIndex index : {kPan, kTilt, kZoom}) {
    if (movements[index] == 0) continue;
    // A camera may have lost an axis of which it has rows.
    const AxisRange fixed = {position[index], position[index], 1.0};
    const AxisRange range = abilities.axes[index].value_or(fixed);
    CompareParameter(movements[index], "position", position[index], range.min, range.max);
    CompareParameter(movements[index], "speed", 0.0, 0.0, range.top_speed);
  }
}

void AxisRows::Store() const {
  if (changed_.empty()) return;
  Transaction transaction;
  for (const auto& row : changed_) transaction.Update(*row, "movement parameter");
  transaction.Commit();
}

void StoreAxes(std::uint32_t ptz, const Abilities& abilities, const PerAxis<double>& position) {
  AxisRows rows;
  rows.Compare(ptz, abilities, position);
  rows.Store();
}

}  // namespace vptzd
