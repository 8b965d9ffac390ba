#include "model/schema_statements.h"

#include "model/raw_database.h"

namespace vptz_test {
namespace {

const std::string kId = R"("id" INTEGER NOT NULL PRIMARY KEY AUTOINCREMENT, )";
const std::string kReserved = R"("reserved" TEXT NOT NULL)";

std::string Reference(const std::string& column, const std::string& table) {
  return ", CONSTRAINT \"" + column + "_fk\" FOREIGN KEY (\"" + column + "\") REFERENCES \"" + table +
         "\" (\"id\") ON DELETE CASCADE DEFERRABLE INITIALLY DEFERRED";
}

const std::string kDeviceReferences =
    Reference("device_type", "device_type") + Reference("protocol", "protocol");

const std::string kDeviceType = R"(CREATE TABLE "device_type" ()" + kId +
                                R"("name" TEXT NOT NULL, "method" INTEGER NOT NULL, )" + kReserved + ")";

const std::string kProtocol = R"(CREATE TABLE "protocol" ()" + kId +
                              R"("name" TEXT NOT NULL, "version" TEXT NOT NULL, )" + kReserved + ")";

const std::string kProtocolName = R"(CREATE UNIQUE INDEX "protocol_name_i" ON "protocol" ("name"))";

// `added` are the columns that later versions put before "reserved", `altered`
// those that ALTER TABLE put behind it.
std::string DeviceTable(const std::string& added, const std::string& altered) {
  return R"(CREATE TABLE "device" ()" + kId +
         R"("device_type" INTEGER NULL, "service_uri" TEXT NOT NULL, "address" TEXT NOT NULL,
            "http_uri" TEXT NOT NULL, "mac" TEXT NOT NULL, "uuid" TEXT NOT NULL, "authorization" TEXT NOT NULL,
            "authorized" INTEGER NOT NULL, "is_alive" INTEGER NOT NULL, "protocol" INTEGER NULL,
            "host_name" TEXT NOT NULL, "manufacture" TEXT NOT NULL, "model_name" TEXT NOT NULL,
            "firmware_version" TEXT NOT NULL, "deletable" INTEGER NOT NULL, )" +
         added + kReserved + altered + kDeviceReferences + ")";
}

const std::string kDevice =
    DeviceTable(R"("is_setting_applied" INTEGER NOT NULL, "tracking" INTEGER NOT NULL, )", "");

const std::string kDevice6 = DeviceTable("", "");

const std::string kDeviceMac = R"(CREATE UNIQUE INDEX "device_mac_i" ON "device" ("mac"))";

const std::string kMedia = R"(CREATE TABLE "media" ()" + kId +
                           R"("device" INTEGER NULL, "node" TEXT NOT NULL, "url" TEXT NOT NULL,
                              "authorization" TEXT NOT NULL, "is_enable" INTEGER NOT NULL, )" +
                           kReserved + Reference("device", "device") + ")";

std::string ParameterTable(const std::string& owner) {
  return R"(CREATE TABLE ")" + owner + R"(_parameter" ()" + kId + "\"" + owner +
         R"(" INTEGER NULL, "name" TEXT NOT NULL, "value" REAL NULL, "min" REAL NULL, "max" REAL NULL, )" +
         kReserved + Reference(owner, owner) + ")";
}

const std::string kMovement = R"(CREATE TABLE "movement" ()" + kId +
                              R"("have_absolute_move" INTEGER NOT NULL, "have_continues_move" INTEGER NOT NULL,
                                 "have_relative_move" INTEGER NOT NULL, )" +
                              kReserved + ")";

const std::string kPtz = R"(CREATE TABLE "ptz" ()" + kId +
                         R"("device" INTEGER NULL, "node" TEXT NOT NULL, "is_enable" INTEGER NOT NULL,
                            "authorization" TEXT NOT NULL, "pan" INTEGER NULL, "tilt" INTEGER NULL,
                            "zoom" INTEGER NULL, "track_mode" INTEGER NOT NULL, )" +
                         kReserved + Reference("device", "device") + Reference("pan", "movement") +
                         Reference("tilt", "movement") + Reference("zoom", "movement") + ")";

const std::string kPreset = R"(CREATE TABLE "preset" ()" + kId +
                            R"("ptz" INTEGER NULL, "preset_id" INTEGER NOT NULL, "token" TEXT NOT NULL,
                               "name" TEXT NOT NULL, "pan" REAL NULL, "tilt" REAL NULL, "zoom" REAL NULL, )" +
                            kReserved + Reference("ptz", "ptz") + ")";

const std::string kEvent =
    R"(CREATE TABLE "event" ()" + kId + R"("name" TEXT NOT NULL, "message" TEXT NOT NULL, )" + kReserved + ")";

const std::string kEventName = R"(CREATE UNIQUE INDEX "event_name_i" ON "event" ("name"))";

