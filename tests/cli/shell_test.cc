// Several commands in one process: from standard input, and typed at a terminal.
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>

#include "cli_test.h"
#include "fake_service.h"
#include "support/canary.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;
using vptz_test::Words;

std::vector<std::string> Lines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

std::string Content(const std::string& path) {
  const std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// ---- from standard input -------------------------------------------------------

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
    const std::size_t before = Lines(shell.Output()).size();
    shell.Write("status\n");
    EXPECT_TRUE(WaitUntil([&] { return Lines(shell.Output()).size() > before; }));
    return Json::parse(Lines(shell.Output()).back())["status"];
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
  ASSERT_TRUE(WaitUntil([&] { return Lines(shell.Output()).size() >= 3; }));
  shell.Signal(SIGINT);
  EXPECT_EQ(shell.Wait(), 128 + SIGINT);
  EXPECT_THAT(shell.Output(), Not(HasSubstr("running")));
}

TEST_F(BatchTest, SignalsOfOneMonitorAreNotTheNextOnes) {
  Process shell(ToolOnBus("--json shell"), environment());
  const auto hears_one = [&](std::size_t lines) {
    return WaitUntil([&] {
      Ctl("device info 1");
      return Lines(shell.Output()).size() == lines;
    });
  };
  shell.Write("monitor --count 1\n");
  ASSERT_TRUE(hears_one(1));
  Ctl("device info 1");  // nobody is there to hear these
  Ctl("device info 2");
  shell.Write("status\n");
  ASSERT_TRUE(WaitUntil([&] { return Lines(shell.Output()).size() == 2; }));
  const std::string now = vptz_test::Run({"date", "+%Y-%m-%dT%H:%M:%S.%3N%:z"}).output;
  shell.Write("monitor --count 1\n");
  ASSERT_TRUE(hears_one(3));
  EXPECT_GT(Json::parse(Lines(shell.Output())[2])["time"].get<std::string>(), now);
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

// ---- at a terminal -------------------------------------------------------------

class ShellTest : public CliTest {
 protected:
  std::string history() const { return broker.folder() + "/state/vptzctl/history"; }

  Words Environment() const {
    return {environment()[0], "TERM=dumb", "INPUTRC=/dev/null", "HOME=" + broker.folder(),
            "XDG_STATE_HOME=" + broker.folder() + "/state"};
  }

  // A shell in a terminal of its own; keys are written to its input.
  void Open(const std::string& options = "") {
    std::string command = "exec ";
    for (const std::string& word : ToolOnBus(options + " shell")) command += word + " ";
    terminal_.emplace(Words{VPTZ_SCRIPT, "--quiet", "--return", "--command", command, "/dev/null"},
                      Environment());
    ASSERT_TRUE(Shows("vptzctl> ")) << Output();
  }

  void Press(const std::string& keys) { terminal_->Write(keys); }

  // At the prompt, as a person does who has seen it.
  void Type(const std::string& keys) {
    const std::string prompt = "vptzctl> ";
    EXPECT_TRUE(WaitUntil([&] {
      const std::string output = Output();
      return output.size() >= prompt.size() && output.substr(output.size() - prompt.size()) == prompt;
    })) << Output();
    Press(keys);
  }

  std::string Output() const { return terminal_->Output(); }

  bool Shows(const std::string& text, std::size_t times = 1) {
    return WaitUntil([&] { return Count(Output(), text) >= times; });
  }

  bool PromptsAgain(std::size_t times) { return Shows("vptzctl> ", times); }

  int Wait() { return terminal_->Wait(); }

  int Leave() {
    Type("\x04");
    return Wait();
  }

 private:
  std::optional<Process> terminal_;
};

TEST_F(ShellTest, RunsWhatIsTypedAndLeavesAtTheEndOfInput) {
  Open();
  Type("ptz stop 1\n");
  EXPECT_TRUE(Shows("ptz stop: camera 1, pan, tilt, zoom: done"));
  Type("dance\n");
  EXPECT_TRUE(Shows("there is no command \"dance\""));
  Type("power status\n");
  EXPECT_TRUE(Shows("power  on")) << Output();
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, ExitLeaves) {
  Open("--json");
  Type("status\n");
  EXPECT_TRUE(Shows("{\"command\":\"status\""));
  Type("exit\n");
  EXPECT_EQ(Wait(), 0);
}

TEST_F(ShellTest, CompletesCommandsAndCameras) {
  Sql("UPDATE device SET host_name = 'Stage left' WHERE id = 1");
  Open();
  Type("ptz sto\tSt\t--til\t\n");
  EXPECT_TRUE(Shows("ptz stop: camera 1, tilt: done")) << Output();
  EXPECT_THAT(Output(), HasSubstr("ptz stop Stage\\ left --tilt"));
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, AnInterruptDropsTheLine) {
  Open();
  Type("power off");
  EXPECT_TRUE(Shows("power off"));
  Press("\x03");
  EXPECT_TRUE(PromptsAgain(2));
  Type("power status\n");
  EXPECT_TRUE(Shows("power  on")) << Output();
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, AnInterruptWithinASearchOfTheHistoryRunsNothing) {
  Open();
  Type("power off\n");
  EXPECT_TRUE(Shows("power off: done"));
  Type("power on\n");
  EXPECT_TRUE(Shows("power on: done"));
  Type(
      "\x12"
      "off");
  EXPECT_TRUE(Shows("power off", 3)) << Output();
  Press("\x03");
  EXPECT_TRUE(PromptsAgain(4));
  Type("power status\n");
  EXPECT_TRUE(Shows("power  on")) << Output();
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, AnInterruptEndsTheCommandOnly) {
  Open();
  Type("ptz watch 1 --interval 0.01\n");
  EXPECT_TRUE(Shows(" s   pan ", 3)) << Output();
  Press("\x03");
  EXPECT_TRUE(PromptsAgain(2));
  Type("ptz stop 1\n");
  EXPECT_TRUE(Shows("zoom: done"));
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, AnInterruptEndsACallThatGetsNoAnswer) {
  Open("--timeout 3600");
  Type("status\n");
  EXPECT_TRUE(Shows("running"));
  service->Signal(SIGSTOP);
  Type("ptz stop 1\n");
  EXPECT_TRUE(Shows("ptz stop 1\r\n")) << Output();
  EXPECT_TRUE(WaitUntil([&] {
    Press("\x03");
    return Output().find("vptzctl: interrupted") != std::string::npos;
  })) << Output();
  service->Signal(SIGCONT);
  Type("ptz stop 2\n");
  EXPECT_TRUE(Shows("ptz stop: camera 2, pan, tilt, zoom: done")) << Output();
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, ASecondInterruptEndsACallOfACommandThatWatches) {
  Open("--timeout 3600");
  Type("ptz watch 1 --interval 0.01\n");
  EXPECT_TRUE(Shows(" s   pan ", 3));
  service->Signal(SIGSTOP);
  EXPECT_TRUE(WaitUntil([&] {
    Press("\x03");
    return Count(Output(), "vptzctl> ") >= 2;
  })) << Output();
  service->Signal(SIGCONT);
  Type("ptz stop 2\n");
  EXPECT_TRUE(Shows("ptz stop: camera 2")) << Output();
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, AStopArrivesHoweverOftenTheDriveIsInterrupted) {
  Open();
  Type("ptz drive 1 --pan 20 --for 3600\n");
  EXPECT_TRUE(ReachesSpeeds("1", 20, 0, 0));
  Press("\x03\x03\x03");
  EXPECT_TRUE(ReachesSpeeds("1", 0, 0, 0)) << Output();
  EXPECT_TRUE(PromptsAgain(2));
  Type("ptz stop 2\n");
  EXPECT_TRUE(Shows("ptz stop: camera 2")) << Output();
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, RemembersLinesInAFileForItsOwnerOnly) {
  Open();
  Type("power status\n");
  EXPECT_TRUE(Shows("power  on"));
  Type("device login 1 admin " VPTZ_TEST_CANARY "\n");
  EXPECT_TRUE(Shows("see 'vptzctl device login --help'"));
  Type(" ptz stop 1\n");
  EXPECT_TRUE(Shows("ptz stop: camera 1"));
  Type("device add-onvif http://me:" VPTZ_TEST_CANARY "@192.0.2.91/\n");
  EXPECT_TRUE(PromptsAgain(5));
  EXPECT_EQ(Leave(), 0);
  EXPECT_EQ(Content(history()), "power status\n");
  struct stat status = {};
  ASSERT_EQ(stat(history().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);

  Open();
  Type("\x10\n");  // the line before
  EXPECT_TRUE(Shows("power  on")) << Output();
  EXPECT_EQ(Leave(), 0);
}

TEST_F(ShellTest, AFileThatOthersCouldReadIsClosedToThem) {
  std::filesystem::create_directories(broker.folder() + "/state/vptzctl");
  std::ofstream(history()) << "status\n";
  ASSERT_EQ(chmod(history().c_str(), 0644), 0);
  Open();
  EXPECT_EQ(Leave(), 0);
  struct stat status = {};
  ASSERT_EQ(stat(history().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(ShellTest, ABatchHasNoHistory) {
  const RunResult result = vptz_test::Run(ToolOnBus("shell"), Environment(), "status\n");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_FALSE(std::filesystem::exists(broker.folder() + "/state"));
}

TEST_F(ShellTest, AsksForAPasswordWithoutAnEcho) {
  Open();
  Type("device login 1 admin\n");
  EXPECT_TRUE(Shows("Password: "));
  Press(VPTZ_TEST_CANARY "\n");
  EXPECT_TRUE(PromptsAgain(2));
  EXPECT_EQ(Leave(), 0);
  EXPECT_THAT(Output() + Content(history()), Not(HasSubstr(VPTZ_TEST_CANARY)));
  EXPECT_EQ(Content(history()), "device login 1 admin\n");
}

}  // namespace
