#include "cli_test.h"

namespace {

using testing::HasSubstr;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::Json;
using vptz_test::RunResult;
using vptz_test::RunTool;
using vptz_test::TempDir;

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
  ExpectFailure(Ctl("status --json"), 3, "not_connected");
}

TEST_F(BusTest, AKilledBrokerIsNoConnection) {
  broker.Kill();
  const RunResult result = Ctl("status --json");
  ExpectFailure(result, 3, "not_connected");
  EXPECT_THAT(result.errors, HasSubstr("cannot connect to the message bus at " + broker.address()));
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

TEST(NoBrokerTest, AnAddressThatCannotBeReadIsNoConnection) {
  ExpectFailure(RunTool({"--json", "--bus", "carrier-pigeon", "status"}), 3, "not_connected");
}

}  // namespace
