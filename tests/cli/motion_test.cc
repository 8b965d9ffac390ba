#include "cli_test.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::Json;
using vptz_test::RunResult;
using vptz_test::WaitUntil;

struct AxesCase {
  const char* name;
  bool pan, tilt, zoom;
};

class AxesTest : public CliTest, public testing::WithParamInterface<AxesCase> {
 protected:
  std::string Options(const char* pan, const char* tilt, const char* zoom) const {
    return std::string(GetParam().pan ? pan : "") + (GetParam().tilt ? tilt : "") +
           (GetParam().zoom ? zoom : "");
  }
};

constexpr AxesCase kAxes[] = {
    {"Pan", true, false, false},       {"Tilt", false, true, false},   {"Zoom", false, false, true},
    {"PanTilt", true, true, false},    {"PanZoom", true, false, true}, {"TiltZoom", false, true, true},
    {"PanTiltZoom", true, true, true},
};

INSTANTIATE_TEST_SUITE_P(Motion, AxesTest, testing::ValuesIn(kAxes),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(AxesTest, MoveToMovesExactlyTheNamedAxes) {
  const Json object = CtlJson("ptz move 1" + Options(" --pan -3", " --tilt 2.5", " --zoom 1.5"));
  EXPECT_EQ(object["pan"], GetParam().pan ? Json(-3.0) : Json());
  EXPECT_EQ(object["tilt"], GetParam().tilt ? Json(2.5) : Json());
  EXPECT_EQ(object["zoom"], GetParam().zoom ? Json(1.5) : Json());
  const Json rest = AtRest();
  EXPECT_EQ(rest["pan"]["position"], GetParam().pan ? -3.0 : 0.0);
  EXPECT_EQ(rest["tilt"]["position"], GetParam().tilt ? 2.5 : 0.0);
  EXPECT_EQ(rest["zoom"]["position"], GetParam().zoom ? 1.5 : 1.0);
}

TEST_P(AxesTest, MoveToTakesTheNamedSpeeds) {
  CtlJson("ptz move 1" +
          Options(" --pan 100 --pan-speed 1", " --tilt 80 --tilt-speed 2", " --zoom 19 --zoom-speed 0.5"));
  EXPECT_TRUE(
      ReachesSpeeds("1", GetParam().pan ? 1.0 : 0.0, GetParam().tilt ? 2.0 : 0.0, GetParam().zoom ? 0.5 : 0.0));
}

TEST_P(AxesTest, MoveAtMovesExactlyTheNamedAxes) {
  CtlJson("ptz drive 1" + Options(" --pan -2", " --tilt 1", " --zoom 0.25"));
  EXPECT_TRUE(ReachesSpeeds("1", GetParam().pan ? 2.0 : 0.0, GetParam().tilt ? 1.0 : 0.0,
                            GetParam().zoom ? 0.25 : 0.0));
}

TEST_P(AxesTest, StopStopsExactlyTheNamedAxes) {
  CtlJson("ptz drive 1 --pan 2 --tilt 1 --zoom 0.25");
  const Json object = CtlJson("ptz stop 1" + Options(" --pan", " --tilt", " --zoom"));
  EXPECT_EQ(object, Json({{"command", "ptz stop"},
                          {"camera", 1},
                          {"pan", GetParam().pan},
                          {"tilt", GetParam().tilt},
                          {"zoom", GetParam().zoom},
                          {"profile", 1},
                          {"status", 0}}));
  EXPECT_TRUE(ReachesSpeeds("1", GetParam().pan ? 0.0 : 2.0, GetParam().tilt ? 0.0 : 1.0,
                            GetParam().zoom ? 0.0 : 0.25));
}

TEST_F(CliTest, StopWithoutAnAxisStopsAll) {
  CtlJson("ptz drive 1 --pan 2 --tilt 1 --zoom 0.25");
  const Json object = CtlJson("ptz stop 1");
  for (const char* axis : {"pan", "tilt", "zoom"}) EXPECT_EQ(object[axis], true) << axis;
  EXPECT_TRUE(ReachesSpeeds("1", 0, 0, 0));
}

TEST_F(CliTest, MoveAtGoesInTheDirectionOfItsSign) {
  CtlJson("ptz drive 1 --pan -50");
  EXPECT_TRUE(WaitUntil([this] { return CtlJson("ptz position 1")["pan"]["position"] < -1.0; }));
}

TEST_F(CliTest, AMoveTellsInWordsWhatItDid) {
  const RunResult result = Ctl("ptz move 2 --pan -30 --zoom 2.5 --pan-speed 20");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.output, "ptz move: camera 2, pan -30 deg, zoom 2.5 x, pan speed 20 deg/s: done\n");
}

