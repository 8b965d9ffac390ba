#include "vptz_device/snapshot.h"

#include <sqlite3.h>

#include <limits>

#include "log.h"
#include "model/model_access.h"

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
  std::uint32_t Id(int column) const {
    return static_cast<std::uint32_t>(sqlite3_column_int64(statement_, column));
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
  int Int(int column) const { return static_cast<int>(sqlite3_column_int64(statement_, column)); }
  bool Flag(int column) const { return sqlite3_column_int64(statement_, column) != 0; }
  double Real(int column) const {
    return IsNull(column) ? std::numeric_limits<double>::quiet_NaN()
                          : sqlite3_column_double(statement_, column);
  }
  void Text(int column, std::string& text) const {
    const auto* const bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (bytes == nullptr) return ClearUnlessMemoryRanOut(text);
    text.assign(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
  }

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

// The first column of each statement is the row's owner; rows that none can own
// are left out. `read` copies the other columns. A table that cannot be read is
// logged and left empty: what the others hold is shown all the same. A conflict
// is thrown, so that the whole read is repeated.
template <class Row, class ReadRow>
void ReadTable(odb::sqlite::connection& connection, const char* statement, RowsByOwner<Row>& table,
               ReadRow&& read) {
  try {
    Cursor cursor(connection, statement);
    while (cursor.Next()) {
      if (const auto owner = cursor.Key(0)) read(cursor, table.Add(*owner));
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

void ReadName(const Cursor& row, std::string& name) { row.Text(1, name); }

void ReadDevice(const Cursor& row, VptzDeviceData& device) {
  device.id = row.Id(0);
  row.Text(1, device.service_uri);
  row.Text(2, device.address);
  row.Text(3, device.http_uri);
  row.Text(4, device.mac);
  row.Text(5, device.uuid);
  row.Text(6, device.authorization);
  device.authorized = row.Flag(7);
  device.is_alive = row.Flag(8);
  row.Text(9, device.host_name);
  row.Text(10, device.manufacture);
  row.Text(11, device.model_name);
  row.Text(12, device.firmware_version);
  device.deletable = row.Flag(13);
  device.is_setting_applied = row.Flag(14);
  device.tracking = row.Flag(15);
}

void ReadMovement(const Cursor& row, MovementRow& movement) {
  movement = {row.Flag(1), row.Flag(2), row.Flag(3)};
}

void ReadMedia(const Cursor& row, MediaRow& media) {
  media.id = row.Id(1);
  row.Text(2, media.node);
  row.Text(3, media.url);
  media.is_enable = row.Flag(4);
}

void ReadParameter(const Cursor& row, NamedParameterRow& parameter) {
  if (row.IsText(1)) row.Text(1, parameter.name);  // a blob equals no name
  parameter.values = {row.Real(2), row.Real(3), row.Real(4)};
}

void ReadPtz(const Cursor& row, PtzRow& ptz) {
  ptz.id = row.Id(1);
  row.Text(2, ptz.node);
  ptz.is_enable = row.Flag(3);
  ptz.track_mode = row.Int(4);
  ptz.pan = row.Id(5);
  ptz.tilt = row.Id(6);
  ptz.zoom = row.Id(7);
}

void ReadPreset(const Cursor& row, VptzPresetData& preset) {
  preset.preset_id = row.Id(1);
  row.Text(2, preset.token);
  row.Text(3, preset.name);
  preset.pan = row.Real(4);
  preset.tilt = row.Real(5);
  preset.zoom = row.Real(6);
}

// The name of the row that a column refers to.
std::string NameOf(const RowsByOwner<std::string>& names, const Cursor& row, int column) {
  const std::string* const name = row.IsNull(column) ? nullptr : names.First(row.Id(column));
  return name == nullptr ? std::string() : *name;
}

std::optional<ParameterRow> FindNamed(const RowsByOwner<NamedParameterRow>& table, std::uint32_t owner,
                                      const char* name) {
  const auto [first, last] = table.Of(owner);
  const auto found = std::find_if(first, last, [&](const auto& entry) { return entry.row.name == name; });
  return found == last ? std::nullopt : std::optional(found->row.values);
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
  Cursor row(connection,
             R"(SELECT "id", "service_uri", "address", "http_uri", "mac", "uuid", "authorization", "authorized",
                "is_alive", "host_name", "manufacture", "model_name", "firmware_version", "deletable",
                "is_setting_applied", "tracking", "device_type", "protocol" FROM "device" ORDER BY "id")");
  // Without a device, or without their table, nothing else is asked for.
  if (!row.Next()) return;
  ReadTable(connection, R"(SELECT "id", "name" FROM "device_type" ORDER BY "id")", tables.type_names, ReadName);
  ReadTable(connection, R"(SELECT "id", "name" FROM "protocol" ORDER BY "id")", tables.protocol_names,
            ReadName);
  do {
    const auto id = row.Key(0);
    tables.device_ids.push_back(row.Id(0));
    if (!id) continue;
    VptzDeviceData& device = tables.devices.Add(*id);
    ReadDevice(row, device);
    device.device_type = NameOf(tables.type_names, row, 16);
    device.protocol = NameOf(tables.protocol_names, row, 17);
  } while (row.Next());
}

void Snapshot::ReadProfiles(odb::sqlite::connection& connection, Tables& tables) {
  ReadTable(connection,
            R"(SELECT "device", "id", "node", "url", "is_enable" FROM "media"
               ORDER BY "id")",
            tables.media, ReadMedia);
  ReadTable(connection,
            R"(SELECT "media", "name", "value", "min", "max" FROM "media_parameter"
               ORDER BY "id")",
            tables.media_parameters, ReadParameter);
  ReadTable(connection,
            R"(SELECT "id", "have_absolute_move", "have_continues_move", "have_relative_move" FROM "movement"
               ORDER BY "id")",
            tables.movements, ReadMovement);
  ReadTable(connection,
            R"(SELECT "movement", "name", "value", "min", "max" FROM "movement_parameter"
               ORDER BY "id")",
            tables.movement_parameters, ReadParameter);
  ReadTable(connection,
            R"(SELECT "device", "id", "node", "is_enable", "track_mode", "pan", "tilt", "zoom" FROM "ptz"
               ORDER BY "id")",
            tables.ptz, ReadPtz);
  ReadTable(connection,
            R"(SELECT "ptz", "preset_id", "token", "name", "pan", "tilt", "zoom" FROM "preset"
               ORDER BY "id")",
            tables.presets, ReadPreset);
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
