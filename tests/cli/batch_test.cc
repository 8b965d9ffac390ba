// Several commands in one process, from standard input.
#include <signal.h>

#include <mutex>

#include "cli_test.h"
#include "fake_service.h"
#include "support/canary.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::Count;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::Lines;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;
using vptz_test::WholeLines;
using vptz_test::Words;

class BatchTest : public CliTest {
 protected:
  RunResult Batch(const std::string& script, const std::string& options = "") {
    return vptz_test::Run(ToolOnBus("shell " + options), environment(), script);
  }
};

TEST_F(BatchTest, RunsEachLine) {
  const RunResult result =
      Batch("# to the left\nptz  move camera-1 --pan '-5' # degrees\n\nptz \\\nstop \"1\"");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(result.output, "ptz move: camera 1, pan -5 deg: done\nptz stop: camera 1, pan, tilt, zoom: done\n");
  EXPECT_EQ(result.errors, "");
}

TEST_F(BatchTest, PrintsOneJsonObjectForEachCommand) {
  const RunResult result = Batch("status\nptz stop 1\ndevice list\n", "--json");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  const std::vector<std::string> lines = Lines(result.output);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(Json::parse(lines[0])["command"], "status");
  EXPECT_EQ(Json::parse(lines[1])["camera"], 1);
  EXPECT_EQ(Json::parse(lines[2])["cameras"].size(), 2u);
}

TEST_F(BatchTest, EndsAtTheFirstFailureWithItsExitCode) {
  const RunResult result = Batch("ptz stop 1\n\nptz move 1 --pan 999\nptz stop 2\n");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.output, Not(HasSubstr("camera 2")));
  EXPECT_THAT(result.errors, HasSubstr("vptzctl: line 3 failed; the lines behind it were not run\n"));
}

TEST_F(BatchTest, GoesOnWhenItIsToldTo) {
  const RunResult result =
      Batch("ptz move 1 --pan 999\ndance\nptz stop 2\nptz stop 9\n", "--keep-going --json");
  EXPECT_EQ(result.exit_code, 1) << "that of the first failure";
  const std::vector<std::string> lines = Lines(result.output);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(Json::parse(lines[1])["error"]["name"], "usage");
  EXPECT_EQ(Json::parse(lines[2])["status"], 0);
  EXPECT_EQ(Json::parse(lines[3])["error"]["exit_code"], 7);
  EXPECT_EQ(Count(result.errors, " failed\n"), 3u);
}

TEST_F(BatchTest, ALineThatIsWrongIsAMistakeOfUsage) {
  EXPECT_EQ(Batch("ptz stop '1\n").exit_code, 2);
  EXPECT_THAT(Batch("ptz stop 1 \\").errors, HasSubstr("the input ends within a quote"));
  EXPECT_THAT(Batch("shell\n").errors, HasSubstr("this is the shell"));
  EXPECT_THAT(Batch("status --bus unix:/x\n").errors, HasSubstr("give --bus and --verbose to 'vptzctl shell'"));
  EXPECT_EQ(Batch("help ptz dance\n").exit_code, 2);
  EXPECT_EQ(Batch("").exit_code, 0);
}

TEST_F(BatchTest, ExitAndQuitEndItWithWhatTheLinesBeforeHaveComeTo) {
  for (const std::string word : {"exit", "quit"}) {
    const RunResult done = Batch("ptz stop 1\n" + word + " # enough\nptz stop 2\n");
    EXPECT_EQ(done.exit_code, 0) << done.errors;
    EXPECT_EQ(done.output, "ptz stop: camera 1, pan, tilt, zoom: done\n");
    EXPECT_EQ(done.errors, "");
    const RunResult failed = Batch("ptz move 1 --pan 999\n" + word + "\nptz stop 2\n", "--keep-going");
    EXPECT_EQ(failed.exit_code, 1);
    EXPECT_EQ(failed.output, "");
  }
}

TEST_F(BatchTest, InputThatCannotBeReadIsAFailureInJsonToo) {
  std::string command = "exec";
  for (const std::string& word : ToolOnBus("--json shell </")) command += " " + word;
  ExpectFailure(vptz_test::Run({"bash", "-c", command}, environment()), 6, "unexpected");
}

TEST_F(BatchTest, InputThatCannotBeReadIsAFailure) {
  for (const char* input : {"</", "<&-"}) {
    std::string command = "exec";
    for (const std::string& word : ToolOnBus("shell")) command += " " + word;
    const RunResult result = vptz_test::Run({"bash", "-c", command + " " + input}, environment());
    EXPECT_EQ(result.exit_code, 6) << input;
    EXPECT_EQ(result.errors, "vptzctl: cannot read standard input\n") << input;
  }
}

