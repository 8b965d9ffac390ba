#include <vptz/model/device.h>

#include <fstream>

#include "model/model_test.h"
#include "model/schema_statements.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::StartsWith;
using vptz_test::ById;
using vptz_test::MigratedSchema;
using vptz_test::ModelTest;
using vptz_test::OldRows;
using vptz_test::OldSchema;
using vptz_test::RawDatabase;

constexpr char kVersionTable[] =
    "CREATE TABLE schema_version (name TEXT NOT NULL PRIMARY KEY, version INTEGER NOT NULL, "
    "migration INTEGER NOT NULL);";

std::string VersionRow(int version) {
  return "INSERT INTO schema_version VALUES ('vptz', " + std::to_string(version) + ", 0);";
}

class OldFileTest : public ModelTest, public testing::WithParamInterface<int> {};

// ---- files that are brought to the current version --------------------------

TEST_P(OldFileTest, IsMigratedWithItsRowsIntact) {
  MakeFile(OldSchema(GetParam()) + OldRows());
  const std::vector<std::string> before = OldRowsOf(path);
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(OldRowsOf(path), before);
  RawDatabase raw(path);
  EXPECT_THAT(raw.Rows("SELECT * FROM schema_version"), ElementsAre("'vptz'|10|0"));
  EXPECT_THAT(raw.Schema(), ElementsAreArray(MigratedSchema()));
}

TEST_P(OldFileTest, TellsOfItsMigrationInTheLog) {
  const std::string version = std::to_string(GetParam());
  MakeFile(OldSchema(GetParam()));
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(Lines(), ElementsAre("2 Create database: " + path, "2 Database schema version is: " + version,
                                   "2 The embedded schema version is: 10",
                                   "2 Migrate the schema from version " + version + " to 10",
                                   "2 The schema has been migrated to version 10"));
}

TEST_P(OldFileTest, ReadsTheMissingFlagsOfItsDevicesAsFalseAndKeepsThemNull) {
  MakeFile(OldSchema(GetParam()) + OldRows());
  EXPECT_EQ(Initialize(), 0);
  const auto device = ById<Device>(3);
  ASSERT_NE(device, nullptr);
  EXPECT_FALSE(device->is_setting_applied());
  EXPECT_FALSE(device->tracking());
  EXPECT_EQ(device->host_name(), "hall");
  EXPECT_THAT(RawDatabase(path).Rows("SELECT is_setting_applied, tracking FROM device"),
              ElementsAre("NULL|NULL", "NULL|NULL"));
}

TEST_P(OldFileTest, IsUsedAsACurrentOneTheNextTime) {
  MakeFile(OldSchema(GetParam()) + OldRows());
  EXPECT_EQ(Initialize(), 0);
  const std::vector<std::string> schema = RawDatabase(path).Schema();
  log.lines.clear();
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(Lines(), ElementsAre("2 Create database: " + path, "2 Database schema version is: 10",
                                   "2 The embedded schema version is: 10"));
  EXPECT_EQ(RawDatabase(path).Schema(), schema);
}

INSTANTIATE_TEST_SUITE_P(Version, OldFileTest, testing::Values(6, 7, 8, 9));

using MigrationTest = ModelTest;

TEST_F(MigrationTest, AFlagThatAnOldFileHoldsIsKept) {
  MakeFile(OldSchema(8) + OldRows() + "UPDATE device SET is_setting_applied = 1 WHERE id = 3;");
  EXPECT_EQ(Initialize(), 0);
  const auto device = ById<Device>(3);
  ASSERT_NE(device, nullptr);
  EXPECT_TRUE(device->is_setting_applied());
}

