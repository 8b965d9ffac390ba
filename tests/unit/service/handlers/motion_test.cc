#include <string>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using tutorial::PtzCommand;
using tutorial::PtzInfo;
using tutorial::VptzCommand;

constexpr double kLeave = kVptzNotCommanded;

VptzCommand Absolute(double pan, double tilt, double zoom, double pan_speed, double tilt_speed,
                     double zoom_speed, unsigned camera = 1) {
  VptzCommand command;
  PtzCommand* ptz = command.mutable_ptz_command();
  ptz->set_ptz_id(camera);
  ptz->set_pan_position(pan);
  ptz->set_tilt_position(tilt);
  ptz->set_zoom_position(zoom);
  ptz->set_pan_speed(pan_speed);
  ptz->set_tilt_speed(tilt_speed);
  ptz->set_zoom_speed(zoom_speed);
  return command;
}

VptzCommand Continuous(double pan, double tilt, double zoom, unsigned camera = 1) {
  VptzCommand command;
  PtzCommand* ptz = command.mutable_ptz_command();
  ptz->set_ptz_id(camera);
  ptz->set_pan_velocity(pan);
  ptz->set_tilt_velocity(tilt);
  ptz->set_zoom_velocity(zoom);
  return command;
}

VptzCommand Stop(bool pan, bool tilt, bool zoom, unsigned camera = 1) {
  VptzCommand command;
  PtzCommand* ptz = command.mutable_ptz_command();
  ptz->set_ptz_id(camera);
  ptz->set_stop_pan(pan);
  ptz->set_stop_tilt(tilt);
  ptz->set_stop_zoom(zoom);
  return command;
}

VptzCommand Home(double pan_speed, double tilt_speed, double zoom_speed) {
  VptzCommand command;
  PtzCommand* ptz = command.mutable_ptz_command();
  ptz->set_ptz_id(1);
  ptz->set_pan_speed(pan_speed);
  ptz->set_tilt_speed(tilt_speed);
  ptz->set_zoom_speed(zoom_speed);
  return command;
}

VptzCommand OnlyCamera(unsigned camera) {
  VptzCommand command;
  command.mutable_ptz_command()->set_ptz_id(camera);
  return command;
}

void ExpectAt(const PtzInfo& info, double pan, double tilt, double zoom) {
  EXPECT_NEAR(info.pan().position(), pan, kAlmost);
  EXPECT_NEAR(info.tilt().position(), tilt, kAlmost);
  EXPECT_NEAR(info.zoom().position(), zoom, kAlmost);
}

class MotionTest : public testing::Test {
 protected:
  Simulation simulation_;
};

TEST_F(MotionTest, AbsoluteMoveTravelsAtItsSpeedAndStopsAtItsTarget) {
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(90.0, 45.0, 3.0, 30.0, 15.0, 1.0)), 0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 30.0, 15.0, 2.0);
  simulation_.Wait(2s);
  ExpectAt(simulation_.Look(), 90.0, 45.0, 3.0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 90.0, 45.0, 3.0);
}

TEST_F(MotionTest, LookingOftenDoesNotChangeAMotion) {
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(90.0, kLeave, kLeave, 30.0, kLeave, kLeave)), 0);
  for (int i = 0; i < 3000; ++i) {
    simulation_.Wait(1ms);
    simulation_.Look();
  }
  simulation_.Wait(1us);
  ExpectAt(simulation_.Look(), 90.0, 0.0, 1.0);
  EXPECT_EQ(simulation_.Look().pan().speed(), 0.0);
}

TEST_F(MotionTest, NotCommandedPositionLeavesTheAxisAlone) {
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(kLeave, 10.0, kLeave)), 0);
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(20.0, kLeave, kLeave, 10.0, kLeave, kLeave)), 0);
  simulation_.Wait(2s);
  ExpectAt(simulation_.Look(), 20.0, 20.0, 1.0);
}

TEST_F(MotionTest, AbsentFieldsCountAsNotCommanded) {
  VptzCommand command = OnlyCamera(1);
  command.mutable_ptz_command()->set_tilt_position(40.0);
  ASSERT_EQ(simulation_.Status("absolute_move", command), 0);
  simulation_.Wait(500ms);
  ExpectAt(simulation_.Look(), 0.0, 40.0, 1.0);
  ASSERT_EQ(simulation_.Status("continuous_move", OnlyCamera(1)), 0);
  EXPECT_EQ(simulation_.Status("absolute_move", OnlyCamera(1)), 0);
}

