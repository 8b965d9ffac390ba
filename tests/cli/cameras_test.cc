// How cameras are named, and what the database says about them.
#include <filesystem>

#include "cli_test.h"
#include "fake_service.h"
#include "support/canary.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::RunResult;
using vptz_test::RunTool;

TEST_F(BusTest, ACameraIsNamedByItsIdOrItsName) {
  EXPECT_EQ(CtlJson("device show 2")["id"], 2);
  EXPECT_EQ(CtlJson("device show camera-2")["id"], 2);
  EXPECT_EQ(CtlJson("device show camera-2")["camera"], 2);
}

TEST_F(BusTest, ANameIsComparedByteByByte) {
  for (const char* name : {"Camera-2", "camera", "camera-22", "4294967298", "99999999999999999999"}) {
    const RunResult result = Ctl(std::string("--json device show ") + name);
    ExpectFailure(result, 7, "unknown_camera");
    EXPECT_EQ(Json::parse(result.output)["camera"], name);
  }
}

TEST_F(BusTest, ANameThatSeveralCamerasHaveIsRefusedWithTheirIds) {
  Sql("UPDATE device SET host_name = 'stage'");
  const RunResult result = Ctl("--json ptz stop stage");
  ExpectFailure(result, 7, "ambiguous_camera");
  EXPECT_THAT(result.errors, HasSubstr("several cameras are named \"stage\": 1, 2"));
}

TEST_F(BusTest, ANameOfDigitsIsAnId) {
  Sql("UPDATE device SET host_name = '2' WHERE id = 1");
  EXPECT_EQ(CtlJson("device show 2")["id"], 2);
}

TEST_F(BusTest, CamerasAreListedWithoutAService) {
  const Json cameras = CtlJson("device list")["cameras"];
  ASSERT_EQ(cameras.size(), 2u);
  EXPECT_EQ(cameras[1]["name"], "camera-2");
  EXPECT_EQ(cameras[1]["protocol"], "ONVIF");
  const RunResult words = Ctl("device list");
  EXPECT_THAT(words.output, HasSubstr("\n  id   name       protocol"));
  EXPECT_THAT(words.output, HasSubstr("\n   2   camera-2   ONVIF"));
}

TEST_F(BusTest, CamerasAreListedByProtocol) {
  EXPECT_EQ(CtlJson("device list --protocol ONVIF")["cameras"].size(), 2u);
  EXPECT_EQ(CtlJson("device list --protocol onvif")["cameras"].size(), 2u);
  EXPECT_EQ(CtlJson("device list --protocol onvif")["protocol"], "ONVIF");
  EXPECT_EQ(Ctl("device list --protocol NDI").output, "device list: protocol NDI\n  no cameras\n");
}

TEST_F(BusTest, AProtocolThatDoesNotExistIsNoEmptyList) {
  const RunResult result = Ctl("--json device list --protocol carrier_pigeon");
  ExpectFailure(result, 7, "unknown_protocol");
  EXPECT_THAT(result.errors, HasSubstr("no protocol \"carrier_pigeon\"; there are ONVIF, RS232, QX310, NDI, "
                                       "VISCA_OVER_IP, NDIHX\n"));
}

TEST_F(BusTest, AProtocolOfTheDatabaseIsAProtocol) {
  Sql("INSERT INTO protocol (name, version, reserved) VALUES ('PIGEON', '', '')");
  EXPECT_EQ(CtlJson("device list --protocol Pigeon")["cameras"], Json::array());
}

TEST_F(BusTest, ACameraIsShownWithItsProfiles) {
  const Json object = CtlJson("device show 1");
  EXPECT_EQ(object["address"], "192.0.2.1");
  EXPECT_EQ(object["ptz_profile_count"], 1);
  EXPECT_EQ(object["ptz_profiles"][0]["token"], "ptz0");
  EXPECT_EQ(object["media_profiles"].size(), 2u);
  EXPECT_THAT(Ctl("device show 1").output, HasSubstr("rtsp://192.0.2.1/sub"));
}

TEST_F(BusTest, StoredCredentialsAreNeverShown) {
  Sql("UPDATE device SET authorization = '{\"account\":\"admin\",\"credentials\":\"" VPTZ_TEST_CANARY "\"}'");
  for (const char* line : {"device show 1", "device show 1 --json", "device list", "device list --json"}) {
    const RunResult result = Ctl(line);
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.output + result.errors, Not(HasSubstr(VPTZ_TEST_CANARY))) << line;
  }
}

