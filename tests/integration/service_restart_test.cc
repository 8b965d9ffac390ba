// What the service finds again in its database.
#include "integration/service_host.h"

namespace vptz_test {
namespace {

class ServiceRestart : public ServiceHost {
 protected:
  void KillAndServe() {
    EXPECT_EQ(End(SIGKILL), 128 + SIGKILL);
    Serve();
  }
};

TEST_F(ServiceRestart, KilledServiceHasLostNothing) {
  Serve();
  auto client = Connected();
  EXPECT_EQ(client->SetPreset(1, "Door", "door"), 0);
  EXPECT_EQ(client->RemovePreset(1, "preset2"), 0);
  EXPECT_EQ(client->Logout(2), 0);
  EXPECT_EQ(client->AddDevice("", "Balcony", "ONVIF", "198.51.100.7", "u", "p"), 0);
  EXPECT_EQ(client->AddRS232Device("/dev/ttyS1", "Rostrum", "8N1", 9600, 1), 0);
  EXPECT_EQ(client->SetBrightness(1, 77), 0);
  EXPECT_EQ(client->SetTrackMode(1, 3), 0);
  client.reset();
  KillAndServe();
  client = Connected();
  EXPECT_EQ(client->GotoPreset(1, "door", 100, 80, 8), 0);
  EXPECT_EQ(client->GotoPreset(1, "preset2", 100, 80, 8), -1004);
  EXPECT_EQ(client->AbsolutePanMove(2, 1, 1), -1007);
  EXPECT_EQ(client->AbsolutePanMove(3, 1, 1), 0);
  EXPECT_EQ(client->AbsolutePanMove(4, 1, 1), 0);
  EXPECT_EQ(client->Logout(3), 0);
  EXPECT_EQ(client->Login(3, "u", "q"), -1007);
  EXPECT_EQ(client->Login(3, "u", "p"), 0);
  VptzMediaData media;
  EXPECT_EQ(client->QueryMediaProfiles(1, "main", &media), 0);
  EXPECT_EQ(media.brightness.value, 77);
  VptzPtzData ptz;
  EXPECT_EQ(client->QueryPtzProfiles(1, "ptz0", &ptz), 0);
  EXPECT_EQ(ptz.track_mode, 3);
}

TEST_F(ServiceRestart, PositionsReachTheDatabaseInMotionAndAtRest) {
  Serve();
  const auto client = Connected();
  const std::string query =
      "SELECT value FROM movement_parameter m JOIN ptz p ON p.pan = m.movement WHERE p.id = 1 AND m.name = "
      "'position'";
  const auto stored = [&] { return std::stod(Value(query)); };
  EXPECT_EQ(client->AbsolutePanMove(1, 60, 40), 0);
  EXPECT_TRUE(WaitUntil([&] { return stored() > 0; }));
  EXPECT_LT(stored(), 60);
  EXPECT_TRUE(WaitUntil([&] { return stored() == 60; }));
}

TEST_F(ServiceRestart, EndsInTheMiddleOfEverything) {
  Serve();
  const auto client = Connected();
  EXPECT_EQ(client->ContinuousPanMove(1, 5), 0);
  EXPECT_EQ(client->SearchDevice("", ""), 0);
  EXPECT_EQ(End(), 0);
  EXPECT_EQ(Value("PRAGMA integrity_check"), "'ok'");
}

}  // namespace
}  // namespace vptz_test
