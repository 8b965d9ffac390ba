// --wait of what moves to a position.
#include <signal.h>

#include "cli_test.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::Json;
using vptz_test::Process;

TEST_F(CliTest, AMoveIsWaitedForUntilTheCameraIsThere) {
  const Json object = CtlJson("ptz move 1 --pan 10 --pan-speed 20 --wait");
  EXPECT_EQ(object["still"], true);
  EXPECT_GE(object["elapsed"], 0.5);
  const Json rest = CtlJson("ptz position 1");
  EXPECT_EQ(rest["pan"]["position"], 10.0);
  EXPECT_EQ(rest["pan"]["speed"], 0.0);
}

TEST_F(CliTest, APresetAndHomeAreWaitedForToo) {
  EXPECT_EQ(CtlJson("preset goto 1 Lectern --wait")["still"], true);
  EXPECT_EQ(CtlJson("ptz position 1")["pan"]["position"], -35.0);
  EXPECT_EQ(CtlJson("ptz home 1 --wait")["still"], true);
  EXPECT_EQ(CtlJson("ptz position 1")["pan"]["position"], 0.0);
}

TEST_F(CliTest, WithoutItNothingIsSaidAboutTheEnd) {
  EXPECT_FALSE(CtlJson("ptz move 1 --pan 10").contains("still"));
}

TEST_F(CliTest, ARefusedMoveIsNotWaitedFor) {
  ExpectFailure(Ctl("--json ptz move 1 --pan 999 --wait"), 1, "out_of_range");
}

TEST_F(CliTest, AMotionThatLastsLongerThanTheLimitGoesOn) {
  const vptz_test::RunResult result = Ctl("--json ptz move 1 --pan 100 --pan-speed 1 --wait --limit 1");
  ExpectFailure(result, 4, "unfinished");
  EXPECT_THAT(result.errors, HasSubstr("still moves after 1 s; it goes on"));
  EXPECT_TRUE(ReachesSpeeds("1", 1, 0, 0));
}

TEST_F(CliTest, AnInterruptEndsTheWaitingAndSaysThatTheCameraGoesOn) {
  Process move(ToolOnBus("--json ptz move 1 --pan 100 --pan-speed 1 --wait"), environment());
  ASSERT_TRUE(ReachesSpeeds("1", 1, 0, 0));
  move.Signal(SIGINT);
  EXPECT_EQ(move.Wait(), 0);
  EXPECT_EQ(Json::parse(move.Output())["still"], false);
  EXPECT_THAT(move.Errors(), HasSubstr("vptzctl: the waiting has ended; the camera goes on\n"));
  EXPECT_TRUE(ReachesSpeeds("1", 1, 0, 0));
}

}  // namespace
