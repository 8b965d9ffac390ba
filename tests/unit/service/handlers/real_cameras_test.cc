// Without simulated cameras: rows of an earlier start are there, and nothing moves
// behind them.
#include <gmock/gmock.h>
#include <vptz/method_names.h>
#include <vptz/model/device.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>

#include <set>

#include "fleet/positions.h"
#include "store/changes.h"
#include "stored_simulation.h"
#include "view/fleet_view.h"

namespace vptz_test {
namespace {

namespace method = vptz::method;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tutorial::VptzCommand;

// Methods that concern the service alone.
const std::set<std::string> kWithoutACamera = {
    method::kGetStatus,          method::kSearchDevice,          method::kRemoveDevice,
    method::kClearNAT,           method::kQueryNATuri,           method::kEnableNAT,
    method::kDisableNAT,         method::kConfigDevices,         method::kAddUSBttyDevice,
    method::kRemoveUSBttyDevice, method::kFlushUSBttyDevices,    method::kEnableReset2P0,
    method::kDisableReset2P0,    method::kGetDevicesPowerStatus,
};

class RealCameras : public StoredSimulation {
 protected:
  RealCameras() { Begin(Simulation::Real{}); }

  static VptzCommand Whole() {
    VptzCommand command = OfDevice(1, "ptz0");
    command.mutable_device_command()->set_protocol("ONVIF");
    command.mutable_device_command()->set_address("192.0.2.77");
    command.mutable_ptz_command()->set_ptz_id(1);
    command.mutable_ptz_command()->set_track_mode(1);
    command.mutable_media_command()->set_media_id(1);
    command.mutable_slave_device_command()->set_device_id(1);
    return command;
  }
};

TEST_F(RealCameras, EveryCallAboutACameraWithRowsIsRefusedAsUnsupported) {
  for (const std::string name : method::kAll) {
    if (kWithoutACamera.count(name) != 0 || name == method::kUpdateAllRS232Devices) continue;
    EXPECT_EQ(Status(name, Whole()), -1013) << name;
  }
}

TEST_F(RealCameras, WhatHasNoRowsIsUnknownAndABadCommandIsBad) {
  VptzCommand command = OfDevice(99);
  EXPECT_EQ(Status("update_device_info", command), -1004);
  EXPECT_EQ(Status("get_ptz_profiles", OfDevice(0, "ptz0")), -1004);
  EXPECT_EQ(Status("add_device", OfDevice(0)), -1004) << "no protocol";
  command.mutable_device_command()->set_protocol("RS232");
  command.mutable_device_command()->set_address("nowhere");
  EXPECT_EQ(Status("add_device", command), -1002);
  EXPECT_EQ(Status("ptz_stop"), -1002);
}

TEST_F(RealCameras, SearchFindsNothing) {
  EXPECT_EQ(Status("search_device", OfDevice(0)), 0);
  Wait(1s);
  EXPECT_THAT(TakeSignals(), ElementsAre("finish/search_device"));
  EXPECT_EQ(RowCount<Device>(), 2u);
}

TEST_F(RealCameras, NoRowChangesByItself) {
  const auto seen = RowOf<MovementParameter>(1);
  vptzd::LivePositions positions(fleet(), simulation_->context().agenda);
  positions.Start();
  EXPECT_EQ(Status("config_devices"), 0);
  VptzCommand line;
  line.mutable_device_command()->set_address("rs232://ttyS0/9600/1/0");
  EXPECT_EQ(Status("update_all_rs232_devices", line), 0);
  Wait(10s);
  EXPECT_EQ(RowOf<MovementParameter>(1)->max(), seen->max());
  EXPECT_EQ(RowCount<Device>(), 2u);
  EXPECT_EQ(RowCount<Preset>(), 6u);
}

TEST_F(RealCameras, RowsAreDeletedByRemovalOnly) {
  EXPECT_EQ(Status("remove_device", OfDevice(1)), 0);
  EXPECT_EQ(RowCount<Device>(), 1u);
  EXPECT_EQ(Status("update_device_info", OfDevice(1)), -1004);
  Begin(Simulation::Real{});
  EXPECT_EQ(RowCount<Device>(), 1u);
}

TEST_F(RealCameras, RowsThatAreNotWholeStay) {
  vptzd::ChangeDevice(2, [](Device& device) { device.set_is_setting_applied(false); });
  Begin(Simulation::Real{});
  EXPECT_EQ(RowCount<Device>(), 2u);
  EXPECT_EQ(Status("update_device_info", OfDevice(2)), -1013);
}

TEST_F(RealCameras, AreSimulatedAgainAfterAStartThatSaysSo) {
  Begin(vptzd::BuiltInFleet(2));
  EXPECT_EQ(Status("update_device_info", OfDevice(1)), 0);
}

TEST_F(RealCameras, AreWithoutPowerAsLongAsTheyAreLoggedInToAndOutOfReach) {
  EXPECT_EQ(Status("get_devices_power_status"), 0);
  vptzd::StoreLogin(1, std::nullopt);
  vptzd::StoreLogin(2, std::nullopt);
  Begin(Simulation::Real{});
  EXPECT_EQ(Status("get_devices_power_status"), 1);
}

TEST_F(RealCameras, AreNotOnTheWebPage) { EXPECT_THAT(vptzd::ViewOf(fleet()), IsEmpty()); }

TEST_F(RealCameras, SufferNoSimulatedFaults) {
  const auto answer = vptzd::SimulateFaults(fleet(), R"({"faults": [{"kind": "drop"}]})");
  EXPECT_EQ(answer.status_code(), -1001);
  EXPECT_THAT(answer.nat_address(), HasSubstr("--cameras"));
  EXPECT_THAT(fleet().faults(), IsEmpty());
}

}  // namespace
}  // namespace vptz_test
