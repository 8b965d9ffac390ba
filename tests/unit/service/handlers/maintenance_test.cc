#include <string>

#include <gmock/gmock.h>
#include <vptz/model/device.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/protocol.h>
#include <vptz/model/ptz.h>

#include "fleet/positions.h"
#include "store/changes.h"
#include "stored_simulation.h"
#include "support/canary.h"

namespace vptz_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tutorial::VptzCommand;
using vptzd::FaultKind;

class MaintenanceTest : public StoredSimulation {
 protected:
  static VptzCommand LoginTo(unsigned device, const std::string& user, const std::string& password) {
    VptzCommand command = OfDevice(device);
    command.mutable_device_command()->set_user(user);
    command.mutable_device_command()->set_password(password);
    return command;
  }
  static VptzCommand Slave(int device, const std::string& address, const std::string& account = "admin",
                           const std::string& credentials = "admin") {
    VptzCommand command;
    command.mutable_slave_device_command()->set_device_id(device);
    command.mutable_slave_device_command()->set_address(address);
    command.mutable_slave_device_command()->set_account(account);
    command.mutable_slave_device_command()->set_credentials(credentials);
    return command;
  }
  static VptzCommand Turn(unsigned ptz, double pan) {
    VptzCommand command;
    command.mutable_ptz_command()->set_ptz_id(ptz);
    command.mutable_ptz_command()->set_pan_position(pan);
    return command;
  }
  double StoredPan(unsigned ptz) {
    const auto parameter = vptzd::FoundRow<MovementParameter>([&](MovementParameter** row) {
      return MovementParameter::QueryByName(row, RowOf<Ptz>(ptz)->pan_id(), "position");
    });
    return parameter->value();
  }
};

TEST_F(MaintenanceTest, LoginIsKeptAndLogoutTakesItAway) {
  EXPECT_EQ(Status("logout", OfDevice(1)), 0);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
  EXPECT_FALSE(RowOf<Device>(1)->authorized());
  EXPECT_EQ(RowOf<Device>(1)->authorization(), "");
  EXPECT_EQ(Status("login", LoginTo(1, "admin", VPTZ_TEST_CANARY)), -1007);
  EXPECT_EQ(Status("login", LoginTo(1, "", "")), -1007);
  EXPECT_EQ(Status("login", LoginTo(1, "admin", "admin")), 0);
  EXPECT_TRUE(RowOf<Device>(1)->authorized());
  EXPECT_EQ(vptzd::StoredCredentials(*RowOf<Device>(1)), (vptzd::Credentials{"admin", "admin"}));
}

TEST_F(MaintenanceTest, LoggedOutCameraIsLookedAtAndStoppedButNotMoved) {
  EXPECT_EQ(Status("logout", OfDevice(1)), 0);
  for (const char* method : {"absolute_move", "continuous_move", "goto_home", "set_home", "set_track_mode",
                             "set_preset", "goto_preset", "remove_preset", "update_presets"}) {
    EXPECT_EQ(Status(method, OfPreset(1, "preset1")), -1007) << method;
  }
  EXPECT_EQ(Status("ptz_stop", OfPreset(1, "")), 0);
  EXPECT_EQ(Status("get_ptz_profiles", OfDevice(1, "ptz0")), 0);
  EXPECT_EQ(Status("update_device_info_full", OfDevice(1)), -1007);
}

TEST_F(MaintenanceTest, CameraCanRefuseEveryLogin) {
  Put(FaultKind::kRefuseLogin);
  EXPECT_EQ(Status("login", LoginTo(1, "admin", "admin")), -1007);
  EXPECT_EQ(Status("login", LoginTo(2, "admin", "admin")), 0);
}

TEST_F(MaintenanceTest, ControlProtocolIsOneThatIsThere) {
  VptzCommand command = OfDevice(1);
  command.mutable_device_command()->set_protocol("VISCA_OVER_IP");
  EXPECT_EQ(Status("update_device_control_protocol", command), 0);
  EXPECT_EQ(RowOf<Device>(1)->protocol()->name(), "VISCA_OVER_IP");
  command.mutable_device_command()->set_protocol("visca_over_ip");
  EXPECT_EQ(Status("update_device_control_protocol", command), -1004);
  command.mutable_device_command()->set_protocol("RS232");
  EXPECT_EQ(Status("update_device_control_protocol", command), -1002);
}

