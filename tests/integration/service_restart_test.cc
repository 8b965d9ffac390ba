// What the service finds again in its database.
#include <atomic>
#include <filesystem>

#include "integration/service_host.h"

#include <vptz/vptz.pb.h>

namespace vptz_test {
namespace {

std::atomic<int> search_result{0};

void KeepSearchResult(bus_client*, void*, const char*, const void* payload, std::int32_t length) {
  tutorial::VptzResponse result;
  if (result.ParseFromArray(payload, length)) search_result = result.status_code();
}

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

// At its first start, in the middle of storing its cameras.
TEST_F(ServiceRestart, ServiceThatIsKilledWhileItStoresLeavesAllCamerasOrNone) {
  int none = 0;
  for (int round = 0; round < 12 && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    std::filesystem::remove(file_);
    std::filesystem::remove(file_ + "-journal");
    service_.emplace(
        std::vector<std::string>{VPTZD, "--bus", broker_.address(), "--database", file_, "--cameras", "64"});
    ASSERT_TRUE(WaitUntil([&] { return std::filesystem::exists(file_); }));
    const auto moment = std::chrono::steady_clock::now() + std::chrono::milliseconds(8 * round);
    WaitUntil([&] { return std::chrono::steady_clock::now() >= moment; });
    End(SIGKILL);
    RawDatabase database(file_);
    EXPECT_EQ(database.Value("PRAGMA integrity_check"), "'ok'");
    if (database.Value("SELECT count(*) FROM sqlite_master WHERE name = 'device'") == "0") continue;
    const std::string devices = database.Value("SELECT count(*) FROM device");
    EXPECT_THAT(devices, testing::AnyOf("0", "64"));
    if (devices == "0") ++none;
    EXPECT_EQ(database.Value("SELECT count(*) FROM preset"), devices == "0" ? "0" : "192");
  }
  Serve({"--cameras", "64"});
  EXPECT_EQ(Connected()->AbsolutePanMove(64, 1, 1), 0);
  RecordProperty("killed_before_the_cameras_were_stored", none);
}

TEST_F(ServiceRestart, TellsAfterASecondWhatKeepsItFromStarting) {
  Serve({"--cameras", "1"});
  EXPECT_EQ(service_->Errors().find("..."), std::string::npos) << "nothing has kept it";
  EXPECT_EQ(End(), 0);
  RawDatabase reader(file_);  // so that nothing can be committed
  reader.Execute("BEGIN; SELECT count(*) FROM device;");
  service_.emplace(
      std::vector<std::string>{VPTZD, "--bus", broker_.address(), "--database", file_, "--cameras", "9"});
  const auto told = [&](const char* line) { return service_->Errors().find(line) != std::string::npos; };
  EXPECT_TRUE(WaitUntil([&] { return told("vptzd: opening the database ...\n"); })) << service_->Errors();
  reader.Execute("COMMIT");
  EXPECT_TRUE(WaitUntil([&] { return Told("with 9 cameras"); })) << service_->Errors();
}

// Files that hardly grow: a transaction's journal finds no room.
TEST_F(ServiceRestart, ServiceStartsAndMovesOnAFullDiskAndRefusesWhatItCannotStore) {
  Serve();
  auto client = Connected();
  EXPECT_EQ(client->AbsolutePanMove(1, 60, 100), 0);  // so that the next start has a position to write
  const std::string moved = "SELECT count(*) FROM movement_parameter WHERE name = 'position' AND value = 60";
  EXPECT_TRUE(WaitUntil([&] { return Value(moved) == "1"; }));
  client.reset();
  EXPECT_EQ(End(), 0);
  service_.emplace(std::vector<std::string>{"sh", "-c", "trap '' XFSZ; ulimit -f 8; exec \"$@\"", "sh", VPTZD,
                                            "--bus", broker_.address(), "--database", file_, "--cameras", "2"},
                   std::vector<std::string>{"ZERK_LOG_LEVEL=emerg"});
  ASSERT_TRUE(WaitUntil([&] { return Told("with 2 cameras") || !service_->Running(); }));
  ASSERT_TRUE(service_->Running()) << service_->Errors();
  client = Connected();
  EXPECT_EQ(client->AbsolutePanMove(1, 30, 100), 0);
  VptzPtzData ptz;
  EXPECT_TRUE(WaitUntil([&] {
    EXPECT_EQ(client->QueryPtzProfiles(1, "ptz0", &ptz), 0);
    return ptz.pan.position.value == 30;
  }));
  EXPECT_EQ(client->SetPreset(1, "Door", "door"), -1011);
  EXPECT_EQ(client->GotoPreset(1, "door", 100, 80, 8), -1004);
  EXPECT_EQ(client->AddDevice("", "Balcony", "ONVIF", "198.51.100.7", "", ""), -1011);
  EXPECT_GE(client->SubscribeSearchDeviceFinishSignal(&KeepSearchResult), 0);
  EXPECT_EQ(client->SearchDevice("", "ONVIF"), 0);
  EXPECT_TRUE(WaitUntil([] { return search_result != 0; }));
  EXPECT_EQ(search_result, -1011);
  EXPECT_EQ(End(), 0);
  EXPECT_EQ(Value("PRAGMA integrity_check"), "'ok'");
  EXPECT_EQ(Value("SELECT count(*) FROM device"), "2");
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

TEST_F(ServiceRestart, WithoutSimulatedCamerasTheRowsStayAndNothingMoves) {
  Serve({"--cameras", "3"});
  EXPECT_EQ(End(), 0);
  const std::string all = "SELECT group_concat(name || value || min || max) FROM movement_parameter";
  const std::string before = Value(all);
  ServeReal();
  EXPECT_TRUE(Told("with 3 cameras"));
  const auto client = Connected();
  EXPECT_EQ(client->GetStatus(), 0);
  EXPECT_EQ(client->AbsolutePanMove(1, 60, 100), -1013);
  EXPECT_EQ(client->AddOnvifDeviceManually("192.0.2.99", "", ""), -1013);
  service_->Signal(SIGHUP);
  EXPECT_EQ(client->GetStatus(), 0);
  EXPECT_EQ(End(), 0);
  EXPECT_EQ(Value(all), before);
  EXPECT_EQ(Value("SELECT count(*) FROM device"), "3");
}

}  // namespace
}  // namespace vptz_test
