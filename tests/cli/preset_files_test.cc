// Presets in files: exported from the database, and stored at a camera again.
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <vector>

#include "cli_test.h"
#include "fake_service.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::Content;
using vptz_test::ExpectFailure;
using vptz_test::InTerminal;
using vptz_test::Json;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;

class PresetFilesTest : public CliTest {
 protected:
  std::string file() const { return broker.folder() + "/presets.json"; }

  // A file of presets, each one near the camera's first position.
  std::string FileOf(const std::string& presets) const {
    return Write("presets.json",
                 "{\n\"format\": \"vptz-presets\",\n\"version\": 1,\n\"presets\": [\n" + presets + "\n]}\n");
  }

  std::string Near() const {
    return FileOf(R"({"token": "a", "name": "Anna", "pan": 2, "tilt": 1, "zoom": 1},)"
                  "\n"
                  R"({"token": "b", "name": "Bert", "pan": -2, "tilt": 0, "zoom": 1.5})");
  }

  // Null when there is none.
  Json Preset(const std::string& token) {
    const Json list = CtlJson("preset list 1");
    for (const Json& preset : list["presets"]) {
      if (preset["token"] == token) return preset;
    }
    return {};
  }
};

TEST_F(PresetFilesTest, WhatWasExportedIsImportedElsewhere) {
  Sql("UPDATE preset SET pan = pan / 10 WHERE ptz = 1");
  EXPECT_EQ(Ctl("preset export 1 " + file()).exit_code, 0);
  EXPECT_EQ(Ctl("preset remove 2 preset2").exit_code, 0);
  const Json start = CtlJson("ptz position 2");
  const RunResult result = Ctl("preset import 2 " + file() + " --yes --json");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("\"token\":\"preset2\""));
  const Json last = Json::parse(result.output.substr(result.output.rfind('\n', result.output.size() - 2) + 1));
  EXPECT_EQ(last["unchanged"], 1) << "preset1 is the same at both";
  EXPECT_EQ(last["stored"], 2);
  EXPECT_EQ(last["returns"], true);
  const Json one = CtlJson("preset list 1")["presets"];
  const Json two = CtlJson("preset list 2")["presets"];
  ASSERT_EQ(one.size(), two.size());
  for (const Json& preset : one) {
    const auto same = std::find_if(two.begin(), two.end(),
                                   [&](const Json& other) { return other["token"] == preset["token"]; });
    ASSERT_NE(same, two.end()) << preset;
    EXPECT_EQ((*same)["name"], preset["name"]);
    EXPECT_NEAR((*same)["pan"], preset["pan"], 0.1);
  }
  EXPECT_EQ(Ctl("ptz watch 2 --until-still --interval 0.05").exit_code, 0);
  EXPECT_NEAR(CtlJson("ptz position 2")["pan"]["position"], start["pan"]["position"], 0.1);
}

TEST_F(PresetFilesTest, AnExportIsOnePresetALine) {
  const RunResult result = Ctl("preset export camera-1");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(
      result.output,
      HasSubstr(
          "\n    "
          "{\"id\":1,\"token\":\"preset1\",\"name\":\"Stage\",\"pan\":0.0,\"tilt\":0.0,\"zoom\":1.0},\n"));
  EXPECT_EQ(Json::parse(result.output)["camera"]["name"], "camera-1");
  EXPECT_EQ(Ctl("preset export 1 " + file()).exit_code, 0);
  EXPECT_EQ(Content(file()), result.output);
}

TEST_F(PresetFilesTest, AFileThatIsThereIsNotLost) {
  Write("presets.json", "mine");
  ExpectFailure(Ctl("--json preset export 1 " + file()), 2, "file_exists");
  EXPECT_EQ(Content(file()), "mine");
  EXPECT_EQ(Ctl("preset export 1 --replace " + file()).exit_code, 0);
  EXPECT_THAT(Content(file()), HasSubstr("preset1"));
  ExpectFailure(Ctl("--json preset export 1 /nonexistent/file"), 2, "unusable_file");
  for (const auto& entry : std::filesystem::directory_iterator(broker.folder())) {
    EXPECT_EQ(entry.path().string().find("presets.json."), std::string::npos) << entry.path();
  }
}