TEST_F(BatchTest, OptionsOfTheShellHoldForItsLines) {
  service->Signal(SIGSTOP);
  const auto begin = std::chrono::steady_clock::now();
  const RunResult result = Batch("status\n", "--timeout 1 --json");
  service->Signal(SIGCONT);
  EXPECT_EQ(result.exit_code, 4);
  EXPECT_THAT(result.errors, HasSubstr(" of 1 s"));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
}

TEST_F(BatchTest, OneConnectionServesAll) {
  const std::size_t before = Count(broker.Log(), "New client connected");
  EXPECT_EQ(Batch("status\nptz stop 1\nptz stop camera-2\npreset list 1\nstatus\n").exit_code, 0);
  EXPECT_EQ(Count(broker.Log(), "New client connected"), before + 1);
}

TEST_F(BatchTest, ADatabaseFileIsOneCommandsOnly) {
  const RunResult result =
      Batch("db create " + broker.folder() + "/new.db\ndevice list\nptz stop 1\n", "--json");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(Json::parse(Lines(result.output)[1])["cameras"].size(), 2u) << result.output;
}

TEST_F(BatchTest, APasswordMayStandInTheNextLine) {
  const RunResult result = Batch(
      "device login 1 admin --password-stdin\n" VPTZ_TEST_CANARY "\nptz stop 1\nptz stop 9\n", "--keep-going");
  EXPECT_THAT(result.errors, HasSubstr("line 1 failed")) << "this is not its password";
  EXPECT_THAT(result.errors, HasSubstr("line 4 failed"));
  EXPECT_THAT(result.output, HasSubstr("ptz stop: camera 1"));
  EXPECT_THAT(result.output + result.errors, Not(HasSubstr(VPTZ_TEST_CANARY)));
}

TEST_F(BatchTest, ALostBrokerComesBack) {
  Process shell(ToolOnBus("--json shell --keep-going"), environment());
  const auto status = [&] {
    const std::size_t before = WholeLines(shell.Output()).size();
    shell.Write("status\n");
    EXPECT_TRUE(WaitUntil([&] { return WholeLines(shell.Output()).size() > before; }));
    return Json::parse(WholeLines(shell.Output()).back())["status"];
  };
  EXPECT_EQ(status(), 0);
  broker.Kill();
  EXPECT_NE(status(), 0);
  broker.Start();
  EXPECT_TRUE(WaitUntil([&] { return status() == 0; }));
  shell.CloseInput();
  EXPECT_NE(shell.Wait(), 0) << "the first failure's";
}

TEST_F(BatchTest, AnInterruptEndsIt) {
  Process shell(ToolOnBus("shell --keep-going"), environment());
  shell.Write("ptz watch 1 --interval 0.01\nstatus\n");
  ASSERT_TRUE(WaitUntil([&] { return WholeLines(shell.Output()).size() >= 3; }));
  shell.Signal(SIGINT);
  EXPECT_EQ(shell.Wait(), 128 + SIGINT);
  EXPECT_THAT(shell.Output(), Not(HasSubstr("running")));
}

TEST_F(BatchTest, SignalsOfOneMonitorAreNotTheNextOnes) {
  Process shell(ToolOnBus("--json shell"), environment());
  const auto hears_one = [&](std::size_t lines) {
    return WaitUntil([&] {
      Ctl("device info 1");
      return WholeLines(shell.Output()).size() == lines;
    });
  };
  shell.Write("monitor --count 1\n");
  ASSERT_TRUE(hears_one(1));
  Ctl("device info 1");  // nobody is there to hear these
  Ctl("device info 2");
  shell.Write("status\n");
  ASSERT_TRUE(WaitUntil([&] { return WholeLines(shell.Output()).size() == 2; }));
  const std::string now = vptz_test::Run({"date", "+%Y-%m-%dT%H:%M:%S.%3N%:z"}).output;
  shell.Write("monitor --count 1\n");
  ASSERT_TRUE(hears_one(3));
  EXPECT_GT(Json::parse(WholeLines(shell.Output())[2])["time"].get<std::string>(), now);
  shell.CloseInput();
  EXPECT_EQ(shell.Wait(), 0);
}

TEST_F(BusTest, AShellAsksTheServiceForNothingMore) {
  std::mutex mutex;
  Words called;
  const FakeService service(broker.address(), [&](bus_request* request) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      called.push_back(bus_request_method(request));
    }
    vptz_test::AnsweringStatus(0)(request);
  });
  const RunResult result = vptz_test::Run(ToolOnBus("shell"), environment(),
                                          "ptz stop 1\nptz stop camera-2\ndevice list\nptz stop 1\n");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  const std::lock_guard<std::mutex> lock(mutex);
  EXPECT_EQ(called, (Words{"ptz_stop", "ptz_stop", "ptz_stop"}));
}

}  // namespace
