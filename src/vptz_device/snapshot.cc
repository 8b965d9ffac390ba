#include "vptz_device/snapshot.h"

#include <sqlite3.h>

#include <limits>

#include "log.h"
#include "model/model_access.h"
#include "vptz_device/table.h"

namespace vptz {
namespace {

// One statement's rows.
class Cursor {
 public:
  Cursor(odb::sqlite::connection& connection, const char* statement) : connection_(connection) {
    Check(sqlite3_prepare_v2(connection.handle(), statement, -1, &statement_, nullptr));
  }
  ~Cursor() { sqlite3_finalize(statement_); }
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;

  bool Next() {
    const int result = sqlite3_step(statement_);
    if (result == SQLITE_ROW) return true;
    if (result != SQLITE_DONE) Check(result);
    return false;
  }

  // NULL reads as 0, false, the empty text and NaN, as in the entity classes. A
  // column's type can be told only until its value is read.
  void Read(int column, std::uint32_t& id) const {
    id = static_cast<std::uint32_t>(sqlite3_column_int64(statement_, column));
  }
  void Read(int column, int& number) const {
    number = static_cast<int>(sqlite3_column_int64(statement_, column));
  }
  void Read(int column, bool& flag) const { flag = sqlite3_column_int64(statement_, column) != 0; }
  void Read(int column, double& number) const {
    number =
        IsNull(column) ? std::numeric_limits<double>::quiet_NaN() : sqlite3_column_double(statement_, column);
  }
  void Read(int column, std::string& text) const {
    const auto* const bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (bytes == nullptr) return ClearUnlessMemoryRanOut(text);
    text.assign(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
  }

  // What an id compares equal to: none for NULL, for a number that is too large
  // for an id, and for what is no whole number.
  std::optional<std::uint32_t> Key(int column) const {
    if (sqlite3_column_type(statement_, column) != SQLITE_INTEGER) return std::nullopt;
    const std::int64_t number = sqlite3_column_int64(statement_, column);
    if (number < 0 || number > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    return static_cast<std::uint32_t>(number);
  }
  bool IsNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
  bool IsText(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_TEXT; }

 private:
  // There is no text for NULL, and none for one that lacked the memory to be
  // converted, whose length would then be that of nothing to read.
  void ClearUnlessMemoryRanOut(std::string& text) const {
    if (sqlite3_errcode(connection_.handle()) == SQLITE_NOMEM) Check(SQLITE_NOMEM);
    text.clear();
  }

  // Throws the mapper's exception for the code; std::bad_alloc where memory ran out.
  void Check(int result) const {
    if (result != SQLITE_OK) odb::sqlite::translate_error(result, connection_);
  }

  odb::sqlite::connection& connection_;
  sqlite3_stmt* statement_ = nullptr;
};

// Rows that no owner can have are left out. A table that cannot be read is
// logged and left empty: what the others hold is shown all the same. A conflict
// is thrown, so that the whole read is repeated.
template <class Columns, class Row>
void ReadTable(odb::sqlite::connection& connection, const Columns& columns, RowsByOwner<Row>& table) {
  try {
    Cursor cursor(connection, columns.select());
    while (cursor.Next()) {
      if (const auto owner = cursor.Key(0)) columns.Read(cursor, table.Add(*owner));
    }
  } catch (const odb::recoverable&) {
    throw;
  } catch (const odb::exception& error) {
    VPTZ_LOG_AS("QueryObjects", LogLevel::kError, log_source::kModelTemplates, "Database exception! (%s)",
                error.what());
    table = {};
  }
  table.Sort();
}

constexpr Table kTypeNames("device_type", "id", OnlyColumn{"name"});
constexpr Table kProtocolNames("protocol", "id", OnlyColumn{"name"});

constexpr Table kDevices(
    "device", "id", Column("service_uri", &VptzDeviceData::service_uri),
    Column("address", &VptzDeviceData::address), Column("http_uri", &VptzDeviceData::http_uri),
    Column("mac", &VptzDeviceData::mac), Column("uuid", &VptzDeviceData::uuid),
    Column("authorization", &VptzDeviceData::authorization), Column("authorized", &VptzDeviceData::authorized),
    Column("is_alive", &VptzDeviceData::is_alive), Column("host_name", &VptzDeviceData::host_name),
    Column("manufacture", &VptzDeviceData::manufacture), Column("model_name", &VptzDeviceData::model_name),
    Column("firmware_version", &VptzDeviceData::firmware_version),
    Column("deletable", &VptzDeviceData::deletable),
    Column("is_setting_applied", &VptzDeviceData::is_setting_applied),
    Column("tracking", &VptzDeviceData::tracking), OtherColumn{"device_type"}, OtherColumn{"protocol"});
constexpr int kDeviceType = kDevices.PlaceOf("device_type");
constexpr int kProtocol = kDevices.PlaceOf("protocol");

constexpr Table kMedia("media", "device", Column("id", &MediaRow::id), Column("node", &MediaRow::node),
                       Column("url", &MediaRow::url), Column("is_enable", &MediaRow::is_enable));

constexpr Table kMediaParameters("media_parameter", "media", KeyText("name", &NamedParameterRow::name),
                                 Column("value", &ParameterRow::value), Column("min", &ParameterRow::min),
                                 Column("max", &ParameterRow::max));

constexpr Table kMovements("movement", "id", Column("have_absolute_move", &MovementRow::have_absolute_move),
                           Column("have_continues_move", &MovementRow::have_continues_move),
                           Column("have_relative_move", &MovementRow::have_relative_move));

constexpr Table kMovementParameters("movement_parameter", "movement", KeyText("name", &NamedParameterRow::name),
                                    Column("value", &ParameterRow::value), Column("min", &ParameterRow::min),
                                    Column("max", &ParameterRow::max));

constexpr Table kPtz("ptz", "device", Column("id", &PtzRow::id), Column("node", &PtzRow::node),
                     Column("is_enable", &PtzRow::is_enable), Column("track_mode", &PtzRow::track_mode),
                     Column("pan", &PtzRow::pan), Column("tilt", &PtzRow::tilt), Column("zoom", &PtzRow::zoom));

constexpr Table kPresets("preset", "ptz", Column("preset_id", &VptzPresetData::preset_id),
                         Column("token", &VptzPresetData::token), Column("name", &VptzPresetData::name),
                         Column("pan", &VptzPresetData::pan), Column("tilt", &VptzPresetData::tilt),
                         Column("zoom", &VptzPresetData::zoom));

// The name of the row that a column refers to.
std::string NameOf(const RowsByOwner<std::string>& names, const Cursor& row, int column) {
  if (row.IsNull(column)) return {};
  std::uint32_t id = 0;
  row.Read(column, id);
  const std::string* const name = names.First(id);
  return name == nullptr ? std::string() : *name;
}

std::optional<ParameterRow> FindNamed(const RowsByOwner<NamedParameterRow>& table, std::uint32_t owner,
                                      const char* name) {
  const auto [first, last] = table.Of(owner);
  const auto found = std::find_if(first, last, [&](const auto& entry) { return entry.row.name == name; });
  return found == last ? std::nullopt : std::optional<ParameterRow>(found->row);
}

template <class Row>
std::vector<Row> CopyOf(const RowsByOwner<Row>& table, std::uint32_t owner) {
  const auto [first, last] = table.Of(owner);
  std::vector<Row> rows;
  rows.reserve(static_cast<std::size_t>(last - first));
  for (auto entry = first; entry != last; ++entry) rows.push_back(entry->row);
  return rows;
}

}  // namespace

void Snapshot::ReadDevices(odb::sqlite::connection& connection, Tables& tables) {
  Cursor row(connection, kDevices.select());
  // Without a device, or without their table, nothing else is asked for.
  if (!row.Next()) return;
  ReadTable(connection, kTypeNames, tables.type_names);
  ReadTable(connection, kProtocolNames, tables.protocol_names);
  do {
    const auto id = row.Key(0);
    row.Read(0, tables.device_ids.emplace_back());
    if (!id) continue;
    VptzDeviceData& device = tables.devices.Add(*id);
    device.id = *id;
    kDevices.Read(row, device);
    device.device_type = NameOf(tables.type_names, row, kDeviceType);
    device.protocol = NameOf(tables.protocol_names, row, kProtocol);
  } while (row.Next());
}

void Snapshot::ReadProfiles(odb::sqlite::connection& connection, Tables& tables) {
  ReadTable(connection, kMedia, tables.media);
  ReadTable(connection, kMediaParameters, tables.media_parameters);
  ReadTable(connection, kMovements, tables.movements);
  ReadTable(connection, kMovementParameters, tables.movement_parameters);
  ReadTable(connection, kPtz, tables.ptz);
  ReadTable(connection, kPresets, tables.presets);
}

void Snapshot::Read() {
  tables_ = {};
  ModelAccess::Read([this](odb::sqlite::connection& connection) {
    Tables tables;
    ReadDevices(connection, tables);
    if (!tables.device_ids.empty()) ReadProfiles(connection, tables);
    tables_ = std::move(tables);
  });
}

int Snapshot::Device(std::uint32_t id, VptzDeviceData& record) const {
  const VptzDeviceData* const row = tables_.devices.First(id);
  if (row == nullptr) return -1;
  VptzDeviceData device = *row;
  device.nat_service_uri = std::move(record.nat_service_uri);
  device.nat_http_uri = std::move(record.nat_http_uri);
  record = std::move(device);
  return 0;
}

std::vector<MediaRow> Snapshot::Media(std::uint32_t device_id) const {
  return CopyOf(tables_.media, device_id);
}

std::vector<PtzRow> Snapshot::Ptz(std::uint32_t device_id) const { return CopyOf(tables_.ptz, device_id); }

std::vector<VptzPresetData> Snapshot::Presets(std::uint32_t ptz_id) const {
  return CopyOf(tables_.presets, ptz_id);
}

std::optional<MovementRow> Snapshot::Movement(std::uint32_t id) const {
  const MovementRow* const row = tables_.movements.First(id);
  return row == nullptr ? std::nullopt : std::optional(*row);
}

std::optional<ParameterRow> Snapshot::MediaParameter(std::uint32_t media_id, const char* name) const {
  return FindNamed(tables_.media_parameters, media_id, name);
}

std::optional<ParameterRow> Snapshot::MovementParameter(std::uint32_t movement_id, const char* name) const {
  return FindNamed(tables_.movement_parameters, movement_id, name);
}

int Snapshot::PresetCount(std::uint32_t ptz_id) const {
  const auto [first, last] = tables_.presets.Of(ptz_id);
  return static_cast<int>(last - first);
}

}  // namespace vptz