TEST_F(MigrationTest, AMigratedFlagCanBeWritten) {
  MakeFile(OldSchema(6) + OldRows());
  EXPECT_EQ(Initialize(), 0);
  const auto device = ById<Device>(3);
  ASSERT_NE(device, nullptr);
  device->set_tracking(true);
  EXPECT_EQ(Device::Update(*device), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT is_setting_applied, tracking FROM device WHERE id = 3"), "0|1");
}

TEST_F(MigrationTest, ReferencesAreCheckedAgainAfterwards) {
  MakeFile(OldSchema(6) + OldRows());
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(Device::Remove(3), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT count(*) FROM media"), "0");
}

TEST_F(MigrationTest, OtherSchemasInTheFileKeepTheirVersion) {
  MakeFile(OldSchema(9) + "INSERT INTO schema_version VALUES ('another', 3, 1);");
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(RawDatabase(path).Rows("SELECT * FROM schema_version ORDER BY name"),
              ElementsAre("'another'|3|1", "'vptz'|10|0"));
}

TEST_F(MigrationTest, AnotherSchemasUnreadableVersionDoesNotKeepAnOldFile) {
  MakeFile(kVersionTable + VersionRow(2) + "INSERT INTO schema_version VALUES ('another', 'none', 0);");
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(RawDatabase(path).Rows("SELECT * FROM schema_version"), ElementsAre("'vptz'|10|0"));
}

TEST_F(MigrationTest, AFailedOneLeavesTheVersionThatTheFileHas) {
  MakeFile(OldSchema(6) + OldRows() + "CREATE TABLE setting (id INTEGER);");
  EXPECT_EQ(Initialize(), -1);
  EXPECT_TRUE(model().IsConnected());
  EXPECT_EQ(model().SchemaVersion("vptz"), 6);
  EXPECT_EQ(RawDatabase(path).Value("SELECT version, migration FROM schema_version"), "6|0");
}

// ---- files that a step was interrupted in -------------------------------------

// As a program leaves them that commits within a step: the version is the
// step's, its statements have been run, and it has not been told as finished.
constexpr char kInterrupted[] = "UPDATE schema_version SET migration = 1;";

TEST_P(OldFileTest, ThatAStepWasInterruptedInIsMigratedWithItsRowsIntact) {
  MakeFile(OldSchema(GetParam()) + OldRows() + kInterrupted);
  const std::vector<std::string> before = OldRowsOf(path);
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(OldRowsOf(path), before);
  RawDatabase raw(path);
  EXPECT_THAT(raw.Rows("SELECT * FROM schema_version"), ElementsAre("'vptz'|10|0"));
  EXPECT_THAT(raw.Schema(), ElementsAreArray(MigratedSchema()));
}

TEST_P(OldFileTest, ThatAStepWasInterruptedInIsOpenedByConnectAsItIs) {
  MakeFile(OldSchema(GetParam()) + OldRows() + kInterrupted);
  const std::vector<std::string> before = OldRowsOf(path);
  EXPECT_EQ(model().Connect(path), 0);
  EXPECT_EQ(model().SchemaVersion("vptz"), GetParam());
  EXPECT_EQ(OldRowsOf(path), before);
  EXPECT_EQ(RawDatabase(path).Value("SELECT migration FROM schema_version"), "1");
}

TEST_F(MigrationTest, AFileThatTheLastStepWasInterruptedInIsUsedAsItIs) {
  MakeFile(OldSchema(9) + OldRows() + "ALTER TABLE device ADD COLUMN tracking INTEGER NULL;" +
           "UPDATE schema_version SET version = 10;" + kInterrupted);
  const std::vector<std::string> before = OldRowsOf(path);
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(Lines(), ElementsAre("2 Create database: " + path, "2 Database schema version is: 10",
                                   "2 The embedded schema version is: 10"));
  EXPECT_EQ(model().Connect(path), 0);
  EXPECT_EQ(OldRowsOf(path), before);
  EXPECT_EQ(RawDatabase(path).Value("SELECT version, migration FROM schema_version"), "10|1");
  auto device = ById<Device>(3);
  ASSERT_NE(device, nullptr);
  device->set_tracking(true);
  EXPECT_EQ(Device::Update(*device), 0);
}

// ---- versions 4 and 5 -------------------------------------------------------

class VeryOldFileTest : public OldFileTest {};

TEST_P(VeryOldFileTest, WithTablesIsLeftAsItIs) {
  MakeFile(kVersionTable + VersionRow(GetParam()) +
           "CREATE TABLE protocol (id INTEGER, name TEXT); INSERT INTO protocol VALUES (1, 'kept');"
           "CREATE TABLE precious (text TEXT); INSERT INTO precious VALUES ('kept');");
  const std::vector<std::string> schema = RawDatabase(path).Schema();
  EXPECT_EQ(Initialize(), -1);
  EXPECT_TRUE(model().IsConnected());
  EXPECT_THAT(Lines().back(), StartsWith("0 Failed to new a database instance! ("));
  model().Release();
  RawDatabase raw(path);
  EXPECT_EQ(raw.Schema(), schema);
  EXPECT_EQ(raw.Value("SELECT * FROM protocol"), "1|'kept'");
  EXPECT_EQ(raw.Value("SELECT * FROM precious"), "'kept'");
  EXPECT_EQ(raw.Value("SELECT version, migration FROM schema_version"), std::to_string(GetParam()) + "|0");
}

TEST_P(VeryOldFileTest, WithoutTablesIsMigrated) {
  MakeFile(kVersionTable + VersionRow(GetParam()));
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT version, migration FROM schema_version"), "10|0");
}

INSTANTIATE_TEST_SUITE_P(Version, VeryOldFileTest, testing::Values(4, 5));

// ---- versions 0 to 3 --------------------------------------------------------

class WorthlessFileTest : public OldFileTest {};

TEST_P(WorthlessFileTest, IsReplacedByANewOne) {
  MakeFile(kVersionTable + VersionRow(GetParam()) + "CREATE TABLE device (id INTEGER);");
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(Lines(), ElementsAre("2 Create database: " + path,
                                   "2 Database schema version is: " + std::to_string(GetParam()),
                                   "2 Database schema is too old, remove it.",
                                   "2 Database schema does not exists. Create database schema: vptz"));
  EXPECT_THAT(RawDatabase(path).Schema(), ElementsAreArray(vptz_test::CreatedSchema()));
}

INSTANTIATE_TEST_SUITE_P(Version, WorthlessFileTest, testing::Values(0, 1, 2, 3));

TEST_F(MigrationTest, AFileWithoutAVersionIsReplaced) {
  MakeFile("CREATE TABLE something (id INTEGER);");
  EXPECT_EQ(Initialize(), 0);
  EXPECT_THAT(RawDatabase(path).Schema(), ElementsAreArray(vptz_test::CreatedSchema()));
}

TEST_F(MigrationTest, AnEmptyFileIsReplaced) {
  std::ofstream(path).close();
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(model().SchemaVersion("vptz"), 10);
}

// ---- newer files ------------------------------------------------------------

TEST_F(MigrationTest, ANewerFileIsUsedAsItIs) {
  MakeFile(OldSchema(9) + OldRows() + "ALTER TABLE device ADD COLUMN tracking INTEGER NULL;" +
           "CREATE TABLE tomorrow (id INTEGER); UPDATE schema_version SET version = 11;");
  const std::vector<std::string> schema = RawDatabase(path).Schema();
  EXPECT_EQ(Initialize(), 0);
  EXPECT_EQ(RawDatabase(path).Schema(), schema);
  EXPECT_EQ(model().SchemaVersion("vptz"), 11);
  EXPECT_THAT(Lines(), ElementsAre("2 Create database: " + path, "2 Database schema version is: 11",
                                   "2 The embedded schema version is: 10"));
  EXPECT_NE(ById<Device>(3), nullptr);
}

}  // namespace
