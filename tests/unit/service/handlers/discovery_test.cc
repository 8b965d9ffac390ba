#include <string>

#include <gmock/gmock.h>
#include <vptz/model/device.h>
#include <vptz/model/device_type.h>
#include <vptz/model/movement.h>
#include <vptz/model/protocol.h>

#include "stored_simulation.h"
#include "support/canary.h"

namespace vptz_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tutorial::VptzCommand;

class DiscoveryTest : public StoredSimulation {
 protected:
  static VptzCommand SearchFor(const std::string& protocols) {
    VptzCommand command;
    command.mutable_device_command()->set_protocol(protocols);
    return command;
  }
  static VptzCommand Added(const std::string& protocol, const std::string& address,
                           const std::string& user = "", const std::string& password = "") {
    VptzCommand command = SearchFor(protocol);
    command.mutable_device_command()->set_address(address);
    command.mutable_device_command()->set_user(user);
    command.mutable_device_command()->set_password(password);
    return command;
  }
};

TEST_F(DiscoveryTest, SearchTellsEachCameraAndItsEnd) {
  EXPECT_EQ(Status("search_device", SearchFor("ONVIF, NDI,NO_SUCH")), 0);
  EXPECT_EQ(RowCount<Device>(), 2U);
  Wait(334ms);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
  EXPECT_EQ(RowCount<Device>(), 3U);
  Wait(334ms);
  Wait(334ms);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices", "finish/search_device"));
  EXPECT_EQ(RowOf<Device>(3)->protocol()->name(), "ONVIF");
  EXPECT_EQ(RowOf<Device>(4)->protocol()->name(), "NDI");
  EXPECT_FALSE(RowOf<Device>(4)->authorized());
}

TEST_F(DiscoveryTest, EndOfASearchTellsHowManyCamerasWereFound) {
  EXPECT_EQ(Status("search_device", SearchFor("ONVIF,NDI")), 0);
  for (int i = 0; i < 3; ++i) Wait(334ms);
  tutorial::VptzResponse end;
  ASSERT_TRUE(end.ParseFromString(TakePayloads().back()));
  EXPECT_EQ(end.status_code(), 2);
}

TEST_F(DiscoveryTest, EndOfASearchTellsThatACameraCouldNotBeStored) {
  EXPECT_EQ(Status("search_device", SearchFor("ONVIF,NDI")), 0);
  Wait(334ms);
  VptzModel::Instance().Release();
  Wait(334ms);
  Wait(334ms);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices", "finish/search_device"));
  tutorial::VptzResponse end;
  ASSERT_TRUE(end.ParseFromString(TakePayloads().back()));
  EXPECT_EQ(end.status_code(), -1011);
}

TEST_F(DiscoveryTest, SignalOfAChangeTellsTheDeviceWhereItIsOne) {
  const auto told = [this] {
    tutorial::DeviceCommand changed;
    const std::string payload = TakePayloads().at(0);
    EXPECT_TRUE(changed.ParseFromString(payload));
    tutorial::DeviceCommand expected;
    if (changed.has_device_id()) expected.set_device_id(changed.device_id());
    EXPECT_EQ(payload, expected.SerializeAsString()) << "nothing but the id";
    return changed.device_id();
  };
  EXPECT_EQ(Status("add_device", Added("ONVIF", "198.51.100.7")), 0);
  EXPECT_EQ(told(), 3U);
  EXPECT_EQ(Status("set_preset", OfPreset(2, "door")), 0);
  EXPECT_EQ(told(), 2U);
  EXPECT_EQ(Status("logout", OfDevice(2)), 0);
  EXPECT_EQ(told(), 2U);
  EXPECT_EQ(Status("remove_device", OfDevice(3)), 0);
  EXPECT_EQ(told(), 3U) << "the id that it had";
  Put(vptzd::FaultKind::kOffline);
  EXPECT_EQ(Status("update_device_info", OfDevice(1)), -1010);
  EXPECT_EQ(told(), 1U);
  fleet().SetFaults({});
  EXPECT_EQ(Status("config_devices"), 0);
  EXPECT_EQ(TakePayloads(), std::vector<std::string>{""});
}

