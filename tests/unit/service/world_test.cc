#include "world.h"

#include <string>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::Camera;
using vptzd::kPan;
using vptzd::Status;
using vptzd::World;

class WorldTest : public testing::Test {
 protected:
  ManualClock clock_;
  World world_{3, clock_};
};

TEST_F(WorldTest, NumbersItsCamerasFromOne) {
  EXPECT_EQ(world_.FindCamera(0), nullptr);
  EXPECT_NE(world_.FindCamera(1), nullptr);
  EXPECT_NE(world_.FindCamera(3), nullptr);
  EXPECT_NE(world_.FindCamera(1), world_.FindCamera(3));
  EXPECT_EQ(world_.FindCamera(4), nullptr);
  EXPECT_EQ(world_.FindCamera(4294967295u), nullptr);
}

TEST_F(WorldTest, EnteringBringsTheCamerasToThePresent) {
  Camera* camera = world_.FindCamera(2);
  *camera = Camera(AbruptCamera(2));
  camera->MoveAt({10.0, {}, {}});
  clock_.Advance(1s);
  EXPECT_NEAR(camera->axis(kPan).position(), 0.0, kAlmost);
  world_.Enter();
  EXPECT_NEAR(camera->axis(kPan).position(), 10.0, kAlmost);
  world_.Enter();
  EXPECT_NEAR(camera->axis(kPan).position(), 10.0, kAlmost);
}

TEST_F(WorldTest, TimeBeforeItsBeginDoesNotCount) {
  ManualClock clock;
  clock.Advance(1000h);
  World world(1, clock);
  *world.FindCamera(1) = Camera(AbruptCamera(1));
  world.FindCamera(1)->MoveAt({1.0, {}, {}});
  clock.Advance(1s);
  world.Enter();
  EXPECT_NEAR(world.FindCamera(1)->axis(kPan).position(), 1.0, kAlmost);
}

TEST_F(WorldTest, SurvivesAClockThatLeapsByYears) {
  world_.FindCamera(1)->MoveAt({-1.0, {}, {}});
  clock_.Advance(std::chrono::nanoseconds::max());
  world_.Enter();
  EXPECT_NEAR(world_.FindCamera(1)->axis(kPan).position(), -170.0, kAlmost);
}

TEST_F(WorldTest, PowerIsThatOfAllCameras) {
  EXPECT_TRUE(world_.powered());
  world_.PowerOff();
  EXPECT_FALSE(world_.powered());
  EXPECT_FALSE(world_.FindCamera(3)->powered());
  world_.PowerOn();
  EXPECT_TRUE(world_.powered());
  world_.FindCamera(3)->PowerOff();
  EXPECT_FALSE(world_.powered());
}

TEST_F(WorldTest, KeepsPortsInTheOrderOfTheirAddition) {
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB1"), Status::kDone);
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(world_.usb_tty_devices(), (std::vector<std::string>{"/dev/ttyUSB1", "/dev/ttyUSB0"}));
}

TEST_F(WorldTest, RefusesAPortThatIsThereAlready) {
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB0"), Status::kBusy);
  EXPECT_EQ(world_.usb_tty_devices().size(), 1u);
}

TEST_F(WorldTest, RefusesUnusablePortNames) {
  EXPECT_EQ(world_.AddUsbTtyDevice(""), Status::kBadRequest);
  EXPECT_EQ(world_.AddUsbTtyDevice(std::string(256, 'x')), Status::kBadRequest);
  EXPECT_TRUE(world_.usb_tty_devices().empty());
  EXPECT_EQ(world_.AddUsbTtyDevice(std::string(255, 'x')), Status::kDone);
}

TEST_F(WorldTest, RefusesMorePortsThanItKeeps) {
  for (std::size_t i = 0; i < World::kMaxUsbTtyDevices; ++i) {
    ASSERT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB" + std::to_string(i)), Status::kDone);
  }
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB"), Status::kOutOfRange);
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB0"), Status::kBusy);
  EXPECT_EQ(world_.RemoveUsbTtyDevice("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB"), Status::kDone);
}

TEST_F(WorldTest, RemovesOnlyAPortThatIsThere) {
  EXPECT_EQ(world_.RemoveUsbTtyDevice("/dev/ttyUSB0"), Status::kUnknownId);
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(world_.RemoveUsbTtyDevice("/dev/ttyUSB00"), Status::kUnknownId);
  EXPECT_EQ(world_.RemoveUsbTtyDevice("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(world_.RemoveUsbTtyDevice("/dev/ttyUSB0"), Status::kUnknownId);
}

TEST_F(WorldTest, FlushForgetsAllPorts) {
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB0"), Status::kDone);
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB1"), Status::kDone);
  world_.FlushUsbTtyDevices();
  EXPECT_TRUE(world_.usb_tty_devices().empty());
  EXPECT_EQ(world_.AddUsbTtyDevice("/dev/ttyUSB0"), Status::kDone);
}

}  // namespace
}  // namespace vptz_test
