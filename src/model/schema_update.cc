#include "model/schema_update.h"

#include <sqlite3.h>
#include <odb/connection.hxx>
#include <odb/exceptions.hxx>
#include <odb/schema-catalog.hxx>
#include <odb/sqlite/connection.hxx>
#include <odb/transaction.hxx>

#include "log.h"

namespace vptz {
namespace {

using log_source::kModel;

constexpr int kLastWorthlessVersion = 3;

// For a damaged table of versions the mapper reports version 0. That must not make
// us delete the file.
struct UnreadableVersion : odb::exception {
  const char* what() const noexcept override { return "the schema's version cannot be read"; }
  odb::exception* clone() const override { return new UnreadableVersion(*this); }
};

struct UncheckedReferences : odb::exception {
  const char* what() const noexcept override { return "the checks of references cannot be switched on again"; }
  odb::exception* clone() const override { return new UncheckedReferences(*this); }
};

void Create(OpenDatabase& database, odb::connection& connection, const std::string& schema) {
  // Kept: the grammar of the message.
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel,
              "Database schema does not exists. Create database schema: %s", schema.c_str());
  odb::transaction transaction(connection.begin());
  odb::schema_catalog::create_schema(database.mapper(), schema, false);
  transaction.commit();
}

void Migrate(OpenDatabase& database, odb::connection& connection, const std::string& schema, int version) {
  const auto current = odb::schema_catalog::current_version(database.mapper(), schema);
  const int newest = static_cast<int>(current);
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "The embedded schema version is: %d", newest);
  if (version >= newest) return;
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "Migrate the schema from version %d to %d", version,
              newest);
  odb::transaction transaction(connection.begin());
  odb::schema_catalog::migrate(database.mapper(), current, schema);
  transaction.commit();
  VPTZ_LOG_AS(kInitialize, LogLevel::kNotice, kModel, "The schema has been migrated to version %d", newest);
}

// SQLite ignores the statement where a transaction is open, so what it has done is
// looked at.
void SwitchChecksOn(odb::connection& connection) {
  connection.execute("PRAGMA foreign_keys=ON");
  int on = 0;
  sqlite3* const handle = static_cast<odb::sqlite::connection&>(connection).handle();
  sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_FKEY, -1, &on);
  if (on == 0) throw UncheckedReferences();
}

}  // namespace

bool IsWorthless(int version) { return version <= kLastWorthlessVersion; }

void RequireReadableVersion(OpenDatabase& database, const std::string& schema) {
  const odb::connection_ptr connection(database.mapper().connection());
  if (connection->execute("SELECT 1 FROM sqlite_master WHERE name = 'schema_version'") > 0 &&
      connection->execute("SELECT 1 FROM schema_version WHERE name = '" + schema +
                          "' AND typeof(version) <> 'integer'") > 0) {
    throw UnreadableVersion();
  }
}

void UpdateSchema(OpenDatabase& database, const std::string& schema, int version) {
  const odb::connection_ptr connection(database.mapper().connection());
  connection->execute("PRAGMA foreign_keys=OFF");
  if (version == 0) {
    Create(database, *connection, schema);
  } else {
    Migrate(database, *connection, schema, version);
  }
  SwitchChecksOn(*connection);
}

}  // namespace vptz