TEST_F(DiscoveryTest, SearchThatFindsNothingTakesItsTimeAsWell) {
  EXPECT_EQ(Status("search_device", SearchFor("RS232")), 0);
  Wait(999ms);
  EXPECT_THAT(TakeSignals(), IsEmpty());
  EXPECT_EQ(Status("search_device", SearchFor("RS232")), -1008);
  Wait(1ms);
  EXPECT_THAT(TakeSignals(), ElementsAre("finish/search_device"));
  EXPECT_EQ(Status("search_device", SearchFor("RS232")), 0);
}

TEST_F(DiscoveryTest, SearchDoesNotFindACameraThatDoesNotAnswer) {
  fleet().SetFaults({{vptzd::FaultKind::kOffline, 3, "", "", {}}});
  EXPECT_EQ(Status("search_device", SearchFor("ONVIF")), 0);
  Wait(1s);
  EXPECT_EQ(RowCount<Device>(), 2U);
}

TEST_F(DiscoveryTest, CameraAddedDuringASearchIsThereOnce) {
  EXPECT_EQ(Status("search_device", SearchFor("ONVIF")), 0);
  EXPECT_EQ(Status("add_device", Added("ONVIF", "192.0.2.201", "admin", "admin")), 0);
  Wait(1s);
  Wait(1s);
  EXPECT_EQ(RowCount<Device>(), 3U);
  EXPECT_TRUE(RowOf<Device>(3)->authorized());
}

TEST_F(DiscoveryTest, CameraOfTheFleetIsAddedWithItsOwnPasswordOnly) {
  EXPECT_EQ(Status("add_onvif_device_manually", Added("", "192.0.2.201", "admin", VPTZ_TEST_CANARY)), -1007);
  EXPECT_EQ(RowCount<Device>(), 2U);
  EXPECT_EQ(Status("add_onvif_device_manually", Added("", "192.0.2.201")), 0);
  EXPECT_FALSE(RowOf<Device>(3)->authorized());
}

TEST_F(DiscoveryTest, UnknownAddressGetsACameraOfItsOwn) {
  EXPECT_EQ(Status("add_device", Added("VISCA_OVER_IP", "198.51.100.1:1259", "u", VPTZ_TEST_CANARY)), 0);
  const auto device = RowOf<Device>(3);
  EXPECT_EQ(device->address(), "198.51.100.1");
  EXPECT_EQ(device->service_uri(), "visca://198.51.100.1:52381");
  EXPECT_EQ(device->authorization(), "{\"account\":\"u\",\"credentials\":\"" VPTZ_TEST_CANARY "\"}");
  EXPECT_NE(fleet().CameraOfDevice(3), nullptr);
  EXPECT_EQ(Status("add_device", Added("NDI", "198.51.100.1")), -1008);
}

TEST_F(DiscoveryTest, SerialDeviceIsAController) {
  EXPECT_EQ(Status("add_device", Added("RS232", "rs232:///dev/ttyS0/8N1/9600/1")), 0);
  EXPECT_EQ(RowOf<Device>(3)->device_type()->name(), "controller");
  EXPECT_EQ(RowOf<Device>(3)->address(), "/dev/ttyS0");
  EXPECT_EQ(Status("add_device", Added("RS232", "rs232:///dev/ttyS0/8N1/9600/1")), -1008);
  EXPECT_EQ(Status("add_device", Added("RS232", "rs232:///dev/ttyS0/8N1/9600/2")), 0);
  for (const char* wrong : {"", "/dev/ttyS0", "rs232://8N1/9600/1", "rs232:///dev/ttyS0/8N1/9600/x"}) {
    EXPECT_EQ(Status("add_device", Added("RS232", wrong)), -1002) << wrong;
  }
}

