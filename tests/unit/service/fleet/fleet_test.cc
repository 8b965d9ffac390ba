#include "fleet/fleet.h"

#include <string>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::Camera;
using vptzd::Fleet;
using vptzd::kPan;
using vptzd::Status;

class WorldTest : public testing::Test {
 protected:
  ManualClock clock_;
  Fleet fleet_{3, clock_};
};

TEST_F(WorldTest, NumbersItsCamerasFromOne) {
  EXPECT_EQ(fleet_.CameraNumber(0), nullptr);
  EXPECT_NE(fleet_.CameraNumber(1), nullptr);
  EXPECT_NE(fleet_.CameraNumber(3), nullptr);
  EXPECT_NE(fleet_.CameraNumber(1), fleet_.CameraNumber(3));
  EXPECT_EQ(fleet_.CameraNumber(4), nullptr);
  EXPECT_EQ(fleet_.CameraNumber(4294967295u), nullptr);
}

TEST_F(WorldTest, EnteringBringsTheCamerasToThePresent) {
  Camera* camera = fleet_.CameraNumber(2);
  *camera = Camera(AbruptCamera(2));
  camera->MoveAt({10.0, {}, {}});
  clock_.Advance(1s);
  EXPECT_NEAR(camera->axis(kPan).position(), 0.0, kAlmost);
  fleet_.Enter();
  EXPECT_NEAR(camera->axis(kPan).position(), 10.0, kAlmost);
  fleet_.Enter();
  EXPECT_NEAR(camera->axis(kPan).position(), 10.0, kAlmost);
}

TEST_F(WorldTest, TimeBeforeItsBeginDoesNotCount) {
  ManualClock clock;
  clock.Advance(1000h);
  Fleet fleet(1, clock);
  *fleet.CameraNumber(1) = Camera(AbruptCamera(1));
  fleet.CameraNumber(1)->MoveAt({1.0, {}, {}});
  clock.Advance(1s);
  fleet.Enter();
  EXPECT_NEAR(fleet.CameraNumber(1)->axis(kPan).position(), 1.0, kAlmost);
}

TEST_F(WorldTest, SurvivesAClockThatLeapsByYears) {
  fleet_.CameraNumber(1)->MoveAt({-1.0, {}, {}});
  clock_.Advance(std::chrono::nanoseconds::max());
  fleet_.Enter();
  EXPECT_NEAR(fleet_.CameraNumber(1)->axis(kPan).position(), -170.0, kAlmost);
}

TEST_F(WorldTest, PowerIsThatOfAllCameras) {
  EXPECT_TRUE(fleet_.powered());
  fleet_.PowerOff();
  EXPECT_FALSE(fleet_.powered());
  EXPECT_FALSE(fleet_.CameraNumber(3)->powered());
  fleet_.PowerOn();
  EXPECT_TRUE(fleet_.powered());
  fleet_.CameraNumber(3)->PowerOff();
  EXPECT_FALSE(fleet_.powered());
}

TEST_F(WorldTest, KeepsPortsInTheOrderOfTheirAddition) {
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB1"), Status::kDone);
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(fleet_.ports().all(), (std::vector<std::string>{"/dev/ttyUSB1", "/dev/ttyUSB0"}));
}

TEST_F(WorldTest, RefusesAPortThatIsThereAlready) {
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB0"), Status::kBusy);
  EXPECT_EQ(fleet_.ports().all().size(), 1u);
}

TEST_F(WorldTest, RefusesUnusablePortNames) {
  EXPECT_EQ(fleet_.ports().Add(""), Status::kBadRequest);
  EXPECT_EQ(fleet_.ports().Add(std::string(256, 'x')), Status::kBadRequest);
  EXPECT_TRUE(fleet_.ports().all().empty());
  EXPECT_EQ(fleet_.ports().Add(std::string(255, 'x')), Status::kDone);
}

TEST_F(WorldTest, RefusesMorePortsThanItKeeps) {
  for (std::size_t i = 0; i < vptzd::Ports::kMax; ++i) {
    ASSERT_EQ(fleet_.ports().Add("/dev/ttyUSB" + std::to_string(i)), Status::kDone);
  }
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB"), Status::kOutOfRange);
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB0"), Status::kBusy);
  EXPECT_EQ(fleet_.ports().Remove("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB"), Status::kDone);
}

TEST_F(WorldTest, RemovesOnlyAPortThatIsThere) {
  EXPECT_EQ(fleet_.ports().Remove("/dev/ttyUSB0"), Status::kUnknownId);
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(fleet_.ports().Remove("/dev/ttyUSB00"), Status::kUnknownId);
  EXPECT_EQ(fleet_.ports().Remove("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(fleet_.ports().Remove("/dev/ttyUSB0"), Status::kUnknownId);
}

TEST_F(WorldTest, FlushForgetsAllPorts) {
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB1"), Status::kDone);
  fleet_.ports().Clear();
  EXPECT_TRUE(fleet_.ports().all().empty());
  EXPECT_EQ(fleet_.ports().Add("/dev/ttyUSB0"), Status::kDone);
}

}  // namespace
}  // namespace vptz_test
