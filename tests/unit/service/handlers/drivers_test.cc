// The dead man's switch: what runs until it is stopped belongs to the caller that
// drives it, and ends when this caller is silent for the time of grace.
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "bus/fake_bus_service.h"
#include "bus/server.h"
#include "stored_simulation.h"

namespace vptz_test {
namespace {

using tutorial::VptzCommand;

constexpr std::uint64_t kOperator = 1;
constexpr std::uint64_t kOnlooker = 2;
constexpr double kLeave = kVptzNotCommanded;

VptzCommand Drive(double pan, double tilt, unsigned camera = 1) {
  VptzCommand command;
  command.mutable_ptz_command()->set_ptz_id(camera);
  command.mutable_ptz_command()->set_pan_velocity(pan);
  command.mutable_ptz_command()->set_tilt_velocity(tilt);
  return command;
}

class Drivers : public testing::Test {
 protected:
  Drivers() { simulation_.fleet().set_grace(1s); }

  // The status of a call of that caller's.
  int As(std::uint64_t caller, const std::string& method, const VptzCommand& command) {
    simulation_.SpeakFor(caller);
    return simulation_.Status(method, command);
  }

  void LookAs(std::uint64_t caller, unsigned camera = 1) {
    simulation_.SpeakFor(caller);
    simulation_.Look(camera);
  }

  double Pan(unsigned camera = 1) { return Position(kPan, camera); }
  double Tilt(unsigned camera = 1) { return Position(kTilt, camera); }

  Simulation simulation_;

 private:
  static constexpr vptzd::AxisIndex kPan = vptzd::kPan;
  static constexpr vptzd::AxisIndex kTilt = vptzd::kTilt;

  // No call, so that it is no sign of life.
  double Position(vptzd::AxisIndex axis, unsigned camera) {
    const auto lock = simulation_.fleet().Enter();
    return simulation_.fleet().CameraNumber(camera)->axis(axis).position();
  }
};

TEST_F(Drivers, OnlookerDoesNotKeepACameraMoving) {
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, 5.0)), 0);
  for (int i = 0; i < 20; ++i) {
    simulation_.Wait(200ms);
    LookAs(kOnlooker);
  }
  EXPECT_NEAR(Pan(), 10.0, kAlmost);
  EXPECT_NEAR(Tilt(), 5.0, kAlmost);
}

TEST_F(Drivers, EveryCallAboutTheCameraIsASignOfLifeOfItsCaller) {
  std::vector<std::pair<std::string, VptzCommand>> calls(4);
  calls[0].first = "set_home";
  calls[0].second.mutable_ptz_command()->set_ptz_id(1);
  calls[1].first = "focus_stop";
  calls[1].second.mutable_device_command()->set_device_id(2);  // the camera's second media source
  calls[2].first = "clear_nat";
  calls[2].second.mutable_nat_command()->set_device_id(1);
  calls[3].first = "query_nat_uri";
  calls[3].second.mutable_nat_command()->set_device_id(1);
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, kLeave)), 0);
  for (const auto& [method, command] : calls) {
    simulation_.Wait(900ms);
    EXPECT_EQ(As(kOperator, method, command), 0) << method;
  }
  simulation_.Wait(1h);
  EXPECT_NEAR(Pan(), 10.0 * (0.9 * static_cast<double>(calls.size()) + 1.0), kAlmost);
}

TEST_F(Drivers, CallAboutAnotherCameraIsNoSignOfLife) {
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, kLeave)), 0);
  simulation_.Wait(900ms);
  LookAs(kOperator, 2);
  simulation_.Wait(1h);
  EXPECT_NEAR(Pan(), 10.0, kAlmost);
}

TEST_F(Drivers, CallerThatMovesAnAxisAnewTakesItOverAndLeavesTheOthers) {
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, 10.0)), 0);
  simulation_.Wait(500ms);
  ASSERT_EQ(As(kOnlooker, "continuous_move", Drive(20.0, kLeave)), 0);
  for (int i = 0; i < 4; ++i) {
    simulation_.Wait(500ms);
    LookAs(kOnlooker);
  }
  EXPECT_NEAR(Tilt(), 10.0, kAlmost) << "its driver has gone";
  EXPECT_NEAR(Pan(), 45.0, kAlmost) << "the new driver is there";
  for (int i = 0; i < 4; ++i) {
    simulation_.Wait(500ms);
    LookAs(kOperator);
  }
  EXPECT_NEAR(Pan(), 65.0, kAlmost) << "the first driver's calls do not count any more";
}