TEST_F(DiscoveryTest, AKnownHardwareAddressIsDeclaredAnew) {
  const std::string mac = RowOf<Device>(1)->mac();
  VptzCommand command = Added("VISCA_OVER_IP", "192.0.2.99", "admin", "admin");
  command.mutable_device_command()->set_mac(mac);
  command.mutable_device_command()->set_name("Gallery");
  EXPECT_EQ(Status("add_device", command), 0);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
  EXPECT_EQ(RowCount<Device>(), 2U);
  const auto row = RowOf<Device>(1);
  EXPECT_EQ(row->address(), "192.0.2.99");
  EXPECT_EQ(row->host_name(), "Gallery");
  EXPECT_EQ(row->protocol()->name(), "VISCA_OVER_IP");
  EXPECT_EQ(row->mac(), mac);
  EXPECT_EQ(Status("add_device", command), 0) << "at its own address";
}

TEST_F(DiscoveryTest, ADeclarationIsRefusedWithAWrongPasswordAndAtAnothersAddress) {
  const std::string mac = RowOf<Device>(1)->mac();
  VptzCommand command = Added("ONVIF", "192.0.2.99", "admin", VPTZ_TEST_CANARY);
  command.mutable_device_command()->set_mac(mac);
  EXPECT_EQ(Status("add_device", command), -1007);
  command = Added("ONVIF", RowOf<Device>(2)->address(), "admin", "admin");
  command.mutable_device_command()->set_mac(mac);
  EXPECT_EQ(Status("add_device", command), -1008);
  EXPECT_EQ(RowOf<Device>(1)->address(), "192.0.2.1");
  EXPECT_THAT(TakeSignals(), IsEmpty());
}

TEST_F(DiscoveryTest, UnusableTextsAreRefusedAndAddNothing) {
  EXPECT_EQ(Status("add_device", Added("ONVIF", "")), -1002);
  EXPECT_EQ(Status("add_device", Added("ONVIF", std::string(256, 'a'))), -1002);
  EXPECT_EQ(Status("add_device", Added("ONVIF", std::string("a\0b", 3))), -1002);
  EXPECT_EQ(Status("add_device", Added("ONVIF", "198.51.100.1", "\xff", "p")), -1002);
  EXPECT_EQ(Status("add_device", Added("", "198.51.100.1")), -1004);
  EXPECT_EQ(Status("add_device"), -1002);
  EXPECT_EQ(RowCount<Device>(), 2U);
  EXPECT_THAT(TakeSignals(), IsEmpty());
}

TEST_F(DiscoveryTest, RemovalTakesEverythingOfTheDevice) {
  EXPECT_EQ(Status("remove_device", OfDevice(1)), 0);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
  EXPECT_EQ(RowCount<Device>(), 1U);
  EXPECT_EQ(RowCount<Movement>(), 3U);
  EXPECT_EQ(Status("login", OfDevice(1)), -1004);
  EXPECT_EQ(Status("remove_device", OfDevice(1)), -1004);
}

TEST_F(DiscoveryTest, SomeDevicesMayNotBeRemoved) {
  fleet().CameraOfDevice(1)->description().removable = false;
  EXPECT_EQ(Status("remove_device", OfDevice(1)), -1012);
  EXPECT_EQ(RowCount<Device>(), 2U);
}

TEST_F(DiscoveryTest, WithoutADatabaseNothingIsAdded) {
  VptzModel::Instance().Release();
  EXPECT_EQ(Status("remove_device", OfDevice(1)), -1011);
  EXPECT_NE(fleet().CameraOfDevice(1), nullptr);
}