TEST_F(MotionTest, NotCommandedSpeedMeansTheTopSpeed) {
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(100.0, 80.0, 9.0, kLeave, kLeave, kLeave)), 0);
  simulation_.Wait(1ms);
  const PtzInfo info = simulation_.Look();
  EXPECT_EQ(info.pan().speed(), 100.0);
  EXPECT_EQ(info.tilt().speed(), 80.0);
  EXPECT_EQ(info.zoom().speed(), 8.0);
  simulation_.Wait(999ms + 1us);
  ExpectAt(simulation_.Look(), 100.0, 80.0, 9.0);
}

TEST_F(MotionTest, ContinuousMoveRunsUntilStopped) {
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(-20.0, 10.0, 0.5)), 0);
  simulation_.Wait(2s);
  ASSERT_EQ(simulation_.Status("ptz_stop", Stop(true, true, true)), 0);
  simulation_.Wait(2s);
  ExpectAt(simulation_.Look(), -40.0, 20.0, 2.0);
}

TEST_F(MotionTest, ContinuousMoveOfAClientThatHasGoneIsStopped) {
  simulation_.fleet().set_grace(5s);
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(2.0, kLeave, kLeave)), 0);
  simulation_.Wait(4s);
  simulation_.Look();  // a sign of life
  simulation_.Wait(1h);
  ExpectAt(simulation_.Look(), 18.0, 0.0, 1.0);
}

TEST_F(MotionTest, CallsAboutOtherCamerasAreNoSignOfLife) {
  simulation_.fleet().set_grace(5s);
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(2.0, kLeave, kLeave)), 0);
  simulation_.Wait(4s);
  simulation_.Look(2);
  simulation_.Status("get_devices_power_status");
  simulation_.Wait(1h);
  ExpectAt(simulation_.Look(), 10.0, 0.0, 1.0);
}

TEST_F(MotionTest, ContinuousMoveRunsUntilALimit) {
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(20.0, -10.0, 1.0)), 0);
  simulation_.Wait(24h);
  ExpectAt(simulation_.Look(), 170.0, -30.0, 20.0);
}

TEST_F(MotionTest, ContinuousMoveWithThreeZerosStopsAllAxes) {
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(10.0, 10.0, 1.0)), 0);
  simulation_.Wait(1s);
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(0.0, 0.0, 0.0)), 0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 10.0, 10.0, 2.0);
}

TEST_F(MotionTest, StopEndsAnAbsoluteMoveInItsMiddle) {
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(90.0, 45.0, 5.0, 30.0, 15.0, 1.0)), 0);
  simulation_.Wait(1s);
  ASSERT_EQ(simulation_.Status("ptz_stop", Stop(true, true, false)), 0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 30.0, 15.0, 3.0);
}

TEST_F(MotionTest, StopWithoutFlagsStopsNothing) {
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(10.0, 10.0, 1.0)), 0);
  ASSERT_EQ(simulation_.Status("ptz_stop", OnlyCamera(1)), 0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 10.0, 10.0, 2.0);
}

TEST_F(MotionTest, AbsoluteMoveReplacesAContinuousOneOnOneAxisOnly) {
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(10.0, 5.0, kLeave)), 0);
  simulation_.Wait(2s);
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(0.0, kLeave, kLeave, 10.0, kLeave, kLeave)), 0);
  simulation_.Wait(4s);
  ExpectAt(simulation_.Look(), 0.0, 30.0, 1.0);
}

TEST_F(MotionTest, CommandsFollowOneAnother) {
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(60.0, 0.0, 1.0, 60.0, 1.0, 1.0)), 0);
  simulation_.Wait(500ms);
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(-10.0, 20.0, kLeave)), 0);
  simulation_.Wait(1s);
  ASSERT_EQ(simulation_.Status("ptz_stop", Stop(true, false, false)), 0);
  ASSERT_EQ(simulation_.Status("set_home", OnlyCamera(1)), 0);
  simulation_.Wait(2s);
  ExpectAt(simulation_.Look(), 20.0, 60.0, 1.0);
  ASSERT_EQ(simulation_.Status("goto_home", Home(10.0, 20.0, 1.0)), 0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 20.0, 40.0, 1.0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 20.0, 20.0, 1.0);
}