TEST_F(CliTest, NegativeNumbersAreValuesInEverySpelling) {
  for (const char* line : {"ptz move 1 --pan -3", "ptz move 1 --pan=-3", "ptz move 1 --pan -3.0",
                           "ptz move 1 --pan -3e0", "ptz move --pan -3 1"}) {
    EXPECT_EQ(CtlJson(line)["pan"], -3.0) << line;
  }
  EXPECT_EQ(CtlJson("ptz move 1 --pan -.5")["pan"], -0.5);
  EXPECT_EQ(CtlJson("ptz move 1 --pan +5")["pan"], 5.0);
}

TEST_F(CliTest, HomeIsStoredAndReached) {
  CtlJson("ptz move 1 --pan 4 --tilt 3 --zoom 2");
  AtRest();
  EXPECT_EQ(CtlJson("ptz home 1 --set")["set"], true);
  CtlJson("ptz move 1 --pan 0 --tilt 0 --zoom 1");
  AtRest();
  EXPECT_EQ(CtlJson("ptz home 1")["set"], false);
  const Json rest = AtRest();
  EXPECT_EQ(rest["pan"]["position"], 4.0);
  EXPECT_EQ(rest["tilt"]["position"], 3.0);
  EXPECT_EQ(rest["zoom"]["position"], 2.0);
}

TEST_F(CliTest, HomeIsReachedWithTheNamedSpeeds) {
  CtlJson("ptz move 1 --pan 40 --tilt 30 --zoom 4");
  AtRest();
  EXPECT_EQ(CtlJson("ptz home 1 --pan-speed 1 --tilt-speed 2 --zoom-speed 0.5")["tilt_speed"], 2.0);
  EXPECT_TRUE(ReachesSpeeds("1", 1.0, 2.0, 0.5));
}

TEST_F(CliTest, TrackSetsTheMode) {
  EXPECT_EQ(
      CtlJson("ptz track 1 4294967295"),
      Json({{"command", "ptz track"}, {"camera", 1}, {"mode", 4294967295U}, {"profile", 1}, {"status", 0}}));
  EXPECT_EQ(CtlJson("ptz position 1")["track_mode"], 4294967295U);
  CtlJson("ptz track 1 0");
  EXPECT_EQ(CtlJson("ptz position 1")["track_mode"], 0);
}

TEST_F(CliTest, CamerasMoveIndependently) {
  CtlJson("ptz drive 2 --pan 5");
  EXPECT_TRUE(ReachesSpeeds("2", 5, 0, 0));
  EXPECT_TRUE(ReachesSpeeds("1", 0, 0, 0));
}

TEST_F(CliTest, AProfileThatTheCameraDoesNotHaveIsNotAskedFor) {
  ExpectFailure(Ctl("ptz move 1 --pan 1 --profile 2 --json"), 7, "unknown_profile");
  ExpectFailure(Ctl("ptz stop 1 --profile 4294967295 --json"), 7, "unknown_profile");
}

TEST_F(CliTest, ARefusalNamesWhatWasAskedAndTheStatus) {
  const RunResult result = Ctl("ptz move 1 --pan 999");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, HasSubstr("vptzctl: ptz move: camera 1, pan 999 deg: refused by the service: "
                                       "pan goes from -170 to 170 deg (out_of_range, -1006)\n"));
}

TEST_F(CliTest, ARefusalInJsonRepeatsTheArguments) {
  const RunResult result = Ctl("--json ptz move 1 --pan 999");
  ExpectFailure(result, 1, "out_of_range");
  const Json object = Json::parse(result.output);
  EXPECT_EQ(object["command"], "ptz move");
  EXPECT_EQ(object["pan"], 999.0);
  EXPECT_EQ(object["tilt"], Json());
  EXPECT_EQ(object["status"], -1006);
}

}  // namespace
