#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "cli_test.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::Json;
using vptz_test::RunResult;
using vptz_test::RunTool;
using vptz_test::TempDir;
using vptz_test::Words;

TEST_F(CliTest, StatusTellsThatTheServiceRuns) {
  const RunResult result = Ctl("status");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.output, HasSubstr("running"));
  EXPECT_THAT(result.output, HasSubstr(VPTZ_VERSION));
}

TEST_F(CliTest, StatusInJson) {
  const Json object = CtlJson("status");
  EXPECT_EQ(object["command"], "status");
  EXPECT_EQ(object["service"], "vptz");
  EXPECT_EQ(object["state"], "running");
  EXPECT_EQ(object["library"], VPTZ_VERSION);
  EXPECT_TRUE(object["round_trip"].is_number());
  EXPECT_EQ(object["status"], 0);
  EXPECT_EQ(object.size(), 6u);
}

TEST_F(CliTest, TheAddressComesFromTheEnvironmentToo) {
  EXPECT_EQ(RunTool({"status"}, {environment()[0], "DORV_BUS_ADDRESS=" + broker.address()}).exit_code, 0);
}

TEST_F(CliTest, TheOptionWinsOverTheEnvironment) {
  const RunResult result = RunTool({"status", "--bus", broker.address()}, {"DORV_BUS_ADDRESS=unix:/nowhere"});
  EXPECT_EQ(result.exit_code, 0);
}

TEST_F(BusTest, AnAbsentServiceIsToldAtOnce) { ExpectFailure(Ctl("status --json --timeout 1000"), 5, "ESRCH"); }

TEST_F(BusTest, AStoppedBrokerIsNoConnection) {
  broker.Stop();
  const RunResult result = Ctl("status --json");
  ExpectFailure(result, 3, "not_connected");
  EXPECT_THAT(result.errors, HasSubstr(": no answer in time; is the broker running?\n"));
}

TEST_F(BusTest, AKilledBrokerIsNoConnection) {
  broker.Kill();
  const RunResult result = Ctl("status --json");
  ExpectFailure(result, 3, "not_connected");
  EXPECT_THAT(result.errors, HasSubstr("cannot connect to the message bus at " + broker.address()));
}

// How long connecting to a broker that does not answer lasts.
class SlowConnectionTest : public BusTest {
 protected:
  std::chrono::duration<double> Waited(const std::string& line, const Words& more_environment = {}) {
    broker.Stop();
    Words words = {"--bus", broker.address(), "--json"};
    const Words rest = vptz_test::Split(line);
    words.insert(words.end(), rest.begin(), rest.end());
    Words all = environment();
    all.insert(all.end(), more_environment.begin(), more_environment.end());
    const auto begin = std::chrono::steady_clock::now();
    ExpectFailure(RunTool(words, all), 3, "not_connected");
    return std::chrono::steady_clock::now() - begin;
  }
};

TEST_F(SlowConnectionTest, TheTimeOutIsThatOfConnectingToo) {
  const auto waited = Waited("--timeout 1 status");
  EXPECT_GE(waited.count(), 0.9);
  EXPECT_LT(waited.count(), 1.9);
}

TEST_F(SlowConnectionTest, ALongTimeOutIsAwaited) { EXPECT_GE(Waited("--timeout 4 status").count(), 3.9); }

TEST_F(SlowConnectionTest, TheUsersOwnSettingWins) {
  const auto waited = Waited("--timeout 30 status", {"DORV_BUS_CONNECT_TIMEOUT=1"});
  EXPECT_LT(waited.count(), 15);
}

TEST(NoBrokerTest, TheAddressOfTheEnvironmentIsNamed) {
  const TempDir folder;
  const RunResult result = RunTool({"power", "on"}, {"DORV_BUS_ADDRESS=unix:" + folder.path() + "/none"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(
      result.errors,
      HasSubstr("vptzctl: power on: cannot connect to the message bus at unix:" + folder.path() + "/none"));
}

TEST(NoBrokerTest, OneLineTellsTheReasonAndNothingElse) {
  const TempDir folder;
  const std::string address = "unix:" + folder.path() + "/none";
  const RunResult result = RunTool({"--bus", address, "status"}, {"VPTZ_TEST_FOLDER=" + folder.path()});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(result.errors, "vptzctl: status: cannot connect to the message bus at " + address +
                               ": No such file or directory; is the broker running?\n");
}

TEST(NoBrokerTest, AnAddressThatNoBrokerCanHaveIsNamedSo) {
  for (const std::string port : {"70000", "0", "-1", "1883x", ""}) {
    const std::string address = "mqtt://[::1]:" + port;
    EXPECT_THAT(RunTool({"--bus", address, "status"}).errors,
                EndsWith(" at " + address + ": the port \"" + port + "\" is no number from 1 to 65535\n"));
  }
  const std::string longest = "unix:/" + std::string(106, 'a');
  EXPECT_THAT(RunTool({"--bus", longest, "status"}).errors, HasSubstr(": No such file or directory;"));
  EXPECT_THAT(RunTool({"--bus", longest + "a", "status"}).errors,
              EndsWith(": the path has 108 bytes, and a socket's has 107 at most\n"));
  EXPECT_THAT(RunTool({"--bus", "unix:here", "status"}).errors, EndsWith(": a path begins with /\n"));
}

TEST(NoBrokerTest, AServerThatTakesNoConnectionIsNamedSo) {
  EXPECT_THAT(RunTool({"--bus", "mqtt://127.0.0.1:1", "status"}).errors,
              HasSubstr("at mqtt://127.0.0.1:1: Connection refused; is the broker running?\n"));
}

// Takes the log's variables out of the environment, which the tool would obey.
class NoLogSettings {
 public:
  NoLogSettings() {
    for (const char* name : kNames) {
      const char* const value = std::getenv(name);
      before_.push_back(value == nullptr ? std::nullopt : std::optional<std::string>(value));
      unsetenv(name);
    }
  }
  ~NoLogSettings() {
    for (std::size_t i = 0; i < before_.size(); ++i) {
      if (before_[i]) setenv(kNames[i], before_[i]->c_str(), 1);
    }
  }
  NoLogSettings(const NoLogSettings&) = delete;
  NoLogSettings& operator=(const NoLogSettings&) = delete;

 private:
  static constexpr const char* kNames[] = {"ZERK_LOG_LEVEL", "ZERK_LOG_TARGET"};
  std::vector<std::optional<std::string>> before_;
};

TEST(NoBrokerTest, TheLogIsShownToAUserWhoAsksForIt) {
  const NoLogSettings none;
  const Words quiet = {"--bus", "unix:/nowhere", "status"};
  EXPECT_THAT(RunTool(quiet).errors, testing::Not(HasSubstr("Failed to connect")));
  EXPECT_THAT(RunTool({"-v", "--bus", "unix:/nowhere", "status"}).errors, HasSubstr("Failed to connect"));
  EXPECT_THAT(RunTool({"status", "--verbose", "--bus", "unix:/nowhere"}).errors,
              HasSubstr("Failed to connect"));
  EXPECT_THAT(RunTool(quiet, {"ZERK_LOG_LEVEL=warning"}).errors, HasSubstr("Failed to connect"));
  EXPECT_THAT(RunTool(quiet, {"ZERK_LOG_TARGET=stderr"}).errors, HasSubstr("Failed to connect"));
}

TEST(NoBrokerTest, AnAddressThatCannotBeReadIsNoConnection) {
  ExpectFailure(RunTool({"--json", "--bus", "carrier-pigeon", "status"}), 3, "not_connected");
}

}  // namespace
