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
  const RunResult result = Ctl("ptz position 1");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.output,
            "ptz position: camera 1\n"
            "  track mode  0\n"
            "         position        speed\n"
            "  pan    0.00 deg   0.00 deg/s\n"
            "  tilt   0.00 deg   0.00 deg/s\n"
            "  zoom     1.00 x     0.00 x/s\n");
}

TEST_F(CliTest, PositionInJson) {
  const Json axis = {{"position", 1.0}, {"speed", 0.0}};
  const Json object = CtlJson("ptz position 2");
  EXPECT_EQ(object["zoom"], axis);
  EXPECT_EQ(object["camera"], 2);
  EXPECT_EQ(object["profile"], 1);
  EXPECT_EQ(object["track_mode"], 0);
  EXPECT_EQ(object.size(), 8u) << object;
}

TEST_F(CliTest, APtzProfileShowsWhatItsAxesCanDo) {
  const Json object = CtlJson("profile ptz 1");
  EXPECT_EQ(object["token"], "ptz0");
  EXPECT_EQ(object["pan"]["moves_to"], true);
  EXPECT_EQ(object["pan"]["position_range"], Json({{"min", -170.0}, {"max", 170.0}}));
  EXPECT_EQ(object["zoom"]["speed_range"]["max"], 8.0);
  EXPECT_THAT(Ctl("profile ptz 1").output, HasSubstr("-30 to 90 deg"));
}

TEST_F(CliTest, MediaShowsTheVideoWithItsUnits) {
  const RunResult result = Ctl("profile media 1");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.output, HasSubstr("profile media: camera 1\n"));
  EXPECT_THAT(result.output, testing::ContainsRegex("width +1920 px\n"));
}

TEST_F(CliTest, TheImageIsShownWithItsRanges) {
  const Json object = CtlJson("image show 1");
  EXPECT_EQ(object["brightness"], Json({{"value", 50.0}, {"range", {{"min", 0.0}, {"max", 100.0}}}}));
  EXPECT_THAT(Ctl("image show 1").output, testing::ContainsRegex("brightness +50.00 +0 to 100\n"));
}

TEST_F(CliTest, EachProfileHasItsNumber) {
  EXPECT_EQ(CtlJson("profile media 1 --profile 2")["token"], "sub");
  EXPECT_LT(CtlJson("profile media 1 --profile 2")["width"], CtlJson("profile media 1")["width"]);
}

TEST_F(CliTest, UnknownCamerasAndProfilesAreNotAskedFor) {
  ExpectFailure(Ctl("ptz position 3 --json"), 7, "unknown_camera");
  ExpectFailure(Ctl("profile media 1 --profile 3 --json"), 7, "unknown_profile");
  ExpectFailure(Ctl("image show 1 --profile 3 --json"), 7, "unknown_profile");
}

TEST_F(BusTest, ValuesThatTheServiceDoesNotKnowAreNull) {
  tutorial::VptzResponse response;
  tutorial::PtzParams* pan = response.mutable_ptz_info()->mutable_pan();
  pan->set_position(kVptzNotCommanded);
  pan->mutable_speed_range()->set_min(kVptzNotCommanded);
  response.mutable_media_info()->mutable_video_encoder()->set_width(kVptzNotCommanded);
  const FakeService service(broker.address(), Answering(response));
  EXPECT_EQ(CtlJson("ptz position 1")["pan"]["position"], Json());
  EXPECT_EQ(CtlJson("profile ptz 1")["pan"]["speed_range"], Json());
  EXPECT_EQ(CtlJson("profile media 1")["width"], Json());
  EXPECT_THAT(Ctl("profile media 1").output, testing::ContainsRegex("width +unknown\n"));
}

TEST_F(BusTest, NumbersThatJsonCannotHoldAreNull) {
  tutorial::VptzResponse response;
  response.mutable_ptz_info()->mutable_pan()->set_position(std::numeric_limits<double>::quiet_NaN());
  response.mutable_ptz_info()->mutable_tilt()->set_position(std::numeric_limits<double>::infinity());
  const FakeService service(broker.address(), Answering(response));
  const Json object = CtlJson("ptz position 1");
  EXPECT_EQ(object["pan"]["position"], Json());
  EXPECT_EQ(object["tilt"]["position"], Json());
}

}  // namespace
