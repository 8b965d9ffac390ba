#include "vptz_device/database_rows.h"

#include <memory>

#include <vptz/model/device.h>
#include <vptz/model/media.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/movement.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/ptz.h>

namespace vptz {
namespace {

// The paging arguments of the list queries; they are ignored.
constexpr unsigned int kFirst = 0;
constexpr unsigned int kCount = 65535;

// Calls a query for a single object, whose result comes first.
template <class Row, class... Arguments, class... Parameters>
std::unique_ptr<Row> One(int (*query)(Row**, Parameters...), Arguments&&... arguments) {
  Row* row = nullptr;
  query(&row, arguments...);
  return std::unique_ptr<Row>(row);
}

// Calls a list query of the rows that one owner has.
template <class Row>
std::vector<std::unique_ptr<Row>> All(int (*query)(std::vector<Row*>*, unsigned int, unsigned int,
                                                   unsigned int),
                                      std::uint32_t owner) {
  std::vector<Row*> rows;
  query(&rows, owner, kFirst, kCount);
  return {rows.begin(), rows.end()};
}

template <class Named>
std::string NameOf(const Named* object) {
  return object == nullptr ? std::string() : object->name();
}

template <class Parameter>
std::optional<ParameterRow> Values(const std::unique_ptr<Parameter>& row) {
  if (row == nullptr) return std::nullopt;
  return ParameterRow{row->value(), row->min(), row->max()};
}

void Copy(const ::Device& row, VptzDeviceData& record) {
  record.id = row.id();
  record.device_type = NameOf(row.device_type());
  record.service_uri = row.service_uri();
  record.address = row.address();
  record.http_uri = row.http_uri();
  record.mac = row.mac();
  record.uuid = row.uuid();
  record.authorization = row.authorization();
  record.authorized = row.authorized();
  record.is_alive = row.is_alive();
  record.protocol = NameOf(row.protocol());
  record.host_name = row.host_name();
  record.manufacture = row.manufacture();
  record.model_name = row.model_name();
  record.firmware_version = row.firmware_version();
  record.deletable = row.deletable();
  record.is_setting_applied = row.is_setting_applied();
  record.tracking = row.tracking();
}

}  // namespace

int DatabaseRows::Device(std::uint32_t id, VptzDeviceData& record) const {
  ::Device* found = nullptr;
  const int result = ::Device::QueryById(&found, id);
  const std::unique_ptr<::Device> row(found);
  if (result == 0) Copy(*row, record);
  return result;
}

std::vector<MediaRow> DatabaseRows::Media(std::uint32_t device_id) const {
  std::vector<MediaRow> rows;
  for (const auto& row : All(&::Media::QueryByDevice, device_id)) {
    rows.push_back({row->id(), row->node(), row->url(), row->is_enable()});
  }
  return rows;
}

std::vector<PtzRow> DatabaseRows::Ptz(std::uint32_t device_id) const {
  std::vector<PtzRow> rows;
  for (const auto& row : All(&::Ptz::QueryByDevice, device_id)) {
    rows.push_back({row->id(), row->node(), row->is_enable(), row->track_mode(), row->pan_id(), row->tilt_id(),
                    row->zoom_id()});
  }
  return rows;
}

std::vector<VptzPresetData> DatabaseRows::Presets(std::uint32_t ptz_id) const {
  std::vector<VptzPresetData> rows;
  for (const auto& row : All(&Preset::QueryByPtz, ptz_id)) {
    rows.push_back({row->preset_id(), row->token(), row->name(), row->pan(), row->tilt(), row->zoom()});
  }
  return rows;
}

std::optional<MovementRow> DatabaseRows::Movement(std::uint32_t id) const {
  const auto row = One(&::Movement::QueryById, id);
  if (row == nullptr) return std::nullopt;
  return MovementRow{row->have_absolute_move(), row->have_continues_move(), row->have_relative_move()};
}

std::optional<ParameterRow> DatabaseRows::MediaParameter(std::uint32_t media_id, const char* name) const {
  return Values(One(&::MediaParameter::QueryByName, media_id, name));
}

std::optional<ParameterRow> DatabaseRows::MovementParameter(std::uint32_t movement_id, const char* name) const {
  return Values(One(&::MovementParameter::QueryByName, movement_id, name));
}

int DatabaseRows::PresetCount(std::uint32_t ptz_id) const { return Preset::QueryCountByPtz(ptz_id); }

}  // namespace vptz