TEST_F(MotionTest, GotoHomeWithoutSpeedsUsesTheTopSpeeds) {
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(100.0, 80.0, 9.0, kLeave, kLeave, kLeave)), 0);
  simulation_.Wait(1s);
  ASSERT_EQ(simulation_.Status("goto_home", Home(kLeave, kLeave, kLeave)), 0);
  simulation_.Wait(500ms);
  ExpectAt(simulation_.Look(), 50.0, 40.0, 5.0);
  simulation_.Wait(500ms);
  ExpectAt(simulation_.Look(), 0.0, 0.0, 1.0);
}

TEST_F(MotionTest, CamerasMoveApart) {
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(10.0, kLeave, kLeave, 1)), 0);
  ASSERT_EQ(simulation_.Status("continuous_move", Continuous(-10.0, kLeave, kLeave, 2)), 0);
  simulation_.Wait(1s);
  ASSERT_EQ(simulation_.Status("ptz_stop", Stop(true, true, true, 2)), 0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(1), 20.0, 0.0, 1.0);
  ExpectAt(simulation_.Look(2), -10.0, 0.0, 1.0);
}

TEST_F(MotionTest, TrackModeWithoutAModeIsABadRequest) {
  EXPECT_EQ(simulation_.Status("set_track_mode", OnlyCamera(1)), -1002);
}

TEST_F(MotionTest, MissingPtzCommandIsABadRequest) {
  for (const std::string method :
       {"absolute_move", "continuous_move", "ptz_stop", "goto_home", "set_home", "set_track_mode"}) {
    EXPECT_EQ(simulation_.Status(method), -1002) << method;
  }
}

TEST_F(MotionTest, UnknownCamerasAreRefused) {
  for (const std::string method :
       {"absolute_move", "continuous_move", "ptz_stop", "goto_home", "set_home", "set_track_mode"}) {
    for (const unsigned camera : {0u, 3u, 4294967295u}) {
      EXPECT_EQ(simulation_.Status(method, OnlyCamera(camera)), -1004) << method << ' ' << camera;
    }
  }
}

TEST_F(MotionTest, HostileNumbersAreRefusedAndNothingMoves) {
  for (const double number : {kNaN, kInfinity, -kInfinity, 1e308, -1e308}) {
    EXPECT_EQ(simulation_.Status("absolute_move", Absolute(5.0, number, 5.0, 1.0, 1.0, 1.0)), -1006) << number;
    EXPECT_EQ(simulation_.Status("absolute_move", Absolute(5.0, 5.0, 5.0, 1.0, number, 1.0)), -1006) << number;
    EXPECT_EQ(simulation_.Status("goto_home", Home(1.0, number, 1.0)), -1006) << number;
  }
  for (const double number : {kNaN, kInfinity, -kInfinity}) {
    EXPECT_EQ(simulation_.Status("continuous_move", Continuous(1.0, number, 1.0)), -1006) << number;
  }
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 0.0, 0.0, 1.0);
}

// Next to the not-commanded value, but not it.
TEST_F(MotionTest, NumbersNearTheNotCommandedValueAreOrdinaryNumbers) {
  EXPECT_EQ(simulation_.Status("absolute_move", Absolute(-9999998.0, 5.0, 5.0, 1.0, 1.0, 1.0)), -1006);
  EXPECT_EQ(simulation_.Status("absolute_move", Absolute(9999999.0, 5.0, 5.0, 1.0, 1.0, 1.0)), -1006);
}

TEST_F(MotionTest, DenormalSpeedIsAcceptedAndGoesNowhere) {
  ASSERT_EQ(simulation_.Status("absolute_move", Absolute(5.0, kLeave, kLeave, kSmallest, kLeave, kLeave)), 0);
  simulation_.Wait(24h);
  EXPECT_LT(simulation_.Look().pan().position(), 1e-300);
}

TEST_F(MotionTest, MovesAreRefusedWithoutPowerAndTheOthersAreNot) {
  ASSERT_EQ(simulation_.Status("power_off_devices"), 0);
  EXPECT_EQ(simulation_.Status("absolute_move", Absolute(5.0, 5.0, 5.0, 1.0, 1.0, 1.0)), -1009);
  EXPECT_EQ(simulation_.Status("continuous_move", Continuous(1.0, 1.0, 1.0)), -1009);
  EXPECT_EQ(simulation_.Status("goto_home", Home(1.0, 1.0, 1.0)), -1009);
  EXPECT_EQ(simulation_.Status("ptz_stop", Stop(true, true, true)), 0);
  EXPECT_EQ(simulation_.Status("set_home", OnlyCamera(1)), 0);
  simulation_.Wait(1s);
  ExpectAt(simulation_.Look(), 0.0, 0.0, 1.0);
}

}  // namespace
}  // namespace vptz_test
