// monitor and search, with a service whose signals the test decides.
#include <atomic>
#include <csignal>
#include <sstream>

#include "cli_test.h"
#include "fake_service.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using vptz_test::AnsweringStatus;
using vptz_test::BusTest;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;

std::vector<Json> Objects(const std::string& output) {
  std::istringstream stream(output);
  std::vector<Json> objects;
  for (std::string line; std::getline(stream, line);) objects.push_back(Json::parse(line));
  return objects;
}

class SignalTest : public BusTest {
 protected:
  // Emits until the tool hears it: nobody tells when it has subscribed.
  bool HeardBy(const Process& tool, const std::string& signal, const std::string& payload = "") {
    const std::size_t before = tool.Output().size();
    return WaitUntil([&] {
      service.Emit(signal, payload);
      return tool.Output().find(signal, before) != std::string::npos;
    });
  }

  FakeService service{broker.address(), AnsweringStatus(0)};
};

TEST_F(SignalTest, MonitorPrintsEverySignalUntilItIsInterrupted) {
  Process tool(ToolOnBus("monitor --json"), environment());
  ASSERT_TRUE(HeardBy(tool, "update_devices", "42"));
  ASSERT_TRUE(HeardBy(tool, "another/signal"));
  tool.Signal(SIGINT);
  EXPECT_EQ(tool.Wait(), 0);
  const std::vector<Json> objects = Objects(tool.Output());
  EXPECT_EQ(objects.front()["command"], "monitor");
  EXPECT_EQ(objects.front()["signal"], "update_devices");
  EXPECT_EQ(objects.front()["payload"], "42");
  EXPECT_EQ(objects.back()["signal"], "another/signal");
  EXPECT_EQ(objects.back()["payload"], Json());
}

TEST_F(SignalTest, MonitorPrintsLinesForPeople) {
  Process tool(ToolOnBus("monitor --count 1"), environment());
  ASSERT_TRUE(HeardBy(tool, "update_devices", "\x1b[2J"));
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_THAT(tool.Output(),
              testing::MatchesRegex(
                  "time 20..-..-..T..:..:..\\....[+-]..:..  signal update_devices  payload \\\\x1b\\[2J\n"));
}

TEST_F(SignalTest, MonitorCanListenToOneSignal) {
  Process tool(ToolOnBus("monitor --json --signal update_devices"), environment());
  service.Emit("another");
  ASSERT_TRUE(HeardBy(tool, "update_devices"));
  service.Emit("another");
  ASSERT_TRUE(HeardBy(tool, "update_devices"));
  tool.Signal(SIGTERM);
  EXPECT_EQ(tool.Wait(), 0);
  for (const Json& object : Objects(tool.Output())) EXPECT_EQ(object["signal"], "update_devices");
}

TEST_F(SignalTest, MonitorHasTheShapeThatThePageShows) {
  Process tool(ToolOnBus("monitor --json --count 1"), environment());
  ASSERT_TRUE(HeardBy(tool, "update_devices", "1"));
  EXPECT_EQ(tool.Wait(), 0);
  const std::string page = vptz_test::Page();
  const std::string opening = "\n```json\n";
  const std::size_t begin = page.find(opening, page.find("\n### `monitor`")) + opening.size();
  const Json documented = Json::parse(page.substr(begin, page.find('\n', begin) - begin));
  const Json object = Json::parse(tool.Output());
  ASSERT_EQ(object.size(), documented.size());
  for (const auto& [name, value] : documented.items()) EXPECT_TRUE(object.contains(name)) << name;
}

std::string StatusBytes(int status) {
  tutorial::VptzResponse response;
  response.set_status_code(status);
  return response.SerializeAsString();
}

std::string DeviceBytes(std::uint32_t id) {
  tutorial::DeviceCommand command;
  command.set_device_id(id);
  return command.SerializeAsString();
}

struct MeaningCase {
  std::string signal;
  std::string payload;
  Json meaning, found, refused, camera;
};

TEST_F(SignalTest, MonitorSaysWhatAPayloadMeans) {
  const MeaningCase cases[] = {
      {"finish/search_device", StatusBytes(3), "3 found", 3, nullptr, nullptr},
      {"finish/search_device", StatusBytes(-1011),
       "refused by the service: its database does not take it (not_stored, -1011)", nullptr, "not_stored",
       nullptr},
      {"finish/search_device", "\x08", nullptr, nullptr, nullptr, nullptr},
      {"update_devices", DeviceBytes(2), "camera 2 (camera-2)", nullptr, nullptr, 2},
      {"update_devices", DeviceBytes(77), "camera 77", nullptr, nullptr, 77},
      {"update_devices", "", nullptr, nullptr, nullptr, nullptr},
      {"another", StatusBytes(3), nullptr, nullptr, nullptr, nullptr},
  };
  for (const MeaningCase& each : cases) {
    Process tool(ToolOnBus("monitor --json --count 1"), environment());
    ASSERT_TRUE(HeardBy(tool, each.signal, each.payload));
    EXPECT_EQ(tool.Wait(), 0);
    const Json object = Json::parse(tool.Output());
    EXPECT_EQ(object["meaning"], each.meaning) << object;
    EXPECT_EQ(object["found"], each.found) << object;
    EXPECT_EQ(object["refused"], each.refused) << object;
    EXPECT_EQ(object["camera"], each.camera) << object;
  }
}

