// Devices come and go: searches, additions, removals.
#include <atomic>

#include "integration/service_host.h"

namespace vptz_test {
namespace {

std::atomic<int> updates{0};
std::atomic<int> ends{0};

void CountUpdate(bus_client*, void*, const char*, const void*, std::int32_t) { ++updates; }
void CountEnd(bus_client*, void*, const char*, const void*, std::int32_t) { ++ends; }

class ServiceDiscovery : public ServiceHost {
 protected:
  ServiceDiscovery() {
    updates = 0;
    ends = 0;
    Serve();
    client_ = Connected();
    EXPECT_GE(client_->SubscribeUpdateDevicesSignal(&CountUpdate), 0);
    EXPECT_GE(client_->SubscribeSearchDeviceFinishSignal(&CountEnd), 0);
  }

  void Search(const std::string& protocols) {
    const int before = ends;
    EXPECT_EQ(client_->SearchDevice("", protocols), 0);
    EXPECT_TRUE(WaitUntil([&] { return ends > before; }));
  }

  std::unique_ptr<VptzClient> client_;
};

TEST_F(ServiceDiscovery, SearchFindsTheCamerasOfItsProtocolsAndTellsTheEnd) {
  Search("ONVIF,NDIHX");
  EXPECT_TRUE(WaitUntil([] { return updates == 2; })) << updates;
  EXPECT_EQ(Value("SELECT count(*) FROM device"), "4");
  EXPECT_EQ(Value("SELECT count(*) FROM device d JOIN protocol p ON p.id = d.protocol WHERE p.name = 'NDIHX'"),
            "1");
  EXPECT_EQ(
      Value("SELECT min(preset_id) FROM preset s JOIN ptz p ON p.id = s.ptz JOIN device d ON d.id = p.device "
            "JOIN protocol r ON r.id = d.protocol WHERE r.name = 'NDIHX'"),
      "11");
}

TEST_F(ServiceDiscovery, SearchWithoutProtocolsFindsTheUsualOnesAndNothingTwice) {
  Search("");
  EXPECT_EQ(Value("SELECT count(*) FROM device"), "5");
  Search("");
  EXPECT_EQ(Value("SELECT count(*) FROM device"), "5");
}

TEST_F(ServiceDiscovery, SecondSearchIsBusyUntilTheFirstHasEnded) {
  EXPECT_EQ(client_->SearchDevice("", "ONVIF"), 0);
  EXPECT_EQ(client_->SearchDevice("", "ONVIF"), -1008);
  EXPECT_TRUE(WaitUntil([&] { return ends == 1; }));
  EXPECT_EQ(client_->SearchDevice("", "ONVIF"), 0);
  EXPECT_TRUE(WaitUntil([&] { return ends == 2; }));
}

TEST_F(ServiceDiscovery, FoundCameraMovesOnceTheServiceIsLoggedIn) {
  Search("QX310");
  const std::string id = Value("SELECT d.id FROM device d WHERE d.model_name = 'QX310'");
  const unsigned device = static_cast<unsigned>(std::stoul(id));
  const unsigned ptz = static_cast<unsigned>(std::stoul(Value("SELECT id FROM ptz WHERE device = " + id)));
  EXPECT_EQ(client_->AbsolutePanMove(ptz, 10, 100), -1007);
  EXPECT_EQ(client_->Login(device, "admin", "wrong"), -1007);
  EXPECT_EQ(Value("SELECT authorized || authorization FROM device WHERE id = " + id), "'0'");
  EXPECT_EQ(client_->Login(device, "admin", "admin"), 0);
  EXPECT_EQ(Value("SELECT authorized || authorization FROM device WHERE id = " + id),
            "'1{\"account\":\"admin\",\"credentials\":\"admin\"}'");
  EXPECT_EQ(client_->AbsolutePanMove(ptz, 10, 100), 0);
  EXPECT_EQ(client_->Logout(device), 0);
  EXPECT_EQ(client_->AbsolutePanMove(ptz, 20, 100), -1007);
  EXPECT_EQ(service_->Errors().find("wrong"), std::string::npos);
}

TEST_F(ServiceDiscovery, AddedDevicesHaveRowsAndGoWithThem) {
  EXPECT_EQ(client_->AddDevice("02:00:00:00:00:01", "Balcony", "VISCA_OVER_IP", "198.51.100.7", "u", "p"), 0);
  EXPECT_EQ(client_->AddDevice("", "", "ONVIF", "198.51.100.7", "", ""), -1008);
  EXPECT_EQ(client_->AddRS232Device("/dev/ttyS1", "Rostrum", "8N1", 9600, 1), 0);
  EXPECT_EQ(client_->AddOnvifDeviceManually("http://198.51.100.8/onvif/device_service", "u", "p"), 0);
  EXPECT_EQ(client_->AddDevice("", "", "NO_SUCH", "198.51.100.9", "", ""), -1004);
  EXPECT_TRUE(WaitUntil([] { return updates == 3; })) << updates;
  EXPECT_EQ(Value("SELECT host_name || mac || service_uri FROM device WHERE id = 4"),
            "'Rostrum/dev/ttyS1rs232:///dev/ttyS1/8N1/9600/1'");
  EXPECT_EQ(client_->UpdateAllRS232Devices("/dev/ttyS2", 38400, 5, 0), 0);
  EXPECT_EQ(Value("SELECT service_uri FROM device WHERE id = 4"), "'rs232:///dev/ttyS2/8N1/38400/5'");
  EXPECT_EQ(client_->RemoveDevice(3), 0);
  EXPECT_EQ(client_->RemoveDevice(3), -1004);
  EXPECT_EQ(Value("SELECT count(*) FROM device"), "4");
  EXPECT_EQ(Value("SELECT count(*) FROM movement"), "12");
}

TEST_F(ServiceDiscovery, RemovedCameraIsFoundAgainByASearchOnly) {
  EXPECT_EQ(client_->RemoveDevice(2), 0);
  EXPECT_EQ(End(), 0);
  Serve();
  client_ = Connected();
  EXPECT_GE(client_->SubscribeSearchDeviceFinishSignal(&CountEnd), 0);
  EXPECT_EQ(Value("SELECT count(*) FROM device"), "1");
  Search("ONVIF");
  EXPECT_EQ(Value("SELECT count(*) FROM device WHERE address = '192.0.2.2'"), "1");
}

}  // namespace
}  // namespace vptz_test
