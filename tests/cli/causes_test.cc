// What a refusal says where command line and database show its cause.
#include "cli_test.h"
#include "fake_service.h"
#include "support/canary.h"

namespace {

using testing::HasSubstr;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::RunResult;
using vptz_test::Words;

struct CauseCase {
  const char* line;
  int status;
  const char* cause;
};

const CauseCase kCauses[] = {
    {"ptz move 1 --pan 999", -1006, "pan goes from -170 to 170 deg"},
    {"ptz move 1 --pan 5 --tilt -31 --zoom 21", -1006,
     "tilt goes from -30 to 90 deg; zoom goes from 1 to 20 x"},
    {"ptz move 1 --pan 5 --pan-speed 101", -1006, "the speed of pan is above 0 and up to 100 deg/s"},
    {"ptz move 1 --zoom 2 --zoom-speed 0", -1006, "the speed of zoom is above 0 and up to 8 x/s"},
    {"ptz home 1 --tilt-speed 81", -1006, "the speed of tilt is above 0 and up to 80 deg/s"},
    {"preset goto 1 preset1 --pan-speed 500", -1006, "the speed of pan is above 0 and up to 100 deg/s"},
    {"preset goto 1 Stge", -1004,
     "no preset of camera 1 has the token or the name \"Stge\", perhaps Stage is meant; there are preset1 "
     "(Stage), "
     "preset2 (Lectern), preset3 (Audience)"},
    {"preset remove 1 preset77", -1004, "has the token or the name \"preset77\""},
    {"image set 1 --brightness 101", -1006, "brightness goes from 0 to 100"},
    {"image set 1 --sharpness -1 --all", -1006, "sharpness goes from 0 to 100"},
    {"image set 1 --backlight 2", -1006, "--backlight is 0 (off) or 1 (on)"},
    {"image set 1 --auto-focus 7", -1006, "--auto-focus is 0 (manual) or 1 (auto)"},
    {"image set 1 --auto-focus-mode FACE", -1002,
     "\"FACE\" is no mode of automatic focus; there are AUTO, MANUAL, DEFAULT"},
    {"device protocol 1 PIGEON", -1004,
     "there is no protocol \"PIGEON\"; there are ONVIF, RS232, QX310, NDI, VISCA_OVER_IP, NDIHX"},
    {"device protocol 1 RS232", -1002, "camera 1 is in the network and stays there; RS232 is not"},
    {"device add PIGEON 192.0.2.9", -1004, "there is no protocol \"PIGEON\""},
    {"device add ONVIF 192.0.2.2", -1008, "camera 2 (camera-2) is there already"},
    {"device add-onvif http://192.0.2.2:80/onvif", -1008, "camera 2 (camera-2) is there already"},
    {"device add RS232 ttyS0", -1002, "the address of a serial camera is rs232://PORT/LINE/BAUD_RATE/UNIT"},
    {"device slave 1 --slave 1", -1002, "a camera cannot follow itself"},
    {"device slave 1 --address 192.0.2.99", -1004, "no camera is known at 192.0.2.99"},
    {"serial remove ttyUSB7", -1004, "no port /dev/ttyUSB7 has been added"},
};

class CauseTest : public CliTest, public testing::WithParamInterface<CauseCase> {};

INSTANTIATE_TEST_SUITE_P(Causes, CauseTest, testing::ValuesIn(kCauses),
                         [](const auto& info) { return std::to_string(info.index); });

TEST_P(CauseTest, IsNamed) {
  const RunResult result = Ctl(std::string("--json ") + GetParam().line);
  EXPECT_EQ(result.exit_code, 1) << result.output;
  const Json object = Json::parse(result.output);
  EXPECT_EQ(object["status"], GetParam().status);
  EXPECT_THAT(object["error"]["message"],
              testing::AllOf(testing::StartsWith("refused by the service: "), HasSubstr(GetParam().cause)));
  EXPECT_THAT(result.errors, HasSubstr(GetParam().cause));
}

class RefusalTest : public CliTest {
 protected:
  std::string Message(const std::string& line) {
    const RunResult result = Ctl("--json " + line);
    EXPECT_NE(result.exit_code, 0) << line;
    return Json::parse(result.output)["error"]["message"];
  }

