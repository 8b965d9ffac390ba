// Passwords come from a prompt, a file or standard input, and are never shown.
#include <csignal>
#include <mutex>

#include "cli_test.h"
#include "fake_service.h"
#include "support/canary.h"
#include "support/wait_until.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vptz_test::AnsweringStatus;
using vptz_test::BusTest;
using vptz_test::ExpectFailure;
using vptz_test::FakeService;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;
using vptz_test::Words;

class PasswordTest : public BusTest {
 protected:
  // Keeps the password that arrives.
  FakeService::Handler Keeping() {
    return [this](bus_request* request) {
      int length = 0;
      const void* bytes = bus_request_payload(request, &length);
      tutorial::VptzCommand command;
      command.ParseFromArray(bytes, length);
      const std::lock_guard<std::mutex> lock(mutex_);
      arrived_ = command.device_command().password();
      AnsweringStatus(0)(request);
    };
  }

  // In a terminal of its own, whose echo is on; keys are written to its input.
  Words InTerminal(const std::string& line) const {
    // The shell outlives an interrupt, to tell how the terminal is then.
    std::string command = "trap : INT; ";
    for (const std::string& word : ToolOnBus(line)) command += word + " ";
    return {VPTZ_SCRIPT, "--quiet", "--return", "--command", command + "; code=$?; stty -a; exit $code",
            "/dev/null"};
  }

  std::string Arrived() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return arrived_;
  }

 private:
  mutable std::mutex mutex_;
  std::string arrived_;  // on the service's thread
};

TEST_F(PasswordTest, ComesFromTheFirstLineOfAFile) {
  const FakeService service(broker.address(), Keeping());
  const RunResult result =
      Ctl("device login 1 admin --password-file " + Write("password", "open " VPTZ_TEST_CANARY "\r\nmore"));
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(Arrived(), "open " VPTZ_TEST_CANARY);
  EXPECT_EQ(result.output, "device login: camera 1, user admin: done\n");
}

TEST_F(PasswordTest, ComesFromStandardInput) {
  const FakeService service(broker.address(), Keeping());
  const RunResult result = vptz_test::Run(ToolOnBus("device login 1 admin --password-stdin --json"),
                                          environment(), VPTZ_TEST_CANARY "\n");
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(Arrived(), VPTZ_TEST_CANARY);
  EXPECT_THAT(result.output + result.errors, Not(HasSubstr(VPTZ_TEST_CANARY)));
}

TEST_F(PasswordTest, IsAskedForOnTheTerminalWithoutAnEcho) {
  const FakeService service(broker.address(), Keeping());
  Process terminal(InTerminal("device login 1 admin"), environment());
  ASSERT_TRUE(WaitUntil([&] { return terminal.Output().find("Password: ") != std::string::npos; }));
  terminal.Write(VPTZ_TEST_CANARY "\n");
  EXPECT_EQ(terminal.Wait(), 0) << terminal.Output();
  EXPECT_EQ(Arrived(), VPTZ_TEST_CANARY);
  EXPECT_THAT(terminal.Output(), Not(HasSubstr(VPTZ_TEST_CANARY)));
  EXPECT_THAT(terminal.Output(), HasSubstr(" echo ")) << "the echo is back";
}

TEST_F(PasswordTest, AnInterruptedPromptGivesTheEchoBack) {
  const FakeService service(broker.address(), Keeping());
  Process terminal(InTerminal("device login 1 admin"), environment());
  ASSERT_TRUE(WaitUntil([&] { return terminal.Output().find("Password: ") != std::string::npos; }));
  terminal.Write(VPTZ_TEST_CANARY "\x03");
  EXPECT_EQ(terminal.Wait(), 128 + SIGINT);
  EXPECT_THAT(terminal.Output(), HasSubstr(" echo "));
  EXPECT_EQ(Arrived(), "");
}

TEST_F(PasswordTest, AnInterruptBetweenPromptAndReadingIsNotLost) {
  const FakeService service(broker.address(), Keeping());
  Words variables = environment();
  variables.push_back("LD_PRELOAD=" VPTZCTL_INTERRUPTED_PROMPT);
  variables.push_back("ASAN_OPTIONS=verify_asan_link_order=0");
  Process terminal(InTerminal("device login 1 admin"), variables);
  EXPECT_EQ(terminal.Wait(), 128 + SIGINT);
  EXPECT_THAT(terminal.Output(), HasSubstr("Password: "));
  EXPECT_THAT(terminal.Output(), HasSubstr(" echo "));
}

TEST_F(PasswordTest, APromptWithoutAnAnswerIsAFailure) {
  const FakeService service(broker.address(), Keeping());
  Process terminal(InTerminal("device login 1 admin"), environment());
  ASSERT_TRUE(WaitUntil([&] { return terminal.Output().find("Password: ") != std::string::npos; }));
  terminal.Write(VPTZ_TEST_CANARY "\x04\x04");
  EXPECT_EQ(terminal.Wait(), 2);
  EXPECT_THAT(terminal.Output(), HasSubstr("no password was given"));
  EXPECT_THAT(terminal.Output(), HasSubstr(" echo "));
  EXPECT_EQ(Arrived(), "");
}

TEST_F(PasswordTest, WithoutATerminalTheOptionsAreNamed) {
  const FakeService service(broker.address(), Keeping());
  Words words = ToolOnBus("--json device login 1 admin");
  words.insert(words.begin(), "setsid");
  const RunResult result = vptz_test::Run(words, environment());
  ExpectFailure(result, 2, "no_password");
  EXPECT_THAT(result.errors, HasSubstr("give --password-file or --password-stdin"));
}

TEST_F(PasswordTest, AFileThatCannotBeReadIsNamed) {
  const FakeService service(broker.address(), Keeping());
  const RunResult result = Ctl("--json device login 1 admin --password-file /nonexistent/password");
  ExpectFailure(result, 2, "no_password");
  EXPECT_THAT(result.errors, HasSubstr("/nonexistent/password"));
  ExpectFailure(Ctl("--json device login 1 admin --password-file /"), 2, "no_password");
}

TEST_F(PasswordTest, IsNotReadWithoutAUser) {
  const FakeService service(broker.address(), Keeping());
  EXPECT_EQ(Ctl("device add NDI 192.0.2.9").exit_code, 0);
  EXPECT_EQ(Arrived(), "");
}

}  // namespace
