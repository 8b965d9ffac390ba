#include "model/schema_statements.h"

#include <vptz/model/device.h>
#include <vptz/model/event.h>
#include <vptz/model/movement.h>
#include <vptz/model/protocol.h>

#include <filesystem>
#include <fstream>

#include "model/model_test.h"
#include "support/process.h"
#include "support/temp_dir.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using vptz_test::CreatedSchema;
using vptz_test::ModelTest;
using vptz_test::OpenModelTest;
using vptz_test::RawDatabase;

using SchemaTest = OpenModelTest;

TEST_F(SchemaTest, AFreshDatabaseHoldsExactlyTheseTablesAndIndexesInThisOrder) {
  EXPECT_THAT(raw.Schema(), ElementsAreArray(CreatedSchema()));
}

TEST_F(SchemaTest, AFreshDatabaseIsOfTheCurrentVersion) {
  EXPECT_THAT(raw.Rows("SELECT * FROM schema_version"), ElementsAre("'vptz'|10|0"));
  EXPECT_EQ(model().SchemaVersion("vptz"), 10);
}

TEST_F(SchemaTest, ThePictureInTheDocumentationShowsThisSchema) {
  const vptz_test::RunResult result = vptz_test::Run({VPTZ_DRAW_SCHEMA, "--check", path});
  EXPECT_EQ(result.exit_code, 0) << result.output << result.errors;
}

TEST_F(SchemaTest, ThePictureInTheDocumentationShowsNoOtherSchema) {
  raw.Execute("ALTER TABLE event ADD COLUMN another INTEGER");
  EXPECT_EQ(vptz_test::Run({VPTZ_DRAW_SCHEMA, "--check", path}).exit_code, 1);
}

// A copy of the script and its page, so that what it writes harms nothing.
TEST_F(SchemaTest, ADatabaseWithoutTablesDoesNotEmptyThePicture) {
  const vptz_test::TempDir folder;
  const std::string copy = folder.path() + "/scripts/draw-schema";
  const std::string empty = folder.path() + "/empty.db";
  std::filesystem::create_directory(folder.path() + "/scripts");
  std::filesystem::create_directory(folder.path() + "/docs");
  std::filesystem::copy_file(VPTZ_DRAW_SCHEMA, copy);
  std::ofstream(folder.path() + "/docs/database.md") << "# The database\n\n```mermaid\n```\n";
  std::ofstream(empty).flush();
  EXPECT_EQ(vptz_test::Run({copy, "--update", path}).exit_code, 0);
  const vptz_test::RunResult result = vptz_test::Run({copy, "--update", empty});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.errors, testing::HasSubstr("has no tables to draw"));
  EXPECT_EQ(vptz_test::Run({copy, "--check", path}).exit_code, 0);
}

TEST_F(SchemaTest, AnotherSchemaHasNoVersion) { EXPECT_EQ(model().SchemaVersion("another"), 0); }

TEST_F(SchemaTest, AFreshDatabaseIsEmpty) {
  for (const char* table : {"device_type", "protocol", "device", "media", "media_parameter", "movement",
                            "movement_parameter", "ptz", "preset", "event", "event_information", "setting"}) {
    EXPECT_EQ(raw.Value(std::string("SELECT count(*) FROM ") + table), "0") << table;
  }
}

TEST_F(SchemaTest, TwoProtocolsOfOneNameAreRefused) {
  Protocol first("ONVIF");
  Protocol second("ONVIF");
  EXPECT_EQ(Protocol::Add(&first), 1);
  EXPECT_EQ(Protocol::Add(&second), -1);
  EXPECT_THAT(Lines(), ElementsAre(testing::StartsWith("0 VptzModel::Add: Exception occurs! (")));
  EXPECT_EQ(raw.Value("SELECT count(*) FROM protocol"), "1");
}

TEST_F(SchemaTest, TwoEventsOfOneNameAreRefused) {
  Event first("lost", "one");
  Event second("lost", "two");
  EXPECT_EQ(Event::Add(&first), 1);
  EXPECT_EQ(Event::Add(&second), -1);
  EXPECT_EQ(raw.Value("SELECT message FROM event"), "'one'");
}

TEST_F(SchemaTest, TwoDevicesMayShareAHardwareAddress) {
  Device first("", "", nullptr, nullptr, "", false, "mac", "", false, false, false, false);
  Device second("", "", nullptr, nullptr, "", false, "mac", "", false, false, false, false);
  EXPECT_EQ(Device::Add(&first), 1);
  EXPECT_EQ(Device::Add(&second), 2);
}

TEST_F(SchemaTest, AnIdIsNeverUsedTwice) {
  Event event("first", "");
  EXPECT_EQ(Event::Add(&event), 1);
  EXPECT_EQ(Event::Remove(1), 0);
  Event again("second", "");
  EXPECT_EQ(Event::Add(&again), 2);
}

// The rows of an old file, at the current version.
class CascadeTest : public ModelTest {
 protected:
  CascadeTest() {
    MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
    EXPECT_EQ(Initialize(), 0);
  }

  int Count(const std::string& table) {
    return std::stoi(RawDatabase(path).Value("SELECT count(*) FROM " + table));
  }
};

TEST_F(CascadeTest, DeletingADeviceDeletesWhatBelongsToIt) {
  EXPECT_EQ(Device::Remove(3), 0);
  EXPECT_EQ(Count("device"), 1);
  for (const char* table : {"media", "media_parameter", "ptz", "preset"}) {
    EXPECT_EQ(Count(table), 0) << table;
  }
  EXPECT_EQ(Count("event_information"), 1);  // the one that refers to nothing
  EXPECT_EQ(Count("movement"), 3);
}

TEST_F(CascadeTest, DeletingATypeOrProtocolDeletesItsDevices) {
  EXPECT_EQ(DeviceType::Remove(1), 0);
  EXPECT_EQ(Count("device"), 1);
  EXPECT_EQ(Protocol::Remove(2), 0);
  EXPECT_EQ(Count("device"), 0);
}

class AxisCascadeTest : public CascadeTest, public testing::WithParamInterface<unsigned int> {};

TEST_P(AxisCascadeTest, DeletingAMovementDeletesTheNodesThatReferToIt) {
  EXPECT_EQ(Movement::Remove(GetParam()), 0);
  EXPECT_EQ(Count("ptz"), 0);
  EXPECT_EQ(Count("preset"), 0);
}

INSTANTIATE_TEST_SUITE_P(PanTiltZoom, AxisCascadeTest, testing::Values(1u, 2u, 3u));

TEST_F(CascadeTest, AReferenceIsCheckedWhenTheTransactionEnds) {
  RawDatabase raw(path);
  raw.Execute("BEGIN; INSERT INTO media VALUES (50, 77, '', '', '', 0, '')");
  raw.Execute(
      "INSERT INTO device SELECT 77, device_type, service_uri, address, http_uri, mac, uuid, "
      "authorization, authorized, is_alive, protocol, host_name, manufacture, model_name, "
      "firmware_version, deletable, reserved, 0, 0 FROM device WHERE id = 3");
  EXPECT_NO_THROW(raw.Execute("COMMIT"));
  raw.Execute("BEGIN; INSERT INTO media VALUES (51, 78, '', '', '', 0, '')");
  EXPECT_THROW(raw.Execute("COMMIT"), std::runtime_error);
}

}  // namespace
