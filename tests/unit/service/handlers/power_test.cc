#include <string>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using tutorial::VptzCommand;

VptzCommand Port(const std::string& device) {
  VptzCommand command;
  command.mutable_usb_tty_device_params()->set_tty_device(device);
  return command;
}

class PowerTest : public testing::Test {
 protected:
  Simulation simulation_;
};

TEST_F(PowerTest, StatusIsOneWithPowerAndZeroWithout) {
  EXPECT_EQ(simulation_.Status("get_devices_power_status"), 1);
  EXPECT_EQ(simulation_.Status("power_off_devices"), 0);
  EXPECT_EQ(simulation_.Status("get_devices_power_status"), 0);
  EXPECT_EQ(simulation_.Status("power_on_devices"), 0);
  EXPECT_EQ(simulation_.Status("get_devices_power_status"), 1);
}

TEST_F(PowerTest, SwitchingTwiceIsDone) {
  EXPECT_EQ(simulation_.Status("power_on_devices"), 0);
  EXPECT_EQ(simulation_.Status("power_off_devices"), 0);
  EXPECT_EQ(simulation_.Status("power_off_devices"), 0);
  EXPECT_EQ(simulation_.Status("get_devices_power_status"), 0);
}

TEST_F(PowerTest, PowerOffStopsEveryCameraWhereItIsAndPowerOnKeepsPositions) {
  for (const unsigned camera : {1u, 2u}) {
    VptzCommand command;
    command.mutable_ptz_command()->set_ptz_id(camera);
    command.mutable_ptz_command()->set_pan_velocity(10.0 * camera);
    ASSERT_EQ(simulation_.Status("continuous_move", command), 0);
  }
  simulation_.Wait(1s);
  ASSERT_EQ(simulation_.Status("power_off_devices"), 0);
  simulation_.Wait(1s);
  ASSERT_EQ(simulation_.Status("power_on_devices"), 0);
  simulation_.Wait(1s);
  EXPECT_NEAR(simulation_.Look(1).pan().position(), 10.0, kAlmost);
  EXPECT_NEAR(simulation_.Look(2).pan().position(), 20.0, kAlmost);
}

TEST_F(PowerTest, PortsAreAddedRemovedAndFlushed) {
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", Port("/dev/ttyUSB0")), 0);
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", Port("/dev/ttyUSB0")), -1008);
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", Port("/dev/ttyUSB1")), 0);
  EXPECT_EQ(simulation_.Status("remove_usb_tty_device", Port("/dev/ttyUSB0")), 0);
  EXPECT_EQ(simulation_.Status("remove_usb_tty_device", Port("/dev/ttyUSB0")), -1004);
  EXPECT_EQ(simulation_.Status("flush_usb_tty_devices"), 0);
  EXPECT_EQ(simulation_.Status("remove_usb_tty_device", Port("/dev/ttyUSB1")), -1004);
}

TEST_F(PowerTest, PortHasOneNameWithAndWithoutItsFolder) {
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", Port("ttyUSB0")), 0);
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", Port("/dev/ttyUSB0")), -1008);
  EXPECT_EQ(simulation_.fleet().ports().all(), std::vector<std::string>{"ttyUSB0"}) << "as it was given";
  EXPECT_EQ(simulation_.Status("remove_usb_tty_device", Port("/dev/ttyUSB0")), 0);
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", Port("/dev/ttyUSB0")), 0);
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", Port("/run/ttyUSB0")), 0);
  EXPECT_EQ(simulation_.Status("remove_usb_tty_device", Port("ttyUSB0")), 0);
}

TEST_F(PowerTest, PortWithoutANameIsABadRequest) {
  EXPECT_EQ(simulation_.Status("add_usb_tty_device"), -1002);
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", Port("")), -1002);
  EXPECT_EQ(simulation_.Status("remove_usb_tty_device"), -1002);
  EXPECT_EQ(simulation_.Status("remove_usb_tty_device", Port("")), -1004);
}

TEST_F(PowerTest, Reset2P0IsSwitched) {
  EXPECT_FALSE(simulation_.fleet().reset_2p0());
  EXPECT_EQ(simulation_.Status("enable_reset2P0"), 0);
  EXPECT_TRUE(simulation_.fleet().reset_2p0());
  EXPECT_EQ(simulation_.Status("disable_reset2P0"), 0);
  EXPECT_FALSE(simulation_.fleet().reset_2p0());
}

}  // namespace
}  // namespace vptz_test