TEST_F(Drivers, RefusedMoveTakesNothingOver) {
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, kLeave)), 0);
  simulation_.Wait(500ms);
  ASSERT_EQ(As(kOnlooker, "continuous_move", Drive(kNaN, kLeave)), -1006);
  simulation_.Wait(400ms);
  LookAs(kOperator);
  simulation_.Wait(1h);
  EXPECT_NEAR(Pan(), 19.0, kAlmost);
}

TEST_F(Drivers, PositioningMoveGoesOnWithoutItsCaller) {
  VptzCommand command;
  command.mutable_ptz_command()->set_ptz_id(1);
  command.mutable_ptz_command()->set_pan_position(100.0);
  command.mutable_ptz_command()->set_pan_speed(10.0);
  ASSERT_EQ(As(kOperator, "absolute_move", command), 0);
  simulation_.Wait(1h);
  EXPECT_NEAR(Pan(), 100.0, kAlmost);
}

TEST_F(Drivers, FollowerBelongsToTheCallerThatDrivesItsLeader) {
  simulation_.fleet().MemberOfDevice(1)->follower = 2;
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, 5.0)), 0);
  simulation_.Wait(900ms);
  LookAs(kOperator, 1);
  for (int i = 0; i < 10; ++i) {
    simulation_.Wait(500ms);
    LookAs(kOnlooker, 1);
    LookAs(kOnlooker, 2);
  }
  EXPECT_NEAR(Pan(1), 19.0, kAlmost);
  EXPECT_NEAR(Pan(2), 19.0, kAlmost);
  EXPECT_NEAR(Tilt(2), 9.5, kAlmost);
}

TEST_F(Drivers, CallerThatDrivesAFollowerTakesItOverFromItsLeader) {
  simulation_.fleet().MemberOfDevice(1)->follower = 2;
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, 5.0)), 0);
  ASSERT_EQ(As(kOnlooker, "continuous_move", Drive(-10.0, kLeave, 2)), 0);
  for (int i = 0; i < 4; ++i) {
    simulation_.Wait(500ms);
    LookAs(kOperator, 1);
  }
  EXPECT_NEAR(Pan(1), 20.0, kAlmost);
  EXPECT_NEAR(Pan(2), -10.0, kAlmost);
  EXPECT_NEAR(Tilt(2), 10.0, kAlmost);
}

TEST_F(Drivers, CallersWithoutANumberAreOneCaller) {
  ASSERT_EQ(As(0, "continuous_move", Drive(10.0, kLeave)), 0);
  simulation_.Wait(900ms);
  LookAs(0);
  simulation_.Wait(900ms);
  LookAs(kOnlooker);
  simulation_.Wait(1h);
  EXPECT_NEAR(Pan(), 19.0, kAlmost);
}

TEST_F(Drivers, WithoutAGraceNothingRunsOut) {
  simulation_.fleet().set_grace(0s);
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(1.0, kLeave)), 0);
  simulation_.Wait(100s);
  EXPECT_NEAR(Pan(), 100.0, kAlmost);
}

class StoredDrivers : public StoredSimulation {
 protected:
  StoredDrivers() { fleet().set_grace(1s); }

  int As(std::uint64_t caller, const std::string& method, const VptzCommand& command) {
    simulation_->SpeakFor(caller);
    return Status(method, command);
  }
  double Focus() {
    const auto lock = fleet().Enter();
    return fleet().CameraNumber(1)->focus().position();
  }
  double Pan(unsigned camera = 1) {
    const auto lock = fleet().Enter();
    return fleet().CameraNumber(camera)->axis(vptzd::kPan).position();
  }
};

// The leader's stop does not reach it any more.
TEST_F(StoredDrivers, CameraThatFollowsNoMoreStops) {
  VptzCommand nobody;
  nobody.mutable_slave_device_command()->set_device_id(1);
  fleet().set_grace(0s);
  fleet().MemberOfDevice(1)->follower = 2;
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, kLeave)), 0);
  Wait(1s);
  EXPECT_EQ(As(kOnlooker, "set_slave_device", nobody), 0);
  Wait(4s);
  EXPECT_NEAR(Pan(1), 50.0, 1.0) << "it is driven on";
  EXPECT_NEAR(Pan(2), 10.0, 1.0);
}