TEST_F(MaintenanceTest, InfoTellsWhetherTheCameraAnswers) {
  Put(FaultKind::kOffline);
  EXPECT_EQ(Status("update_device_info", OfDevice(1)), -1010);
  EXPECT_FALSE(RowOf<Device>(1)->is_alive());
  fleet().SetFaults({});
  EXPECT_EQ(Status("update_device_info", OfDevice(1)), 0);
  EXPECT_TRUE(RowOf<Device>(1)->is_alive());
}

TEST_F(MaintenanceTest, FullInfoTellsWhatTheCameraIs) {
  fleet().CameraOfDevice(1)->description().firmware = "2.1";
  EXPECT_EQ(Status("update_device_info", OfDevice(1)), 0);
  EXPECT_EQ(RowOf<Device>(1)->firmware_version(), "1");
  EXPECT_EQ(Status("update_device_info_full", OfDevice(1)), 0);
  EXPECT_EQ(RowOf<Device>(1)->firmware_version(), "2.1");
  EXPECT_EQ(RowOf<Device>(1)->http_uri(), "http://192.0.2.1");
}

TEST_F(MaintenanceTest, SlaveDoesWhatItsLeaderDoesUntilTheCouplingEnds) {
  EXPECT_EQ(Status("set_slave_device", Slave(1, "192.0.2.2")), 0);
  EXPECT_EQ(Status("absolute_move", Turn(1, 20.0)), 0);
  Wait(1s);
  EXPECT_EQ(simulation_->Look(2).pan().position(), 20.0);
  Begin(vptzd::BuiltInFleet(2));
  EXPECT_EQ(Status("absolute_move", Turn(1, 20.0)), 0);
  Wait(1s);
  EXPECT_EQ(simulation_->Look(2).pan().position(), 20.0) << "the coupling outlasts the service";
  EXPECT_EQ(Status("set_slave_device", Slave(1, "", "", "")), 0);
  EXPECT_EQ(Status("absolute_move", Turn(1, 0.0)), 0);
  Wait(1s);
  EXPECT_EQ(simulation_->Look(2).pan().position(), 20.0);
}

TEST_F(MaintenanceTest, LoggedOutSlaveIsStoppedWithItsLeaderButNotMoved) {
  EXPECT_EQ(Status("set_slave_device", Slave(1, "192.0.2.2")), 0);
  VptzCommand drive;
  drive.mutable_ptz_command()->set_ptz_id(1);
  drive.mutable_ptz_command()->set_pan_velocity(10.0);
  EXPECT_EQ(Status("continuous_move", drive), 0);
  Wait(1s);
  EXPECT_EQ(Status("logout", OfDevice(2)), 0);
  VptzCommand stop;
  stop.mutable_ptz_command()->set_ptz_id(1);
  stop.mutable_ptz_command()->set_stop_pan(true);
  EXPECT_EQ(Status("ptz_stop", stop), 0);
  Wait(1s);
  EXPECT_EQ(simulation_->Look(2).pan().speed(), 0.0);
  const double stopped_at = simulation_->Look(2).pan().position();
  EXPECT_EQ(Status("absolute_move", Turn(1, 0.0)), 0);
  Wait(1s);
  EXPECT_EQ(simulation_->Look(2).pan().position(), stopped_at);
}

TEST_F(MaintenanceTest, SlaveIsAnotherDeviceThatTakesTheCredentials) {
  EXPECT_EQ(Status("set_slave_device", Slave(1, "192.0.2.9")), -1004);
  EXPECT_EQ(Status("set_slave_device", Slave(1, "192.0.2.201")), -1004) << "not known yet";
  EXPECT_EQ(Status("set_slave_device", Slave(9, "192.0.2.2")), -1004);
  EXPECT_EQ(Status("set_slave_device", Slave(1, "192.0.2.1")), -1002);
  EXPECT_EQ(Status("set_slave_device", Slave(1, "192.0.2.2", "admin", "guess")), -1007);
  EXPECT_EQ(Status("set_slave_device"), -1002);
}

TEST_F(MaintenanceTest, PtzStatusIsWrittenWhenItIsAskedFor) {
  EXPECT_EQ(Status("absolute_move", Turn(1, 20.0)), 0);
  simulation_->Wait(1s);
  EXPECT_EQ(StoredPan(1), 0.0);
  EXPECT_EQ(Status("update_ptz_status", OfDevice(1)), 0);
  EXPECT_EQ(StoredPan(1), 20.0);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
}