TEST_F(BusTest, NamesCannotControlTheTerminal) {
  Sql("UPDATE device SET host_name = 'a' || char(27) || '[2J'");
  EXPECT_THAT(Ctl("device list").output, HasSubstr("a\\x1b[2J"));
}

TEST_F(BusTest, PresetsAreListedWithTheirPositions) {
  const Json object = CtlJson("preset list 1");
  EXPECT_EQ(object["count"], 3);
  EXPECT_EQ(object["presets"][1], Json({{"id", 2},
                                        {"token", "preset2"},
                                        {"name", "Lectern"},
                                        {"pan", -35.0},
                                        {"tilt", 5.0},
                                        {"zoom", 6.0}}));
  EXPECT_THAT(Ctl("preset list 1").output, HasSubstr("preset2   Lectern"));
}

TEST_F(BusTest, AnUnknownPresetIdIsNotSent) {
  const FakeService service(broker.address(), vptz_test::AnsweringStatus(0));
  for (const char* line : {"preset goto 1 --id 9", "preset set 1 --id 9", "preset remove 1 --id 9"}) {
    ExpectFailure(Ctl(std::string("--json ") + line), 7, "unknown_preset");
  }
}

TEST_F(CliTest, APresetIsNamedByItsTokenOrByANameThatOnlyOneHas) {
  EXPECT_EQ(CtlJson("preset goto 1 Lectern --wait")["token"], "preset2");
  EXPECT_EQ(CtlJson("ptz position 1")["pan"]["position"], -35.0);
  EXPECT_EQ(CtlJson("preset remove 1 Audience")["token"], "preset3");
  EXPECT_EQ(CtlJson("preset list 1")["count"], 2);
}

TEST_F(CliTest, ATokenComesBeforeAName) {
  EXPECT_EQ(CtlJson("preset set 1 Lectern --name Other")["token"], "Lectern");
  EXPECT_EQ(CtlJson("preset goto 1 Lectern")["token"], "Lectern");
}

TEST_F(CliTest, ATokenToStoreUnderIsNeverAName) {
  CtlJson("preset set 1 Stage");
  const Json presets = CtlJson("preset list 1")["presets"];
  ASSERT_EQ(presets.size(), 4u);
  EXPECT_EQ(presets[0]["token"], "preset1");
  EXPECT_EQ(presets[3]["token"], "Stage");
}

TEST_F(CliTest, APresetWithoutATokenGetsAFreeOne) {
  CtlJson("preset remove 1 preset2");
  const Json first = CtlJson("preset set 1 --name Organ");
  EXPECT_EQ(first["token"], "preset2");
  EXPECT_EQ(first["number"], 2);
  EXPECT_EQ(first["name"], "Organ");
  const RunResult second = Ctl("preset set 1");
  EXPECT_EQ(second.output, "preset set: camera 1, token preset4, name preset4\n  number  4\n");
  EXPECT_EQ(CtlJson("preset list 1")["presets"][3]["name"], "preset4");
}

TEST_F(CliTest, ThePresetsNumberIsAnswered) {
  EXPECT_EQ(CtlJson("preset set 1 organ")["number"], 4);
  EXPECT_EQ(CtlJson("preset set 1 --id 2")["number"], 2);
  EXPECT_EQ(CtlJson("preset set 1 --id 2")["token"], Json());
}

TEST(NoDatabaseTest, IsToldInWords) {
  const vptz_test::TempDir folder;
  const RunResult result = RunTool({"--json", "device", "list"}, {"VPTZ_TEST_FOLDER=" + folder.path()});
  ExpectFailure(result, 7, "no_database");
  EXPECT_THAT(result.errors, HasSubstr("the library has no database"));
  EXPECT_THAT(result.errors, HasSubstr("configuration file " + folder.path() + "/vptz.conf is missing"));
  EXPECT_THAT(result.errors, HasSubstr("database " + folder.path() + "/vptz.db is missing"));
}

TEST_F(BusTest, WhichFileIsMissingIsTold) {
  const std::string config = broker.folder() + "/vptz.conf";
  ASSERT_TRUE(std::filesystem::remove(config));
  EXPECT_THAT(Ctl("device list").errors, HasSubstr("configuration file " + config +
                                                   " is missing, its database " + database() + " is there"));
  Write("vptz.conf", "");
  ASSERT_TRUE(std::filesystem::remove(database()));
  EXPECT_THAT(Ctl("device list").errors, HasSubstr("configuration file " + config + " is there, its database " +
                                                   database() + " is missing"));
}

}  // namespace