const std::string kEventInformation =
    R"(CREATE TABLE "event_information" ()" + kId +
    R"("media" INTEGER NULL, "ptz" INTEGER NULL, "handle" INTEGER NOT NULL, "event" INTEGER NULL, )" +
    kReserved + Reference("media", "media") + Reference("ptz", "ptz") + Reference("event", "event") + ")";

const std::string kSetting =
    R"(CREATE TABLE "setting" ("name" TEXT NOT NULL PRIMARY KEY, "value" TEXT NOT NULL))";

const std::string kSchemaVersion =
    R"(CREATE TABLE "schema_version" ("name" TEXT NOT NULL PRIMARY KEY, "version" INTEGER NOT NULL,
       "migration" INTEGER NOT NULL))";

// The tables behind "device" that have never changed.
std::vector<std::string> UnchangedTables() {
  return {kMedia,     ParameterTable("media"), kMovement, ParameterTable("movement"), kPtz, kPreset, kEvent,
          kEventName, kEventInformation};
}

std::vector<std::string> Packed(const std::vector<std::vector<std::string>>& groups) {
  std::vector<std::string> packed;
  for (const std::vector<std::string>& group : groups) {
    for (const std::string& statement : group) {
      packed.push_back(WithoutWhitespace(statement));
    }
  }
  return packed;
}

}  // namespace

std::vector<std::string> CreatedSchema() {
  return Packed(
      {{kDeviceType, kProtocol, kProtocolName, kDevice}, UnchangedTables(), {kSetting, kSchemaVersion}});
}

std::vector<std::string> MigratedSchema() {
  const std::string device = DeviceTable("", R"(, "is_setting_applied" INTEGER NULL, "tracking" INTEGER NULL)");
  return Packed(
      {{kSchemaVersion, kDeviceType, kProtocol, kProtocolName, device}, UnchangedTables(), {kSetting}});
}

std::string OldSchema(int version) {
  std::string statements = kSchemaVersion + ";" + kDeviceType + ";" + kProtocol + ";" + kProtocolName + ";" +
                           kDevice6 + ";" + kDeviceMac + ";";
  for (const std::string& table : UnchangedTables()) {
    statements += table + ";";
  }
  if (version >= 7) statements += R"(DROP INDEX "device_mac_i";)";
  if (version >= 8) statements += R"(ALTER TABLE "device" ADD COLUMN "is_setting_applied" INTEGER NULL;)";
  if (version >= 9) statements += kSetting + ";";
  return statements + "INSERT INTO \"schema_version\" VALUES ('vptz', " + std::to_string(version) + ", 0);";
}

std::string OldRows() {
  return R"(
    INSERT INTO device_type VALUES (1, 'camera', 3, ''), (2, 'controller', 0, 'kept');
    INSERT INTO protocol VALUES (1, 'ONVIF', '2.0', ''), (2, 'RS232', '', '');
    INSERT INTO device (id, device_type, service_uri, address, http_uri, mac, uuid, authorization, authorized,
        is_alive, protocol, host_name, manufacture, model_name, firmware_version, deletable, reserved) VALUES
      (3, 1, 'http://10.0.0.3/onvif', '10.0.0.3', 'http://10.0.0.3', '00:11:22:33:44:55', 'u-3', '{}', 1, 1, 1,
       'hall', 'maker', 'model', '1.2', 1, ''),
      (9, NULL, 'rs232://a/1/2/3', 'a', '', '/dev/ttyS0', '', '', 0, 0, 2, '', '', '', '', 0, 'kept');
    INSERT INTO media VALUES (1, 3, 'main', 'rtsp://10.0.0.3/main', '{}', 1, '');
    INSERT INTO media_parameter VALUES (1, 1, 'width', 1920.0, NULL, NULL, ''), (2, 1, 'bitrate', 4.5, 0.1, 8.0, '');
    INSERT INTO movement VALUES (1, 1, 1, 0, ''), (2, 1, 0, 1, ''), (3, 0, 0, 0, '');
    INSERT INTO movement_parameter VALUES (1, 1, 'position', -12.5, -170.0, 170.0, '');
    INSERT INTO ptz VALUES (4, 3, 'ptz0', 1, '{}', 1, 2, 3, 2, '');
    INSERT INTO preset VALUES (1, 4, 7, 'token 7', 'door', 10.5, -3.25, NULL, '');
    INSERT INTO event VALUES (1, 'lost', 'it''s gone', '');
    INSERT INTO event_information VALUES (1, 1, 4, 5, 1, ''), (2, NULL, NULL, 0, NULL, '');)";
}

std::vector<std::string> OldRowQueries() {
  std::vector<std::string> queries = {
      "SELECT id, device_type, service_uri, address, http_uri, mac, uuid, authorization, authorized, is_alive, "
      "protocol, host_name, manufacture, model_name, firmware_version, deletable, reserved FROM device ORDER "
      "BY id"};
  for (const char* table : {"device_type", "protocol", "media", "media_parameter", "movement",
                            "movement_parameter", "ptz", "preset", "event", "event_information"}) {
    queries.push_back(std::string("SELECT * FROM ") + table + " ORDER BY id");
  }
  return queries;
}

}  // namespace vptz_test
