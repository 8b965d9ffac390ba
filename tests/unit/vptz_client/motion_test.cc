#include "vptz_client/command_test.h"

namespace {

using vptz_test::CommandCase;
using vptz_test::CommandTest;
using vptz_test::ConnectedClientTest;

const CommandCase kMotion[] = {
    {"AbsoluteMove", "absolute_move",
     "ptz_command { ptz_id: 3 pan_position: 10 tilt_position: -20.5 zoom_position: 3"
     " pan_speed: 0.5 tilt_speed: 0.25 zoom_speed: 2 }",
     [](VptzClient& client, int timeout) {
       return client.AbsoluteMove(3, 10, -20.5, 3, 0.5, 0.25, 2, timeout);
     }},
    {"AbsolutePanMove", "absolute_move",
     "ptz_command { ptz_id: 3 pan_position: 10 tilt_position: -9999999 zoom_position: -9999999"
     " pan_speed: 0.5 tilt_speed: -9999999 zoom_speed: -9999999 }",
     [](VptzClient& client, int timeout) { return client.AbsolutePanMove(3, 10, 0.5, timeout); }},
    {"AbsoluteTiltMove", "absolute_move",
     "ptz_command { ptz_id: 3 pan_position: -9999999 tilt_position: 10 zoom_position: -9999999"
     " pan_speed: -9999999 tilt_speed: 0.5 zoom_speed: -9999999 }",
     [](VptzClient& client, int timeout) { return client.AbsoluteTiltMove(3, 10, 0.5, timeout); }},
    {"AbsolutePanTiltMove", "absolute_move",
     "ptz_command { ptz_id: 3 pan_position: 1 tilt_position: 2 zoom_position: -9999999"
     " pan_speed: 3 tilt_speed: 4 zoom_speed: -9999999 }",
     [](VptzClient& client, int timeout) { return client.AbsolutePanTiltMove(3, 1, 2, 3, 4, timeout); }},
    {"AbsoluteZoomMove", "absolute_move",
     "ptz_command { ptz_id: 3 pan_position: -9999999 tilt_position: -9999999 zoom_position: 10"
     " pan_speed: -9999999 tilt_speed: -9999999 zoom_speed: 0.5 }",
     [](VptzClient& client, int timeout) { return client.AbsoluteZoomMove(3, 10, 0.5, timeout); }},
    {"ContinuousMove", "continuous_move",
     "ptz_command { ptz_id: 3 pan_velocity: 1 tilt_velocity: -2 zoom_velocity: 0.5 }",
     [](VptzClient& client, int timeout) { return client.ContinuousMove(3, 1, -2, 0.5, timeout); }},
    {"ContinuousPanMove", "continuous_move",
     "ptz_command { ptz_id: 3 pan_velocity: 1 tilt_velocity: -9999999 zoom_velocity: -9999999 }",
     [](VptzClient& client, int timeout) { return client.ContinuousPanMove(3, 1, timeout); }},
    {"ContinuousTiltMove", "continuous_move",
     "ptz_command { ptz_id: 3 pan_velocity: -9999999 tilt_velocity: 1 zoom_velocity: -9999999 }",
     [](VptzClient& client, int timeout) { return client.ContinuousTiltMove(3, 1, timeout); }},
    {"ContinuousPanTiltMove", "continuous_move",
     "ptz_command { ptz_id: 3 pan_velocity: 1 tilt_velocity: 2 zoom_velocity: -9999999 }",
     [](VptzClient& client, int timeout) { return client.ContinuousPanTiltMove(3, 1, 2, timeout); }},
    {"ContinuousZoomMove", "continuous_move",
     "ptz_command { ptz_id: 3 pan_velocity: -9999999 tilt_velocity: -9999999 zoom_velocity: 1 }",
     [](VptzClient& client, int timeout) { return client.ContinuousZoomMove(3, 1, timeout); }},
    {"PtzStop", "ptz_stop", "ptz_command { ptz_id: 3 stop_pan: false stop_tilt: true stop_zoom: false }",
     [](VptzClient& client, int timeout) { return client.PtzStop(3, false, true, false, timeout); }},
    {"PanTiltStop", "ptz_stop", "ptz_command { ptz_id: 3 stop_pan: true stop_tilt: true stop_zoom: false }",
     [](VptzClient& client, int timeout) { return client.PanTiltStop(3, timeout); }},
    {"ZoomStop", "ptz_stop", "ptz_command { ptz_id: 3 stop_pan: false stop_tilt: false stop_zoom: true }",
     [](VptzClient& client, int timeout) { return client.ZoomStop(3, timeout); }},
    {"GotoHome", "goto_home", "ptz_command { ptz_id: 3 pan_speed: 1 tilt_speed: 2 zoom_speed: 3 }",
     [](VptzClient& client, int timeout) { return client.GotoHome(3, 1, 2, 3, timeout); }},
    {"SetHome", "set_home", "ptz_command { ptz_id: 3 }",
     [](VptzClient& client, int timeout) { return client.SetHome(3, timeout); }},
    {"SetTrackMode", "set_track_mode", "ptz_command { ptz_id: 3 track_mode: 4294967295 }",
     [](VptzClient& client, int timeout) { return client.SetTrackMode(3, 4294967295u, timeout); }},
};

INSTANTIATE_TEST_SUITE_P(Motion, CommandTest, testing::ValuesIn(kMotion), vptz_test::CommandName);

using MotionTest = ConnectedClientTest;

TEST_F(MotionTest, AbsolutePanMoveLeavesTiltAndZoomAlone) {
  client.AbsolutePanMove(1, 10.0, 0.5);
  const tutorial::PtzCommand ptz = SentCommand().ptz_command();
  EXPECT_EQ(ptz.pan_position(), 10.0);
  EXPECT_EQ(ptz.pan_speed(), 0.5);
  EXPECT_EQ(ptz.tilt_position(), -9999999.0);
  EXPECT_EQ(ptz.zoom_position(), -9999999.0);
  EXPECT_EQ(ptz.tilt_speed(), -9999999.0);
  EXPECT_EQ(ptz.zoom_speed(), -9999999.0);
}

TEST_F(MotionTest, AbsolutePanTiltMoveTakesBothPositionsBeforeBothSpeeds) {
  client.AbsolutePanTiltMove(1, 11.0, 12.0, 13.0, 14.0);
  const tutorial::PtzCommand ptz = SentCommand().ptz_command();
  EXPECT_EQ(ptz.pan_position(), 11.0);
  EXPECT_EQ(ptz.tilt_position(), 12.0);
  EXPECT_EQ(ptz.pan_speed(), 13.0);
  EXPECT_EQ(ptz.tilt_speed(), 14.0);
}

TEST_F(MotionTest, AbsoluteMoveTakesAllPositionsBeforeAllSpeeds) {
  client.AbsoluteMove(1, 11.0, 12.0, 13.0, 14.0, 15.0, 16.0);
  const tutorial::PtzCommand ptz = SentCommand().ptz_command();
  EXPECT_EQ(ptz.pan_position(), 11.0);
  EXPECT_EQ(ptz.tilt_position(), 12.0);
  EXPECT_EQ(ptz.zoom_position(), 13.0);
  EXPECT_EQ(ptz.pan_speed(), 14.0);
  EXPECT_EQ(ptz.tilt_speed(), 15.0);
  EXPECT_EQ(ptz.zoom_speed(), 16.0);
}

TEST_F(MotionTest, AbsoluteMoveSendsTheNotCommandedValueOfItsCaller) {
  client.AbsoluteMove(1, kVptzNotCommanded, 12.0, kVptzNotCommanded, kVptzNotCommanded, 15.0, 0.0);
  const tutorial::PtzCommand ptz = SentCommand().ptz_command();
  EXPECT_EQ(ptz.pan_position(), -9999999.0);
  EXPECT_EQ(ptz.pan_speed(), -9999999.0);
  EXPECT_TRUE(ptz.has_zoom_speed());
  EXPECT_EQ(ptz.zoom_speed(), 0.0);
}

TEST_F(MotionTest, ContinuousMoveWithThreeZerosSendsThreeZeroVelocitiesAndNoStop) {
  client.ContinuousMove(1, 0.0, 0.0, 0.0);
  EXPECT_EQ(OnlyCall().name, "continuous_move");
  const tutorial::PtzCommand ptz = SentCommand().ptz_command();
  EXPECT_TRUE(ptz.has_pan_velocity());
  EXPECT_TRUE(ptz.has_tilt_velocity());
  EXPECT_TRUE(ptz.has_zoom_velocity());
  EXPECT_EQ(ptz.pan_velocity(), 0.0);
  EXPECT_EQ(ptz.tilt_velocity(), 0.0);
  EXPECT_EQ(ptz.zoom_velocity(), 0.0);
  EXPECT_FALSE(ptz.has_stop_pan());
}

TEST_F(MotionTest, PanTiltStopSendsAllThreeFlags) {
  client.PanTiltStop(1);
  EXPECT_EQ(SentCommand().ptz_command().ShortDebugString(),
            "ptz_id: 1 stop_pan: true stop_tilt: true stop_zoom: false");
}

TEST_F(MotionTest, ZoomStopSendsAllThreeFlags) {
  client.ZoomStop(1);
  EXPECT_EQ(SentCommand().ptz_command().ShortDebugString(),
            "ptz_id: 1 stop_pan: false stop_tilt: false stop_zoom: true");
}

TEST_F(MotionTest, PtzStopWithNothingToStopStillSendsAllThreeFlags) {
  client.PtzStop(1, false, false, false);
  EXPECT_EQ(SentCommand().ptz_command().ShortDebugString(),
            "ptz_id: 1 stop_pan: false stop_tilt: false stop_zoom: false");
}

TEST_F(MotionTest, GotoHomeSendsThreeSpeedsAndNoPosition) {
  client.GotoHome(1, 1.0, 2.0, 3.0);
  const tutorial::PtzCommand ptz = SentCommand().ptz_command();
  EXPECT_FALSE(ptz.has_pan_position());
  EXPECT_FALSE(ptz.has_tilt_position());
  EXPECT_FALSE(ptz.has_zoom_position());
  EXPECT_EQ(ptz.ShortDebugString(), "ptz_id: 1 pan_speed: 1 tilt_speed: 2 zoom_speed: 3");
}

TEST_F(MotionTest, PtzIdIsPassedThroughWithoutACheck) {
  client.SetHome(0);
  EXPECT_TRUE(SentCommand().ptz_command().has_ptz_id());
  bus.calls.clear();
  client.SetHome(4294967295u);
  EXPECT_EQ(SentCommand().ptz_command().ptz_id(), 4294967295u);
}

TEST_F(MotionTest, OperationsWithoutATimeoutArgumentUseTheConfiguredOne) {
  client.SetHome(1);
  client.AbsolutePanMove(1, 2.0, 3.0);
  client.ZoomStop(1);
  for (const vptz_test::BusCall& call : bus.calls) EXPECT_EQ(call.timeout, 4) << call.name;
}

}  // namespace