  std::string Password(const std::string& password) {
    return " --password-file " + Write("password", password + "\n");
  }
};

TEST_F(RefusalTest, AWrongPasswordIsToldAsOne) {
  const std::string wrong = Password(VPTZ_TEST_CANARY);
  EXPECT_EQ(Message("device login 1 admin" + wrong),
            "refused by the service: wrong user or password: camera 1 does not take them");
  EXPECT_EQ(Message("device add NDI 192.0.2.202 --user admin" + wrong),
            "refused by the service: wrong user or password: the camera at 192.0.2.202 does not take them");
  EXPECT_EQ(Message("device slave 1 --address 192.0.2.2 --account admin" + wrong),
            "refused by the service: wrong user or password: the slave at 192.0.2.2 does not take them");
}

TEST_F(RefusalTest, ACameraThatIsNotLoggedInToNamesTheCommandForIt) {
  ASSERT_EQ(Ctl("device logout 2").exit_code, 0);
  EXPECT_EQ(Message("ptz move camera-2 --pan 1"),
            "refused by the service: camera 2 wants a login first: 'vptzctl device login 2 USER'");
}

TEST_F(RefusalTest, ASlaveWithoutStoredCredentialsIsToldBeforeAnythingIsSent) {
  ASSERT_EQ(Ctl("device logout 2").exit_code, 0);
  const RunResult result = Ctl("--json device slave 1 --slave camera-2");
  ExpectFailure(result, 7, "not_sent");
  EXPECT_EQ(Json::parse(result.output)["status"], -1);
  EXPECT_EQ(Json::parse(result.output)["slave"], 2);
  EXPECT_THAT(result.errors,
              HasSubstr("no user and password for camera 2; 'vptzctl device login 2 USER' stores them"));
}

TEST_F(RefusalTest, PowerAndPortsAreNamed) {
  ASSERT_EQ(Ctl("serial add ttyUSB0").exit_code, 0);
  EXPECT_EQ(Message("serial add /dev/ttyUSB0"),
            "refused by the service: the port /dev/ttyUSB0 has been added already");
  ASSERT_EQ(Ctl("power off").exit_code, 0);
  EXPECT_EQ(Message("ptz home 1"),
            "refused by the service: camera 1 has no power; 'vptzctl power on' switches it on");
}

TEST_F(RefusalTest, AMissingAxisIsNamed) {
  service.reset();
  StartService({"--fleet", Write("fleet.json", R"({"cameras": [{"address": "192.0.2.50", "zoom": null}]})")});
  const Json cameras = CtlJson("device list")["cameras"];
  const std::string id = std::to_string(cameras.back()["id"].get<int>());
  EXPECT_EQ(Message("ptz move " + id + " --pan 1 --zoom 2"),
            "refused by the service: camera " + id + " has no zoom");
  EXPECT_EQ(Message("ptz drive " + id + " --zoom 1"), "refused by the service: camera " + id + " has no zoom");
}

TEST_F(RefusalTest, ATextThatIsTooLongIsNamed) {
  EXPECT_EQ(Message("preset set 1 " + std::string(256, 'x')),
            "refused by the service: token is longer than 255 bytes");
}

// The row is there, the camera's own memory is not.
TEST_F(RefusalTest, APresetThatTheCameraHasLostIsTold) {
  Sql("INSERT INTO preset (preset_id, name, token, pan, tilt, zoom, ptz, reserved) SELECT 9, 'Organ', 'organ', "
      "0, 0, 1, "
      "ptz, '' FROM preset WHERE id = 1");
  EXPECT_EQ(
      Message("preset goto 1 organ"),
      "refused by the service: camera 1 has lost the preset \"organ\", which the database still has; 'vptzctl "
      "preset refresh 1' brings both in step");
}

TEST_F(BusTest, AnotherServicesRefusalIsNotExplainedAway) {
  const FakeService service(broker.address(), vptz_test::AnsweringStatus(-1006));
  const RunResult result = Ctl("--json ptz move 1 --pan 5");
  ExpectFailure(result, 1, "out_of_range");
  EXPECT_EQ(Json::parse(result.output)["error"]["message"], "refused by the service: a value is out of range");
}

TEST_F(BusTest, AnAmbiguousPresetNameIsRefusedWithTheTokens) {
  const FakeService service(broker.address(), vptz_test::AnsweringStatus(0));
  Sql("UPDATE preset SET name = 'Stage'");
  const RunResult result = Ctl("--json preset goto 1 Stage");
  ExpectFailure(result, 7, "ambiguous_preset");
  EXPECT_THAT(result.errors, HasSubstr("preset1 (Stage), preset2 (Stage), preset3 (Stage); give a token"));
}

}  // namespace
