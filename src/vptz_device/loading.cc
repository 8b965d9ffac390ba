#include "vptz_device/loading.h"

#include <utility>

#include <vptz/vptz_client.h>

#include "no_throw.h"
#include "vptz_device/access.h"
#include "vptz_device/database_rows.h"

namespace vptz {
namespace {

// A NaN, which a NULL column gives, counts as less or equal.
bool NotAbove(double low, double high) { return !(low > high); }

void SetValue(const std::optional<ParameterRow>& row, VptzValue& value) {
  value.valid = row && NotAbove(row->min, row->value) ? 1 : 0;
  if (row) value.value = row->value;
}

void SetRange(const std::optional<ParameterRow>& row, VptzRange& range) {
  range.valid = row && NotAbove(row->min, row->max) ? 1 : 0;
  if (!row) return;
  range.min = row->min;
  range.max = row->max;
}

bool Consistent(const std::optional<ParameterRow>& row) {
  return row && NotAbove(row->min, row->value) && NotAbove(row->min, row->max);
}

void SetChecked(const std::optional<ParameterRow>& row, VptzValue& value, bool& ok) {
  SetValue(row, value);
  ok = Consistent(row);
}

void SetChecked(const std::optional<ParameterRow>& row, VptzValue& value, VptzRange& range, bool& ok) {
  SetChecked(row, value, ok);
  SetRange(row, range);
}

void SetMediaParameters(const RowSource& rows, VptzMediaData& media) {
  const auto row = [&](const char* name) { return rows.MediaParameter(media.id, name); };
  SetChecked(row("width"), media.width, media.width_ok);
  SetChecked(row("height"), media.height, media.height_ok);
  SetChecked(row("frame_rate"), media.frame_rate, media.frame_rate_range, media.frame_rate_ok);
  SetChecked(row("bit_rate"), media.bit_rate, media.bit_rate_range, media.bit_rate_ok);
  SetChecked(row("brightness"), media.brightness, media.brightness_range, media.brightness_ok);
  SetChecked(row("contrast"), media.contrast, media.contrast_range, media.contrast_ok);
  SetChecked(row("sharpness"), media.sharpness, media.sharpness_range, media.sharpness_ok);
  SetValue(row("auto_focus"), media.auto_focus);
  SetValue(row("backlight_mode"), media.backlight_mode);
}

void SetAxis(const RowSource& rows, std::uint32_t movement_id, VptzAxisData& axis) {
  const std::optional<MovementRow> movement = rows.Movement(movement_id);
  if (!movement) return;
  axis.have_absolute_move = movement->have_absolute_move;
  axis.have_continues_move = movement->have_continues_move;
  axis.have_relative_move = movement->have_relative_move;
  const auto position = rows.MovementParameter(movement_id, "position");
  SetValue(position, axis.position);
  SetRange(position, axis.position_range);
  const auto speed = rows.MovementParameter(movement_id, "speed");
  SetValue(speed, axis.speed);
  SetRange(speed, axis.speed_range);
}

// The preset count comes from the client's query in the database; a handle
// without a client keeps what it had.
void SetPtz(const RowSource& rows, const PtzRow& row, bool has_client, VptzPtzData& ptz) {
  ptz.id = row.id;
  ptz.node = row.node;
  ptz.is_enable = row.is_enable;
  if (has_client) ptz.preset_count = rows.PresetCount(row.id);
  ptz.track_mode = row.track_mode;
  SetAxis(rows, row.pan, ptz.pan);
  SetAxis(rows, row.tilt, ptz.tilt);
  SetAxis(rows, row.zoom, ptz.zoom);
  // Kept: a reload appends the presets again; callers clear the list if they
  // reload.
  for (VptzPresetData& preset : rows.Presets(row.id)) ptz.presets.push_back(std::move(preset));
}

int QueryOutside(const CVptzDevice& device, NATType type, const std::string& inside, std::string& outside,
                 TimeBudget& budget) {
  VptzClient* const client = DeviceAccess::Client(device);
  outside = inside;
  if (client == nullptr) return 0;
  return budget.Spend([&](int timeout) { return client->QueryNATuri(device.id, type, outside, timeout); });
}

// For a handle that loads itself.
TimeBudget BudgetOf(const CVptzDevice& device) {
  const VptzClient* const client = DeviceAccess::Client(device);
  return TimeBudget(client == nullptr ? 0 : client->GetVptzTimeout(0));
}

}  // namespace

int LoadDeviceInfo(CVptzDevice& device, const RowSource& rows, TimeBudget& budget) {
  const int result = rows.Device(device.id, device);
  if (result != 0 || device.service_uri.find("http") == std::string::npos) return result;
  QueryOutside(device, NAT_SERVICE, device.service_uri, device.nat_service_uri, budget);
  QueryOutside(device, NAT_HTTP, device.http_uri, device.nat_http_uri, budget);
  return 0;
}

int LoadPtzInfo(CVptzDevice& device, const RowSource& rows) {
  const std::vector<PtzRow> nodes = rows.Ptz(device.id);
  const bool has_client = DeviceAccess::Client(device) != nullptr;
  for (const PtzRow& row : nodes) {
    VptzPtzData* ptz = device.GetPtzById(static_cast<int>(row.id));
    if (ptz == nullptr) ptz = &device.ptz_list.emplace_back();
    SetPtz(rows, row, has_client, *ptz);
  }
  return static_cast<int>(nodes.size());
}

int LoadMediaInfo(CVptzDevice& device, const RowSource& rows, TimeBudget& budget) {
  int result = 0;
  for (MediaRow& row : rows.Media(device.id)) {
    VptzMediaData* media = device.GetMediaById(static_cast<int>(row.id));
    if (media == nullptr) media = &device.media_list.emplace_back();
    media->id = row.id;
    media->node = std::move(row.node);
    media->url = std::move(row.url);
    media->is_enable = row.is_enable;
    SetMediaParameters(rows, *media);
    result = QueryOutside(device, NAT_MEDIA, media->url, media->nat_url, budget);
  }
  return result;
}

}  // namespace vptz

int CVptzDevice::LoadDeviceInfo() {
  vptz::TimeBudget budget = vptz::BudgetOf(*this);
  return vptz::NoThrow(-1, [&] { return vptz::LoadDeviceInfo(*this, vptz::DatabaseRows(), budget); });
}

int CVptzDevice::LoadPtzInfo() {
  return vptz::NoThrow(-1, [this] { return vptz::LoadPtzInfo(*this, vptz::DatabaseRows()); });
}

int CVptzDevice::LoadMediaInfo() {
  vptz::TimeBudget budget = vptz::BudgetOf(*this);
  return vptz::NoThrow(-1, [&] { return vptz::LoadMediaInfo(*this, vptz::DatabaseRows(), budget); });
}