TEST_F(StoredDrivers, CouplingThatStaysTheSameStopsNothing) {
  fleet().MemberOfDevice(1)->follower = 2;
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, kLeave)), 0);
  {
    const auto lock = fleet().Enter();
    fleet().SetFollower(fleet().MemberOfDevice(1), 2);
  }
  Wait(900ms);
  EXPECT_NEAR(Pan(2), 9.0, 1.0);
}

TEST_F(StoredDrivers, RemovedCameraAndItsFollowerStop) {
  fleet().set_grace(0s);
  fleet().MemberOfDevice(1)->follower = 2;
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, kLeave)), 0);
  Wait(1s);
  EXPECT_EQ(As(kOnlooker, "remove_device", OfDevice(1)), 0);
  Wait(1h);
  EXPECT_NEAR(Pan(1), 10.0, 1.0);
  EXPECT_NEAR(Pan(2), 10.0, 1.0);
}

TEST_F(StoredDrivers, FocusDriveBelongsToItsCaller) {
  ASSERT_EQ(As(kOperator, "focus_near", OfDevice(1, "0.1")), 0);  // 0.05 of the way each second, from 0.6
  Wait(900ms);
  As(kOperator, "update_ptz_status", OfDevice(1));
  for (int i = 0; i < 10; ++i) {
    Wait(500ms);
    As(kOnlooker, "update_ptz_status", OfDevice(1));
  }
  EXPECT_NEAR(Focus(), 0.6 - 0.05 * 1.9, 0.01);
}

TEST_F(StoredDrivers, CallsThatStoreAreSignsOfLifeToo) {
  VptzCommand slave;
  slave.mutable_slave_device_command()->set_device_id(1);
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, kLeave)), 0);
  Wait(900ms);
  EXPECT_EQ(As(kOperator, "set_slave_device", slave), 0);
  Wait(900ms);
  EXPECT_EQ(As(kOperator, "update_device_info", OfDevice(1)), 0);
  Wait(900ms);
  EXPECT_EQ(As(kOnlooker, "update_device_info", OfDevice(1)), 0);
  Wait(1h);
  EXPECT_NEAR(Pan(), 28.0, 0.5);
}

TEST_F(StoredDrivers, CallThatWaitsForTheDatabaseIsASignOfLifeWhenItComes) {
  FakeBusService bus;
  vptzd::Server server(simulation_->context());
  ASSERT_EQ(server.Start(nullptr), 0);
  ASSERT_EQ(As(kOperator, "continuous_move", Drive(10.0, kLeave)), 0);
  Wait(900ms);
  VptzCommand command = OfDevice(1);
  command.set_method_name("update_device_info");
  bus.Request("update_device_info", command.SerializeAsString(), kOperator);
  EXPECT_EQ(bus.ended, 0) << "it waits on the agenda";
  Wait(900ms);
  EXPECT_EQ(bus.ended, 1);
  Wait(1h);
  EXPECT_NEAR(Pan(), 19.0, 0.5);
}

// As requests come over the bus.
TEST(DriversOnTheBus, RequestsTellTheirCallers) {
  FakeBusService bus;
  Simulation simulation;
  simulation.fleet().set_grace(1s);
  vptzd::Server server(simulation.context());
  ASSERT_EQ(server.Start(nullptr), 0);
  const auto request = [&](std::uint64_t caller, const std::string& method, VptzCommand command) {
    command.set_method_name(method);
    bus.Request(method, command.SerializeAsString(), caller);
  };
  request(kOperator, "continuous_move", Drive(10.0, kLeave));
  simulation.Wait(900ms);
  request(kOperator, "continuous_move", Drive(kLeave, kLeave));
  simulation.Wait(900ms);
  request(kOnlooker, "continuous_move", Drive(kLeave, kLeave));
  simulation.Wait(1h);
  EXPECT_NEAR(simulation.Look().pan().position(), 19.0, kAlmost);
}

}  // namespace
}  // namespace vptz_test