TEST_F(PresetFilesTest, APipeIsNotReplacedByAFile) {
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  ExpectFailure(Ctl("--json preset export 1 --replace " + file()), 2, "unusable_file");
  EXPECT_TRUE(std::filesystem::is_fifo(file()));
}

TEST_F(PresetFilesTest, AnyNameComesBackAsItWas) {
  const std::string token = "a\tb\x1b[31m";
  const std::string name = "x\n\x01\x7f\"\\/\xc2\x85\xe2\x80\xae\xc3\xa9";
  ASSERT_EQ(Ctl({"preset", "set", "1", token, "--name", name}).exit_code, 0);
  ASSERT_EQ(Ctl("preset export 1 " + file()).exit_code, 0);
  ASSERT_EQ(Ctl({"preset", "remove", "1", token}).exit_code, 0);
  ASSERT_TRUE(Preset(token).is_null());
  const RunResult result = Ctl("preset import 1 --yes " + file());
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  const Json stored = Preset(token);
  ASSERT_FALSE(stored.is_null());
  EXPECT_EQ(stored["name"], name);
  const Json plan = CtlJson("preset import 1 --check " + file());
  for (const Json& preset : plan["presets"]) EXPECT_EQ(preset["action"], "unchanged") << preset;
}

TEST_F(PresetFilesTest, APresetThatNoFileCanHoldIsNamed) {
  for (const std::string text : {"'a' || char(0) || 'b'", "CAST(x'61ff' AS TEXT)"}) {
    Sql("UPDATE preset SET name = " + text + " WHERE ptz = 1 AND preset_id = 2");
    const RunResult result = Ctl("--json preset export 1 " + file());
    ExpectFailure(result, 7, "unusable_database");
    EXPECT_THAT(result.errors, HasSubstr(": preset 2 (preset2) has a "));
    EXPECT_FALSE(std::filesystem::exists(file()));
  }
}

TEST_F(PresetFilesTest, PositionsThatAreNotKnownAreTold) {
  Sql("UPDATE preset SET pan = NULL WHERE ptz = 1 AND preset_id = 2");
  const RunResult result = Ctl("preset export 1");
  EXPECT_THAT(result.output, HasSubstr("\"name\":\"Lectern\",\"pan\":null"));
  EXPECT_THAT(result.errors, HasSubstr("without a known position, which no import can store: 1\n"));
  EXPECT_EQ(CtlJson("preset export 1 " + file())["unknown_positions"], 1);
  const Json plan = CtlJson("preset import 1 --check " + file());
  EXPECT_EQ(plan["presets"][1]["action"], "left out: no position");
  EXPECT_EQ(plan["presets"][0]["action"], "unchanged");
}

TEST_F(PresetFilesTest, ACheckMovesNothing) {
  const Json before = CtlJson("ptz position 1");
  const Json plan = CtlJson("preset import 1 --check " + Near());
  EXPECT_EQ(plan["presets"][0]["action"], "new");
  EXPECT_EQ(CtlJson("ptz position 1")["pan"], before["pan"]);
  EXPECT_TRUE(Preset("a").is_null());
}

TEST_F(PresetFilesTest, TheCameraDoesNotMoveUnasked) {
  const std::string path = Near();
  ExpectFailure(Ctl("--json preset import 1 " + path), 2, "not_confirmed");
  EXPECT_TRUE(Preset("a").is_null());
  for (const std::string answer : {"n\n", "y\n"}) {
    Process terminal(InTerminal(ToolOnBus("preset import 1 " + path)), environment());
    ASSERT_TRUE(WaitUntil([&] { return terminal.Output().find("Go on? [y/N] ") != std::string::npos; }));
    EXPECT_THAT(terminal.Output(), HasSubstr("move to 2 positions"));
    terminal.Write(answer);
    EXPECT_EQ(terminal.Wait(), answer == "y\n" ? 0 : 2) << terminal.Output();
  }
  EXPECT_EQ(Preset("a")["name"], "Anna");
  EXPECT_NEAR(Preset("b")["zoom"], 1.5, 0.05);
}

