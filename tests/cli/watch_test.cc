#include <signal.h>

#include <algorithm>
#include <atomic>

#include <vptz/vptz_data.h>

#include "cli_test.h"
#include "fake_service.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::FakeService;
using vptz_test::InTerminal;
using vptz_test::Json;
using vptz_test::Lines;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;
using vptz_test::WholeLines;
using vptz_test::Words;

class WatchTest : public CliTest {
 protected:
  Words Terminal(const std::string& kind) const { return {environment()[0], "TERM=" + kind, "NO_COLOR=1"}; }

  static bool WaitForLines(const Process& process, std::size_t count) {
    return WaitUntil([&] { return WholeLines(process.Output()).size() >= count; });
  }
};

TEST_F(WatchTest, EndsOnInterruptWithCodeZero) {
  for (const int signal : {SIGINT, SIGTERM}) {
    Process watch(ToolOnBus("ptz watch 1 --interval 0.01"), environment());
    ASSERT_TRUE(WaitForLines(watch, 3));
    watch.Signal(signal);
    EXPECT_EQ(watch.Wait(), 0);
    EXPECT_THAT(watch.Errors(), testing::Not(HasSubstr("vptzctl:")));
  }
}

TEST_F(WatchTest, ALongIntervalDoesNotDelayTheEnd) {
  Process watch(ToolOnBus("ptz watch 1 --interval 3600"), environment());
  ASSERT_TRUE(WaitForLines(watch, 1));
  watch.Signal(SIGINT);
  EXPECT_EQ(watch.Wait(), 0);
}

TEST_F(WatchTest, PrintsOneLineForEachReading) {
  CtlJson("ptz drive 1 --pan 1");
  Process watch(ToolOnBus("ptz watch 1 --interval 0.01"), environment());
  ASSERT_TRUE(WaitForLines(watch, 2));
  watch.Signal(SIGINT);
  watch.Wait();
  EXPECT_THAT(watch.Output(), testing::Not(HasSubstr("\x1b")));
  for (const std::string& line : WholeLines(watch.Output())) {
    EXPECT_THAT(line, testing::ContainsRegex("[0-9.]+ s   pan +[0-9.]+ deg +1.00 deg/s   tilt")) << line;
  }
}

TEST_F(WatchTest, PrintsOneJsonObjectALine) {
  Process watch(ToolOnBus("ptz watch 1 --interval 0.01 --json"), environment());
  ASSERT_TRUE(WaitForLines(watch, 3));
  watch.Signal(SIGINT);
  EXPECT_EQ(watch.Wait(), 0);
  double before = -1;
  for (const std::string& line : WholeLines(watch.Output())) {
    const Json object = Json::parse(line);
    EXPECT_EQ(object["pan"]["position"], 0.0);
    EXPECT_GT(object["elapsed"], before);
    before = object["elapsed"];
  }
}

TEST_F(WatchTest, UntilStillEndsWhenTheMotionHasEnded) {
  CtlJson("ptz move 1 --pan 10 --pan-speed 50");
  const RunResult result = Ctl("ptz watch 1 --until-still --interval 0.01 --json");
  EXPECT_EQ(result.exit_code, 0);
  const std::vector<std::string> lines = Lines(result.output);
  ASSERT_GT(lines.size(), 1u);
  EXPECT_EQ(Json::parse(lines.back())["pan"]["position"], 10.0);
  EXPECT_EQ(Json::parse(lines.back())["pan"]["speed"], 0.0);
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& line) { return Json::parse(line)["pan"]["speed"] == 0.0; }),
            2);
}

