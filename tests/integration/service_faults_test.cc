// Faults on demand, and cameras as a fleet file describes them.
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>

#include <vptz/vptz.pb.h>

#include "integration/service_host.h"
#include "support/canary.h"

namespace vptz_test {
namespace {

using testing::HasSubstr;

class ServiceFaults : public ServiceHost {
 protected:
  // Puts other faults in force while the service runs.
  void Now(const std::string& faults, int count) {
    WriteFleet(faults);
    const std::string line = "vptzd: " + std::to_string(count) + " faults in force";
    service_->Signal(SIGHUP);
    EXPECT_TRUE(WaitUntil([&] { return Told(line); })) << service_->Errors();
  }
};

TEST_F(ServiceFaults, RepliesAreLostEnlargedAndGarbled) {
  ServeFleet(R"({"faults": [{"kind": "drop", "method": "get_status"},
                            {"kind": "oversize", "method": "goto_home"},
                            {"kind": "garble", "method": "set_home"}]})");
  const auto client = Connected();
  EXPECT_EQ(client->GetStatus(1), -ETIMEDOUT);
  EXPECT_EQ(client->GotoHome(1, 1, 1, 1), -EMSGSIZE);
  EXPECT_EQ(client->SetHome(1), 0) << "a reply that cannot be read holds no status";
  EXPECT_EQ(client->GetDevicesPowerStatus(), 1);
  EXPECT_EQ(End(), 0);
}

TEST_F(ServiceFaults, AreExchangedWhileTheServiceRuns) {
  ServeFleet("{}");
  const auto client = Connected();
  EXPECT_EQ(client->AbsolutePanMove(1, 5, 5), 0);
  Now(R"({"faults": [{"kind": "offline", "camera": 1}, {"kind": "refuse_login", "camera": "camera-2"}]})", 2);
  EXPECT_EQ(client->AbsolutePanMove(1, 5, 5), -1010);
  EXPECT_EQ(client->AbsolutePanMove(2, 5, 5), 0);
  EXPECT_EQ(client->UpdateDeviceInfo(1), -1010);
  EXPECT_EQ(Value("SELECT is_alive FROM device WHERE id = 1"), "0");
  EXPECT_EQ(client->Login(2, "admin", "admin"), -1007);
  Now("{}", 0);
  EXPECT_EQ(client->AbsolutePanMove(1, 5, 5), 0);
  EXPECT_EQ(client->UpdateDeviceInfo(1), 0);
  EXPECT_EQ(Value("SELECT is_alive FROM device WHERE id = 1"), "1");
}

TEST_F(ServiceFaults, AreSwitchedByACallWhileTheServiceRuns) {
  ServeFleet(R"({"faults": [{"kind": "offline", "camera": 1}]})");
  const auto client = Connected();
  const auto in_force_after = [&](const std::string& text) {
    char bytes[65536];
    int length = sizeof bytes;
    EXPECT_EQ(
        client->CallSync("simulate_faults", text.data(), static_cast<int>(text.size()), bytes, &length, 5), 0);
    tutorial::VptzResponse answer;
    EXPECT_TRUE(answer.ParseFromArray(bytes, length));
    EXPECT_EQ(answer.status_code(), 0);
    return answer.nat_address();
  };
  EXPECT_EQ(in_force_after(""), R"({"faults":[{"kind":"offline","camera":1}]})");
  EXPECT_EQ(client->AbsolutePanMove(1, 5, 5), -1010);
  in_force_after(R"({"faults": [{"kind": "drop", "method": "get_status"}]})");
  EXPECT_EQ(client->AbsolutePanMove(1, 5, 5), 0);
  EXPECT_EQ(client->GetStatus(1), -ETIMEDOUT);
  EXPECT_EQ(in_force_after(R"({"faults": []})"), R"({"faults":[]})");
  EXPECT_EQ(client->GetStatus(1), 0);
}

TEST_F(ServiceFaults, StayAsTheyAreWhenTheFileTurnsBad) {
  ServeFleet(R"({"faults": [{"kind": "offline", "camera": 1}]})");
  WriteFleet("{\n\"faults\": 3}");
  service_->Signal(SIGHUP);
  EXPECT_TRUE(WaitUntil([&] { return service_->Errors().find("stay as they are") != std::string::npos; }));
  EXPECT_THAT(service_->Errors(), HasSubstr("fleet.json:2:"));
  EXPECT_EQ(Connected()->AbsolutePanMove(1, 5, 5), -1010);
}

TEST_F(ServiceFaults, CameraLosesItsPowerInTheMove) {
  ServeFleet(R"({"faults": [{"kind": "lose_power", "camera": 1, "milliseconds": 300}]})");
  const auto client = Connected();
  EXPECT_EQ(client->AbsolutePanMove(1, 170, 100), 0);
  EXPECT_TRUE(WaitUntil([&] { return client->GetDevicesPowerStatus() == 0; }));
  EXPECT_EQ(client->AbsolutePanMove(1, 0, 100), -1009);
  VptzPtzData ptz;
  EXPECT_EQ(client->QueryPtzProfiles(1, "ptz0", &ptz), 0);
  EXPECT_GT(ptz.pan.position.value, 0);
  EXPECT_LT(ptz.pan.position.value, 170);
}