TEST_F(PresetFilesTest, AnInterruptStopsTheCameraAndTellsWhatIsStored) {
  const std::string path = FileOf(R"({"token": "near", "pan": 1, "tilt": 0, "zoom": 1},)"
                                  "\n"
                                  R"({"token": "far", "pan": -170, "tilt": 80, "zoom": 20})");
  Process import(ToolOnBus("--json preset import 1 --yes " + path), environment());
  ASSERT_TRUE(WaitUntil([&] { return import.Output().find("\"token\":\"near\"") != std::string::npos; }));
  ASSERT_TRUE(WaitUntil([&] { return CtlJson("ptz position 1")["pan"]["speed"] != 0.0; }));
  import.Signal(SIGINT);
  EXPECT_EQ(import.Wait(), 6);
  EXPECT_THAT(import.Errors(),
              HasSubstr("interrupted; the camera has been stopped; stored: near; not stored: far"));
  EXPECT_THAT(import.Output(), HasSubstr("\"name\":\"interrupted\""));
  EXPECT_TRUE(ReachesSpeeds("1", 0, 0, 0));
  EXPECT_LT(std::abs(CtlJson("ptz position 1")["pan"]["position"].get<double>()), 169);
  EXPECT_TRUE(Preset("far").is_null());
}

TEST_F(PresetFilesTest, ACameraThatOthersMoveStoresNothingWrong) {
  const std::string path = FileOf(R"({"token": "far", "pan": 170, "tilt": 80, "zoom": 20})");
  Process import(ToolOnBus("--json preset import 1 --yes " + path), environment());
  ASSERT_TRUE(WaitUntil([&] { return CtlJson("ptz position 1")["pan"]["speed"] != 0.0; }));
  EXPECT_EQ(Ctl("ptz stop 1").exit_code, 0);
  EXPECT_EQ(import.Wait(), 6);
  EXPECT_THAT(import.Errors(), HasSubstr("does not come to \"far\""));
  EXPECT_THAT(import.Errors(), HasSubstr("stored: none; not stored: far"));
  EXPECT_TRUE(Preset("far").is_null());
}

// A camera that begins to move late and whose speed reads as 0: only two readings
// after the command tell that it stands.
TEST_F(BusTest, APresetIsStoredAfterTwoReadingsThatCameAfterTheMove) {
  std::mutex mutex;
  std::vector<std::string> methods;
  tutorial::VptzResponse there;
  there.set_status_code(0);
  there.mutable_ptz_info()->mutable_pan()->set_position(2);
  there.mutable_ptz_info()->mutable_tilt()->set_position(1);
  there.mutable_ptz_info()->mutable_zoom()->set_position(1);
  const vptz_test::FakeService service(broker.address(), [&](bus_request* request) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      methods.emplace_back(bus_request_method(request));
    }
    vptz_test::Answering(there)(request);
  });
  const std::string path = Write("presets.json",
                                 "{\"format\": \"vptz-presets\", \"version\": 1, \"presets\": [\n"
                                 "{\"token\": \"a\", \"pan\": 2, \"tilt\": 1, \"zoom\": 1}\n]}\n");
  EXPECT_EQ(Ctl("--json preset import 1 --yes " + path).exit_code, 0);
  const std::lock_guard<std::mutex> lock(mutex);
  const auto move = std::find(methods.begin(), methods.end(), "absolute_move");
  const auto stored = std::find(methods.begin(), methods.end(), "set_preset");
  ASSERT_TRUE(move < stored && stored != methods.end());
  EXPECT_EQ(std::count(move, stored, "get_ptz_profiles"), 2);
}

struct BadFile {
  const char* name;
  const char* presets;
  const char* reason;
};

class BadPresetFileTest : public BusTest, public testing::WithParamInterface<BadFile> {};