TEST_F(BusTest, UntilStillComparesPositionsWhereSpeedsAreUnknown) {
  std::atomic<int> calls = 0;
  const FakeService service(broker.address(), [&calls](bus_request* request) {
    tutorial::VptzResponse response;
    tutorial::PtzInfo& info = *response.mutable_ptz_info();
    for (auto* axis : {info.mutable_pan(), info.mutable_tilt(), info.mutable_zoom()}) {
      axis->set_speed(kVptzNotCommanded);
      axis->set_position(std::min(++calls / 3, 4));
    }
    vptz_test::Answering(response)(request);
  });
  const RunResult result = Ctl("ptz watch 1 --until-still --interval 0.01 --json");
  EXPECT_EQ(result.exit_code, 0);
  const std::vector<std::string> lines = Lines(result.output);
  ASSERT_GE(lines.size(), 2u);
  const Json last = Json::parse(lines.back());
  EXPECT_EQ(last["zoom"]["position"], Json::parse(lines[lines.size() - 2])["zoom"]["position"]);
  EXPECT_EQ(last["pan"]["speed"], Json());
}

TEST_F(WatchTest, RedrawsOnATerminal) {
  Process terminal(InTerminal(ToolOnBus("ptz watch 1 --interval 0.01")), Terminal("xterm"));
  ASSERT_TRUE(WaitUntil([&] { return terminal.Output().find("\x1b[7A") != std::string::npos; }))
      << terminal.Output();
  terminal.Write("\x03");
  EXPECT_EQ(terminal.Wait(), 0);
  EXPECT_THAT(terminal.Output(), HasSubstr("track mode"));
  EXPECT_EQ(terminal.Output().back(), '\n') << "the shell's prompt would stand behind the table";
}

TEST_F(WatchTest, ATerminalThatCannotRedrawGetsLines) {
  Process terminal(InTerminal(ToolOnBus("ptz watch 1 --interval 0.01")), Terminal("dumb"));
  ASSERT_TRUE(WaitForLines(terminal, 3));
  terminal.Write("\x03");
  EXPECT_EQ(terminal.Wait(), 0);
  EXPECT_THAT(terminal.Output(), testing::Not(HasSubstr("\x1b")));
}

TEST_F(WatchTest, EndsWithTheFailureWhenTheServiceGoes) {
  Process watch(ToolOnBus("ptz watch 1 --interval 0.01"), environment());
  ASSERT_TRUE(WaitForLines(watch, 2));
  service->Signal(SIGTERM);
  EXPECT_EQ(service->Wait(), 0);
  // It meets the service before it goes, while it goes, or gone.
  EXPECT_THAT(watch.Wait(), testing::AnyOf(5, 6));
  EXPECT_THAT(watch.Errors(), HasSubstr("vptzctl: ptz watch: camera 1: "));
}

TEST_F(WatchTest, AnInterruptInTheMiddleOfACallEndsItQuietly) {
  Process watch(ToolOnBus("--timeout 1 ptz watch 1 --interval 0.01"), environment());
  ASSERT_TRUE(WaitForLines(watch, 2));
  service->Signal(SIGSTOP);
  // Lines end once the call hangs; whether it does by then decides nothing here.
  watch.Signal(SIGINT);
  EXPECT_EQ(watch.Wait(), 0);
  service->Signal(SIGCONT);
}

TEST_F(WatchTest, ASecondInterruptDoesNotWaitForTheCall) {
  service->Signal(SIGSTOP);
  Process watch(ToolOnBus("--timeout 3600 ptz watch 1"), environment());
  const auto interrupted = [&watch] {
    watch.Signal(SIGINT);
    return !watch.Running();
  };
  EXPECT_TRUE(WaitUntil(interrupted));
  EXPECT_EQ(watch.Wait(), 128 + SIGINT);
  service->Signal(SIGCONT);
}

TEST_F(WatchTest, AReaderThatLeavesEndsIt) {
  const Words tool = ToolOnBus("ptz watch 1 --interval 0.01");
  std::string command;
  for (const std::string& word : tool) command += word + " ";
  const RunResult result =
      vptz_test::Run({"bash", "-c", command + "| head -n 2; exit ${PIPESTATUS[0]}"}, environment());
  EXPECT_EQ(result.exit_code, 128 + SIGPIPE);
  EXPECT_EQ(Lines(result.output).size(), 2u);
}

}  // namespace