TEST_F(DiscoveryTest, SerialPortHasOneNameWithAndWithoutItsFolder) {
  EXPECT_EQ(Status("add_device", Added("RS232", "rs232://ttyS0/8N1/9600/1")), 0);
  EXPECT_EQ(Status("add_device", Added("RS232", "rs232:///dev/ttyS0/8N1/9600/1")), -1008);
  EXPECT_EQ(Status("add_device", Added("RS232", "rs232:///dev/ttyS0/8N1/9600/2")), 0);
  EXPECT_EQ(RowOf<Device>(3)->service_uri(), "rs232://ttyS0/8N1/9600/1") << "as it was given";
  EXPECT_EQ(RowOf<Device>(4)->service_uri(), "rs232:///dev/ttyS0/8N1/9600/2");
  Begin(vptzd::BuiltInFleet(2));
  EXPECT_EQ(Status("add_device", Added("RS232", "rs232:///dev/ttyS0/8N1/9600/1")), -1008);
}

TEST_F(DiscoveryTest, BaudRateIsOneThatSerialLinesKnow) {
  EXPECT_EQ(Status("add_device", Added("RS232", "rs232://ttyS0/8N1/9601/1")), -1006);
  EXPECT_EQ(RowCount<Device>(), 2U);
  int unit = 0;
  for (const char* rate : {"0", "300", "9600", "38400", "115200", "921600", "4000000"}) {
    const std::string address = std::string("rs232://ttyS0/8N1/") + rate + "/" + std::to_string(++unit);
    EXPECT_EQ(Status("add_device", Added("RS232", address)), 0) << rate;
  }
}

TEST_F(DiscoveryTest, CameraWithoutAHardwareAddressIsDeclaredAnewByItsUuid) {
  EXPECT_EQ(Status("add_device", Added("ONVIF", "198.51.100.7")), 0);
  const std::string uuid = RowOf<Device>(3)->uuid();
  ASSERT_EQ(RowOf<Device>(3)->mac(), "");
  VptzCommand rename = Added("ONVIF", "198.51.100.7");
  rename.mutable_device_command()->set_mac(uuid);
  rename.mutable_device_command()->set_name("Balcony");
  EXPECT_EQ(Status("add_device", rename), 0);
  EXPECT_EQ(RowCount<Device>(), 3U);
  EXPECT_EQ(RowOf<Device>(3)->host_name(), "Balcony");
  EXPECT_EQ(Status("update_device_info_full", OfDevice(3)), 0);
  EXPECT_EQ(RowOf<Device>(3)->mac(), "") << "the uuid is no hardware address";
  rename.mutable_device_command()->set_address("198.51.100.8");
  EXPECT_EQ(Status("add_device", rename), 0);
  EXPECT_EQ(RowOf<Device>(3)->address(), "198.51.100.8");
  rename.mutable_device_command()->set_mac(RowOf<Device>(1)->uuid());
  EXPECT_EQ(Status("add_device", rename), -1008) << "a camera with a hardware address goes by this alone";
}

TEST_F(DiscoveryTest, OfTwoCamerasWithOneUuidTheOneAtTheAddressIsDeclaredAnew) {
  EXPECT_EQ(Status("add_device", Added("ONVIF", "198.51.100.7")), 0);
  VptzCommand command = Added("ONVIF", "198.51.100.8");
  command.mutable_device_command()->set_mac(RowOf<Device>(3)->uuid());
  EXPECT_EQ(Status("add_device", command), 0);  // the camera has moved
  EXPECT_EQ(Status("add_device", Added("ONVIF", "198.51.100.7")), 0);
  ASSERT_EQ(RowOf<Device>(4)->uuid(), RowOf<Device>(3)->uuid());
  command.mutable_device_command()->set_address("198.51.100.7");
  command.mutable_device_command()->set_name("Balcony");
  EXPECT_EQ(Status("add_device", command), 0);
  EXPECT_EQ(RowOf<Device>(4)->host_name(), "Balcony");
}

}  // namespace
}  // namespace vptz_test
