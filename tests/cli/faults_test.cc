// What the tool tells of each fault that the reference service can be given.
#include "cli_test.h"
#include "fake_service.h"

namespace {

using testing::HasSubstr;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::RunResult;

class FaultTest : public CliTest {
 protected:
  // Starts the service anew with a fault of camera 1.
  void Suffer(const std::string& fault) {
    service.reset();
    const std::string fleet = R"({"faults": [{"camera": 1, )" + fault + "}]}";
    StartService({"--fleet", Write("fleet.json", fleet)});
  }

  Json Failure(const std::string& line, int exit_code, const std::string& name) {
    const RunResult result = Ctl("--json --timeout 1 " + line);
    ExpectFailure(result, exit_code, name);
    return Json::parse(result.output);
  }

  std::string LoginLine() {
    return "device login camera-1 admin --password-file " + Write("password", "admin");
  }
};

TEST_F(FaultTest, ACameraThatDoesNotAnswer) {
  Suffer(R"("kind": "offline")");
  EXPECT_EQ(Failure("ptz move camera-1 --pan 5", 1, "offline")["status"], -1010);
  EXPECT_THAT(Ctl("ptz move camera-1 --pan 5").errors,
              HasSubstr("refused by the service: the camera does not answer"));
}

TEST_F(FaultTest, ACameraThatTakesNoLogin) {
  Suffer(R"("kind": "refuse_login")");
  Failure(LoginLine(), 1, "not_logged_in");
}

TEST_F(FaultTest, ACameraThatForgetsItsPresets) {
  Suffer(R"("kind": "forget_presets")");
  ASSERT_EQ(Ctl(LoginLine()).exit_code, 0);
  Ctl("preset set camera-1 mine");
  Failure("preset goto camera-1 mine", 1, "unknown_id");
}

TEST_F(FaultTest, ACameraThatLosesItsPowerInAMove) {
  Suffer(R"("kind": "lose_power", "milliseconds": 1)");
  ASSERT_EQ(Ctl(LoginLine()).exit_code, 0);
  ASSERT_EQ(Ctl("ptz move camera-1 --pan 90").exit_code, 0);
  EXPECT_EQ(Ctl("ptz watch camera-1 --until-still --interval 0.01").exit_code, 0);
  Failure("ptz move camera-1 --pan 1", 1, "powered_off");
}

TEST_F(FaultTest, ASlowReplyIsATimeOut) {
  Suffer(R"("kind": "delay", "milliseconds": 60000, "method": "ptz_stop")");
  Failure("ptz stop camera-1", 4, "ETIMEDOUT");
}

TEST_F(FaultTest, ALostReplyIsATimeOut) {
  Suffer(R"("kind": "drop", "method": "ptz_stop")");
  Failure("ptz stop camera-1", 4, "ETIMEDOUT");
}

TEST_F(FaultTest, AnOversizedReplyIsAnotherFailure) {
  Suffer(R"("kind": "oversize", "method": "ptz_stop")");
  Failure("ptz stop camera-1", 6, "EMSGSIZE");
}

// The library takes what it can read of a reply, and its status where it can
// read one; whatever comes out, the tool ends with an ordinary answer.
TEST_F(FaultTest, AGarbledReplyGetsAnOrdinaryAnswer) {
  Suffer(R"("kind": "garble", "method": "get_ptz_profiles")");
  const RunResult result = Ctl("--json ptz position camera-1");
  EXPECT_LT(result.exit_code, 8) << result.errors;
  EXPECT_TRUE(Json::parse(result.output).contains("status"));
}

TEST_F(CliTest, FaultsAreSwitchedWhileTheServiceRuns) {
  EXPECT_EQ(CtlJson("fault list")["faults"], Json::array());
  const Json added = CtlJson("fault add offline --camera 1");
  ASSERT_EQ(added["faults"].size(), 1u);
  EXPECT_EQ(added["faults"][0]["kind"], "offline");
  EXPECT_EQ(added["faults"][0]["camera"], "1");
  ExpectFailure(Ctl("--json ptz move 1 --pan 1"), 1, "offline");
  CtlJson("ptz move 2 --pan 1");
  const Json both = CtlJson("fault add delay --camera camera-2 --method ptz_stop --milliseconds 20");
  EXPECT_EQ(both["faults"].size(), 2u);
  EXPECT_EQ(CtlJson("fault list")["faults"][1],
            Json({{"kind", "delay"}, {"camera", "camera-2"}, {"method", "ptz_stop"}, {"milliseconds", 20}}));
  EXPECT_EQ(CtlJson("fault clear")["faults"], Json::array());
  CtlJson("ptz move 1 --pan 1");
}

TEST_F(CliTest, AFaultOfACameraThatIsNotThereIsTold) {
  const RunResult result = Ctl("--json fault add offline --camera camara-1");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(
      result.errors,
      "vptzctl: no camera in the database has the name \"camara-1\"; the fault concerns none until one does\n");
  for (const char* camera : {"--camera camera-1", "--camera 2", ""}) {
    EXPECT_EQ(Ctl(std::string("fault add offline ") + camera).errors, "") << camera;
  }
}

TEST_F(CliTest, AFaultThatCannotBeIsRefusedWithItsReason) {
  const RunResult result = Ctl("--json fault add delay --method dance");
  ExpectFailure(result, 1, "bad_request");
  EXPECT_THAT(result.errors,
              HasSubstr("\"method\" of a fault is no method of the service (bad_request, -1002)"));
  EXPECT_EQ(CtlJson("fault list")["faults"], Json::array());
}

TEST_F(BusTest, AServiceWithoutSimulatedFaultsSaysSo) {
  const FakeService service(broker.address(), vptz_test::AnsweringStatus(-1001));
  const RunResult result = Ctl("--json fault list");
  ExpectFailure(result, 1, "unknown_method");
  EXPECT_THAT(result.errors, HasSubstr("refused by the service: it has no simulated faults"));
}

}  // namespace