constexpr BadFile kBadFiles[] = {
    {"NoJson", "{\"token\": \"a\",,}", ":5: this is not JSON"},
    {"NoToken", "{\"pan\": 1}", ":5: the preset's \"token\" is missing"},
    {"TokenThatIsNoText", "{\"token\": 1}", ":5: \"token\" is no text"},
    {"TokenTwice", "{\"token\": \"a\"},\n{\"token\": \"a\"}", ":6: the token \"a\" is there twice"},
    {"ZeroInAText", "{\"token\": \"a\\u0000b\"}", ":5: \"token\" holds a control character"},
    {"PositionThatIsNoNumber", "{\"token\": \"b\",\n \"pan\": \"left\"}", ":5: \"pan\" of \"b\" is no number"},
    {"PositionOutOfRange", "{\"token\": \"a\", \"pan\": 999}", ":5: pan of \"a\": 999 is outside -170 to 170"},
    {"ReservedPosition", "{\"token\": \"a\", \"tilt\": -9999999}", "is reserved"},
    {"NumberTooLarge", "{\"token\": \"a\", \"pan\": 1e999}", ":5: a number is too large"},
    {"MemberTwice", "{\"token\": \"b\",\n \"token\": \"c\"}", ":6: \"token\" is there twice in one object"},
    {"NoObject", "17", "a member of \"presets\" is no object"},
};

INSTANTIATE_TEST_SUITE_P(PresetFiles, BadPresetFileTest, testing::ValuesIn(kBadFiles),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(BadPresetFileTest, IsRefusedWithLineAndReason) {
  const std::string path =
      Write("bad.json", "{\n\"format\": \"vptz-presets\",\n\"version\": 1,\n\"presets\": [\n" +
                            std::string(GetParam().presets) + "\n]}\n");
  const RunResult result = Ctl("--json preset import 1 --yes " + path);
  ExpectFailure(result, 2, "bad_file");
  EXPECT_THAT(Json::parse(result.output)["error"]["message"].get<std::string>(), HasSubstr(GetParam().reason));
}

// No service is there: whatever were sent would fail otherwise.
TEST_F(BusTest, WhatTheServiceWouldNotKeepIsRefusedBeforeAnythingIsSent) {
  const auto refusal = [&](const std::string& presets) {
    const std::string path = Write(
        "many.json", "{\"format\": \"vptz-presets\", \"version\": 1, \"presets\": [\n" + presets + "\n]}\n");
    const RunResult result = Ctl("--json preset import 1 --yes " + path);
    ExpectFailure(result, 2, "bad_file");
    return Json::parse(result.output)["error"]["message"].get<std::string>();
  };
  const std::string position = R"(, "pan": 2, "tilt": 1, "zoom": 1})";
  const std::string longest(255, 'a');
  const std::string first = R"({"token": "b", "name": ")" + longest + "\"" + position + ",\n";
  EXPECT_THAT(refusal(first + R"({"token": "a)" + longest + "\"" + position),
              HasSubstr(":3: \"token\" is longer than 255 bytes"));
  EXPECT_THAT(refusal(first + R"({"token": "a", "name": "a)" + longest + "\"" + position),
              HasSubstr(":3: \"name\" is longer than 255 bytes"));
  std::string many = R"({"token": "preset1")" + position;  // which the camera has
  for (int i = 1; i <= 254; ++i) many += ",\n{\"token\": \"p" + std::to_string(i) + "\"" + position;
  EXPECT_THAT(refusal(many),
              HasSubstr(":256: with \"p254\" the camera would have more than 256 presets; it has 3"));
}

TEST_F(BusTest, AFileOfSomethingElseIsNoPresetFile) {
  ExpectFailure(Ctl("--json preset import 1 " + Write("a", "[]")), 2, "bad_file");
  ExpectFailure(Ctl("--json preset import 1 " + Write("b", "{\"format\": \"other\"}")), 2, "bad_file");
  ExpectFailure(Ctl("--json preset import 1 " + Write("c", "{\"format\": \"vptz-presets\", \"version\": 2}")),
                2, "bad_file");
  ExpectFailure(Ctl("--json preset import 1 " + Write("d", "")), 2, "bad_file");
  ExpectFailure(Ctl("--json preset import 1 /nonexistent"), 2, "unusable_file");
  ExpectFailure(Ctl("--json preset import 1 /"), 2, "unusable_file");
}

}  // namespace