TEST_F(ServiceFaults, CameraForgetsItsPresets) {
  ServeFleet(R"({"faults": [{"kind": "forget_presets", "camera": 1}]})");
  const auto client = Connected();
  EXPECT_EQ(client->GotoPreset(1, "preset1", 100, 80, 8), -1004);
  EXPECT_EQ(client->UpdatePresets(1), 0);
  EXPECT_EQ(Value("SELECT count(*) FROM preset WHERE ptz = 1"), "0");
}

TEST_F(ServiceFaults, SlowCameraKeepsNobodyElseWaiting) {
  ServeFleet(R"({"faults": [{"kind": "delay", "camera": 1, "milliseconds": 60000}]})");
  const auto client = Connected();
  EXPECT_EQ(client->AbsolutePanMove(1, 5, 5, 1), -ETIMEDOUT);
  EXPECT_LT(Took([&] { EXPECT_EQ(client->AbsolutePanMove(2, 5, 5), 0); }), kAtOnce);
  EXPECT_EQ(End(), 0);
}

TEST_F(ServiceFaults, MotionOfAClientThatHasGoneIsStopped) {
  Serve({"--grace", "0.5"});
  const auto client = Connected();
  EXPECT_EQ(Connected()->ContinuousPanMove(1, 10), 0);
  // Not before the grace is over: the camera stands still at the very beginning too.
  const auto over = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
  EXPECT_TRUE(WaitUntil([&] { return std::chrono::steady_clock::now() > over; }));
  VptzPtzData ptz;
  EXPECT_TRUE(WaitUntil([&] {
    EXPECT_EQ(client->QueryPtzProfiles(1, "ptz0", &ptz), 0);
    return ptz.pan.speed.value == 0;
  }));
  EXPECT_NEAR(ptz.pan.position.value, 5, 0.1);
}

// A process of its own that drives a camera until it is killed.
class DriverProcess {
 public:
  explicit DriverProcess(const std::string& address) : pid_(fork()) {
    if (pid_ != 0) return;
    VptzClient client;
    const bool drives = client.Connect("driver", address.c_str()) == 0 && client.ContinuousPanMove(1, 10) == 0;
    if (!drives) _exit(1);
    while (client.GetStatus(1) == 0 && client.ContinuousTiltMove(1, 5) == 0) Breathe();
    _exit(1);
  }
  ~DriverProcess() { Kill(); }
  DriverProcess(const DriverProcess&) = delete;
  DriverProcess& operator=(const DriverProcess&) = delete;

  void Kill() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }

 private:
  pid_t pid_;
};

TEST_F(ServiceFaults, OnlookerKeepsNoCameraMovingWhoseDriverWasKilled) {
  Serve({"--grace", "1"});
  DriverProcess driver(broker_.address());
  const auto onlooker = Connected();
  VptzPtzData ptz;
  const auto look = [&] { EXPECT_EQ(onlooker->QueryPtzProfiles(1, "ptz0", &ptz), 0); };
  const auto looked_at = [&](auto condition) {
    auto next = std::chrono::steady_clock::now();
    return WaitUntil([&] {
      if (std::chrono::steady_clock::now() < next) return false;
      next += std::chrono::milliseconds(200);
      look();
      return condition();
    });
  };
  // Longer than the grace: the driver is there, so the camera goes on.
  ASSERT_TRUE(looked_at([&] { return ptz.pan.position.value > 15 && ptz.tilt.position.value > 5; }));
  EXPECT_GT(ptz.pan.speed.value, 0);
  driver.Kill();
  const auto killed = std::chrono::steady_clock::now();
  EXPECT_TRUE(looked_at([&] { return ptz.pan.speed.value == 0 && ptz.tilt.speed.value == 0; }));
  const std::chrono::duration<double> ran_on = std::chrono::steady_clock::now() - killed;
  EXPECT_LT(ran_on.count(), 2) << "the grace, one look and slack";
  RecordProperty("ran_on_ms", static_cast<int>(ran_on.count() * 1000));
}

TEST_F(ServiceFaults, FleetDescribesItsCameras) {
  ServeFleet(R"({"cameras": [
      {"protocol": "NDIHX", "name": "Choir", "user": "u", "password": ")" VPTZ_TEST_CANARY R"(", "zoom": null,
       "pan": {"min": -10, "max": 10, "speed": 5, "acceleration": 50}, "presets": [{"name": "Left", "pan": -10}]},
      {"count": 2, "protocol": "NDI", "known": false}]})");
  EXPECT_TRUE(Told("with 1 cameras"));
  const auto client = Connected();
  EXPECT_EQ(client->AbsoluteZoomMove(1, 2, 1), -1005);
  EXPECT_EQ(client->AbsolutePanMove(1, 11, 5), -1006);
  EXPECT_EQ(client->AbsolutePanMove(1, 10, 5), 0);
  EXPECT_EQ(Value("SELECT preset_id || name || pan FROM preset"), "'11Left-10.0'");
  EXPECT_EQ(client->SetPreset(1, "Right", ""), 0);
  EXPECT_EQ(Value("SELECT token FROM preset WHERE preset_id = 12"), "'preset12'");
}

TEST_F(ServiceFaults, BadFleetFileIsToldWithItsLine) {
  WriteFleet("{\"cameras\": [\n  {\"protocol\": \"ONVIF\"},\n  {\"protocol\": \"ONVIV\"}]}");
  const RunResult result = vptz_test::Run({VPTZD, "--fleet", fleet_file_, "--database", file_});
  EXPECT_EQ(result.exit_code, 6);
  EXPECT_THAT(result.errors, HasSubstr("fleet.json:3: \"protocol\" of a camera is to be"));
}

}  // namespace
}  // namespace vptz_test
