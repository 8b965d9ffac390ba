#include <limits>

#include <vptz/vptz_data.h>

#include "cli_test.h"
#include "fake_service.h"

namespace {

using testing::HasSubstr;
using vptz_test::Answering;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::RunResult;

TEST_F(CliTest, PositionShowsATableOfTheAxes) {
  const RunResult result = Ctl("position 1");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.output,
            "position: device 1, token ptz0\n"
            "  track mode  0\n"
            "         position        speed    position range      speed range\n"
            "  pan    0.00 deg   0.00 deg/s   -170 to 170 deg   0 to 100 deg/s\n"
            "  tilt   0.00 deg   0.00 deg/s     -30 to 90 deg    0 to 80 deg/s\n"
            "  zoom     1.00 x     0.00 x/s         1 to 20 x       0 to 8 x/s\n");
}

TEST_F(CliTest, PositionInJson) {
  const Json axis = {{"position", 1.0},
                     {"speed", 0.0},
                     {"position_range", {{"min", 1.0}, {"max", 20.0}}},
                     {"speed_range", {{"min", 0.0}, {"max", 8.0}}}};
  const Json object = CtlJson("position 2");
  EXPECT_EQ(object["zoom"], axis);
  EXPECT_EQ(object["device"], 2);
  EXPECT_EQ(object["token"], "ptz0");
  EXPECT_EQ(object["track_mode"], 0);
  EXPECT_EQ(object.size(), 8u) << object;
}

TEST_F(CliTest, MediaShowsTheValuesWithTheirUnits) {
  const RunResult result = Ctl("media 1 --token main");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.output, HasSubstr("media: device 1, token main\n"));
  EXPECT_THAT(result.output, testing::ContainsRegex("width +1920 px\n"));
  EXPECT_THAT(result.output, testing::ContainsRegex("brightness +50\n"));
}

TEST_F(CliTest, MediaInJsonHoldsNumbersOnly) {
  const Json object = CtlJson("media 1");
  for (const char* name : {"width", "height", "frame_rate", "bit_rate", "brightness", "contrast", "sharpness",
                           "auto_focus", "backlight_mode"}) {
    EXPECT_TRUE(object[name].is_number()) << name;
  }
  EXPECT_EQ(object.size(), 13u) << object;
}

TEST_F(CliTest, EachTokenNamesAProfileOfItsOwn) {
  EXPECT_LT(CtlJson("media 1 --token sub")["width"], CtlJson("media 1 --token main")["width"]);
}

TEST_F(CliTest, UnknownDevicesAndTokensAreRefused) {
  for (const char* line : {"position 3", "position 1 --token main", "media 3", "media 1 --token ptz0"}) {
    SCOPED_TRACE(line);
    const RunResult result = Ctl(std::string(line) + " --json");
    ExpectFailure(result, 1, "unknown_id");
    EXPECT_FALSE(Json::parse(result.output).contains("pan"));
    EXPECT_FALSE(Json::parse(result.output).contains("width"));
  }
}

TEST_F(BusTest, ValuesThatTheServiceDoesNotKnowAreNull) {
  tutorial::VptzResponse response;
  tutorial::PtzParams* pan = response.mutable_ptz_info()->mutable_pan();
  pan->set_position(kVptzNotCommanded);
  pan->mutable_speed_range()->set_min(kVptzNotCommanded);
  response.mutable_media_info()->mutable_video_encoder()->set_width(kVptzNotCommanded);
  const FakeService service(broker.address(), Answering(response));
  EXPECT_EQ(CtlJson("position 1")["pan"]["position"], Json());
  EXPECT_EQ(CtlJson("position 1")["pan"]["speed_range"], Json());
  EXPECT_EQ(CtlJson("media 1")["width"], Json());
  EXPECT_THAT(Ctl("media 1").output, testing::ContainsRegex("width +unknown\n"));
}

TEST_F(BusTest, NumbersThatJsonCannotHoldAreNull) {
  tutorial::VptzResponse response;
  response.mutable_ptz_info()->mutable_pan()->set_position(std::numeric_limits<double>::quiet_NaN());
  response.mutable_ptz_info()->mutable_tilt()->set_position(std::numeric_limits<double>::infinity());
  const FakeService service(broker.address(), Answering(response));
  const Json object = CtlJson("position 1");
  EXPECT_EQ(object["pan"]["position"], Json());
  EXPECT_EQ(object["tilt"]["position"], Json());
}

}  // namespace