TEST_F(MaintenanceTest, PositionsAreWrittenTwiceASecondAndOnceAtRestWithoutASignal) {
  vptzd::LivePositions written(fleet(), simulation_->context().agenda);
  written.Start();
  EXPECT_EQ(Status("absolute_move", Turn(1, 100.0)), 0);
  Wait(499ms);
  EXPECT_EQ(StoredPan(1), 0.0);
  Wait(1ms);
  EXPECT_EQ(StoredPan(1), 37.5);
  Wait(499ms);
  EXPECT_EQ(StoredPan(1), 37.5);
  Wait(1ms);
  Wait(500ms);
  EXPECT_EQ(StoredPan(1), 100.0);
  EXPECT_THAT(TakeSignals(), IsEmpty());
}

TEST_F(MaintenanceTest, HomeAndPortsOutlastTheService) {
  vptzd::LivePositions written(fleet(), simulation_->context().agenda);
  VptzCommand port;
  port.mutable_usb_tty_device_params()->set_tty_device("/dev/ttyUSB3");
  EXPECT_EQ(Status("add_usb_tty_device", port), 0);
  EXPECT_EQ(Status("absolute_move", Turn(1, 20.0)), 0);
  Wait(1s);
  EXPECT_EQ(Status("set_home", Turn(1, 0.0)), 0);
  written.Write();
  Begin(vptzd::BuiltInFleet(2));
  EXPECT_THAT(fleet().ports().all(), ElementsAre("/dev/ttyUSB3"));
  EXPECT_EQ(simulation_->Look(1).pan().position(), 0.0);
  EXPECT_EQ(Status("goto_home", Turn(1, 0.0)), 0);
  Wait(1s);
  EXPECT_EQ(simulation_->Look(1).pan().position(), 20.0);
}

TEST_F(MaintenanceTest, TrackModeIsWrittenAndOutlastsTheService) {
  VptzCommand command = Turn(1, 0.0);
  command.mutable_ptz_command()->set_track_mode(4294967295u);
  EXPECT_EQ(Status("set_track_mode", command), 0);
  EXPECT_TRUE(RowOf<Device>(1)->tracking());
  Begin(vptzd::BuiltInFleet(2));
  EXPECT_EQ(simulation_->Look(1).track_mode(), 4294967295u);
  EXPECT_EQ(simulation_->Look(2).track_mode(), 0u);
}

TEST_F(MaintenanceTest, LineOfAllSerialDevicesIsSet) {
  VptzCommand add;
  add.mutable_device_command()->set_protocol("RS232");
  for (const char* uri : {"rs232:///dev/ttyS0/8N1/9600/1", "rs232:///dev/ttyS1/7E1/9600/1"}) {
    add.mutable_device_command()->set_address(uri);
    ASSERT_EQ(Status("add_device", add), 0);
  }
  VptzCommand command;
  command.mutable_device_command()->set_address("rs232:///dev/ttyS7/38400/3/0");
  EXPECT_EQ(Status("update_all_rs232_devices", command), 0);
  EXPECT_EQ(RowOf<Device>(3)->service_uri(), "rs232:///dev/ttyS7/8N1/38400/3");
  EXPECT_EQ(RowOf<Device>(4)->service_uri(), "rs232:///dev/ttyS7/7E1/38400/4");
  EXPECT_EQ(RowOf<Device>(1)->service_uri(), "http://192.0.2.1/onvif/device_service");
  command.mutable_device_command()->set_address("rs232:///dev/ttyS7/fast/3/0");
  EXPECT_EQ(Status("update_all_rs232_devices", command), -1002);
  command.mutable_device_command()->set_address("rs232:///dev/ttyS7/9601/3/0");
  EXPECT_EQ(Status("update_all_rs232_devices", command), -1006);
  EXPECT_EQ(RowOf<Device>(3)->service_uri(), "rs232:///dev/ttyS7/8N1/38400/3");
  command.mutable_device_command()->set_address("rs232://pty/0/3/0");
  EXPECT_EQ(Status("update_all_rs232_devices", command), 0);
  EXPECT_EQ(RowOf<Device>(3)->service_uri(), "rs232://pty/8N1/0/3") << "a port's own rate";
}

}  // namespace
}  // namespace vptz_test