TEST_F(SignalTest, PeopleSeeTheMeaningInThePlaceOfThePayload) {
  Process tool(ToolOnBus("monitor --count 1"), environment());
  ASSERT_TRUE(HeardBy(tool, "finish/search_device", StatusBytes(3)));
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_THAT(tool.Output(), testing::EndsWith("  signal finish/search_device  meaning 3 found\n"));
}

// A service that finds a third camera, step by step.
class SearchTest : public BusTest {
 protected:
  void Answer(bus_request* request) {
    const std::string method = bus_request_method(request);
    AnsweringStatus(0)(request);
    if (method != "search_device") return;
    Sql("INSERT INTO device (device_type, service_uri, address, http_uri, mac, uuid, authorization, "
        "authorized, "
        "is_alive, protocol, host_name, manufacture, model_name, firmware_version, deletable, "
        "is_setting_applied, "
        "tracking, reserved) SELECT device_type, 'new', '192.0.2.3', http_uri, mac, 'new', '', 0, 1, protocol, "
        "'camera-3', manufacture, model_name, firmware_version, 1, 1, 0, '' FROM device WHERE id = 1");
    service.Emit("update_devices");
    if (finishes) service.Emit("finish/search_device", outcome);
  }

  std::atomic<bool> finishes{true};
  std::string outcome;
  FakeService service{broker.address(), [this](bus_request* request) { Answer(request); }};
};

TEST_F(SearchTest, NewCamerasAreShownAsTheyCome) {
  const RunResult result = Ctl("--json search");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  const std::vector<Json> objects = Objects(result.output);
  ASSERT_EQ(objects.size(), 2u);
  EXPECT_EQ(objects[0]["command"], "search");
  EXPECT_EQ(objects[0]["name"], "camera-3");
  EXPECT_FALSE(objects[0].contains("status"));
  EXPECT_EQ(objects[1]["finished"], true);
  EXPECT_EQ(objects[1]["new_cameras"], 1);
  EXPECT_EQ(objects[1]["known_cameras"], 3);
  EXPECT_EQ(objects[1]["status"], 0);
}

TEST_F(SearchTest, ARefusalAtTheEndIsAFailure) {
  outcome = StatusBytes(-1011);
  const RunResult result = Ctl("--json search");
  EXPECT_EQ(result.exit_code, 1);
  const Json last = Objects(result.output).back();
  EXPECT_EQ(last["status"], -1011);
  EXPECT_EQ(last["error"]["name"], "not_stored");
}

TEST_F(SearchTest, TheListThatWasSearchedIsTold) {
  outcome = StatusBytes(1);
  const Json usual = Objects(Ctl("--json search").output).back();
  EXPECT_EQ(usual["protocols"], Json());
  EXPECT_EQ(usual["searched"], "ONVIF,QX310,NDI");
  EXPECT_EQ(usual["found"], 1);
  const Json named = Objects(Ctl("--json search --protocols ndihx,Visca_over_IP").output).back();
  EXPECT_EQ(named["searched"], "NDIHX,VISCA_OVER_IP");
  EXPECT_EQ(named["protocols"], "NDIHX,VISCA_OVER_IP");
  EXPECT_THAT(Ctl("search").output, testing::ContainsRegex("searched +ONVIF,QX310,NDI\n"));
}

TEST_F(SearchTest, AProtocolThatDoesNotExistIsNotSearchedFor) {
  for (const char* list : {"ONVIF,PIGEON", "pigeon", ","}) {
    ExpectFailure(Ctl(std::string("--json search --protocols ") + list), 7, "unknown_protocol");
  }
}

TEST_F(SearchTest, InWords) {
  const RunResult result = Ctl("search");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("name camera-3"));
  EXPECT_THAT(result.output, testing::ContainsRegex("new cameras +1\n"));
}

TEST_F(SearchTest, ATerminalSeesThatItGoesOn) {
  std::string command;
  for (const std::string& word : ToolOnBus("search")) command += word + " ";
  const RunResult result =
      vptz_test::Run({VPTZ_SCRIPT, "--quiet", "--return", "--command", command, "/dev/null"},
                     {environment()[0], "TERM=xterm", "NO_COLOR=1"});
  EXPECT_EQ(result.exit_code, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("searching, 0 s, 0 new cameras\r\x1b[K"));
}

TEST_F(SearchTest, OneThatDoesNotEndIsATimeOut) {
  finishes = false;
  const RunResult result = Ctl("--json search --limit 1");
  EXPECT_EQ(result.exit_code, 4);
  EXPECT_EQ(Objects(result.output).back()["error"]["name"], "unfinished");
  EXPECT_THAT(result.errors, HasSubstr("has not ended within 1 s"));
}

TEST_F(SearchTest, AnInterruptEndsTheWaiting) {
  finishes = false;
  Process tool(ToolOnBus("--json search --limit 3600"), environment());
  ASSERT_TRUE(WaitUntil([&] { return tool.Output().find("camera-3") != std::string::npos; }));
  tool.Signal(SIGINT);
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_EQ(Objects(tool.Output()).back()["finished"], false);
}

TEST_F(BusTest, ARefusedSearchIsToldAtOnce) {
  const FakeService service(broker.address(), AnsweringStatus(-1008));
  ExpectFailure(Ctl("--json search --limit 3600"), 1, "busy");
}

}  // namespace
