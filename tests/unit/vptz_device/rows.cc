#include "vptz_device/rows.h"

namespace vptz_test {
namespace {

// What the columns that must not be NULL hold unless told otherwise.
const Columns& Defaults(const std::string& table) {
  static const std::map<std::string, Columns> defaults = {
      {"device_type", {{"name", "''"}, {"method", "0"}}},
      {"protocol", {{"name", "''"}, {"version", "''"}}},
      {"device",
       {{"service_uri", "''"},
        {"address", "''"},
        {"http_uri", "''"},
        {"mac", "''"},
        {"uuid", "''"},
        {"authorization", "''"},
        {"authorized", "0"},
        {"is_alive", "0"},
        {"host_name", "''"},
        {"manufacture", "''"},
        {"model_name", "''"},
        {"firmware_version", "''"},
        {"deletable", "0"},
        {"is_setting_applied", "0"},
        {"tracking", "0"}}},
      {"media", {{"node", "''"}, {"url", "''"}, {"authorization", "''"}, {"is_enable", "0"}}},
      {"media_parameter", {{"name", "''"}}},
      {"movement", {{"have_absolute_move", "0"}, {"have_continues_move", "0"}, {"have_relative_move", "0"}}},
      {"movement_parameter", {{"name", "''"}}},
      {"ptz", {{"node", "''"}, {"is_enable", "0"}, {"authorization", "''"}, {"track_mode", "0"}}},
      {"preset", {{"preset_id", "0"}, {"token", "''"}, {"name", "''"}}},
  };
  return defaults.at(table);
}

std::string InsertParameter(const std::string& owner, int id, const std::string& name,
                            const std::string& numbers) {
  return "INSERT INTO " + owner + "_parameter (" + owner + ", name, value, min, max, reserved) VALUES (" +
         std::to_string(id) + ", '" + name + "', " + numbers + ", '');";
}

}  // namespace

std::string Insert(const std::string& table, const Columns& columns) {
  Columns all = columns;
  all.insert(Defaults(table).begin(), Defaults(table).end());
  std::string names = "reserved";
  std::string values = "''";
  for (const auto& [name, value] : all) {
    names += ", \"" + name + "\"";
    values += ", " + value;
  }
  return "INSERT INTO " + table + " (" + names + ") VALUES (" + values + ");";
}

std::string InsertMediaParameter(int media, const std::string& name, const std::string& numbers) {
  return InsertParameter("media", media, name, numbers);
}

std::string InsertMovementParameter(int movement, const std::string& name, const std::string& numbers) {
  return InsertParameter("movement", movement, name, numbers);
}

std::string TwoDevicesWithEverything() {
  return Insert("device", {{"id", "1"}, {"service_uri", "'http://s1'"}, {"http_uri", "'http://h1'"}}) +
         Insert("device", {{"id", "2"}, {"service_uri", "'rs232://s2'"}, {"http_uri", "'http://h2'"}}) +
         Insert("device", {{"id", "3"}, {"service_uri", "'s3 by https'"}}) +
         Insert("media", {{"id", "14"}, {"device", "1"}, {"url", "'rtsp://m14'"}}) +
         Insert("media", {{"id", "12"}, {"device", "2"}, {"url", "'rtsp://m12'"}}) +
         Insert("media", {{"id", "11"}, {"device", "1"}, {"url", "'rtsp://m11'"}}) +
         Insert("ptz", {{"id", "21"}, {"device", "1"}, {"node", "'ptz0'"}});
}

}  // namespace vptz_test
