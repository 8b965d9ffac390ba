// Every exit code, and the table of results that have names.
#include "failures.h"

#include <signal.h>

#include <semaphore.h>
#include <cerrno>
#include <climits>
#include <fstream>
#include <map>
#include <regex>
#include <stdexcept>

#include <vptz/results.h>

#include "cli_test.h"
#include "command.h"
#include "fake_service.h"
#include "parser.h"
#include "run.h"
#include "session.h"

namespace {

using testing::HasSubstr;
using vptz_test::AnsweringStatus;
using vptz_test::BusTest;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::FailingWith;
using vptz_test::FakeService;
using vptz_test::Json;
using vptz_test::Process;
using vptz_test::RunResult;
using vptzctl::ExitCode;
using vptzctl::Explain;

// "kUnknownMethod" as "unknown_method".
std::string Underscored(const std::string& enumerator) {
  std::string name;
  for (const char c : enumerator.substr(1)) {
    const bool capital = c >= 'A' && c <= 'Z';
    name +=
        (capital && !name.empty() ? "_" : "") + std::string(1, capital ? static_cast<char>(c - 'A' + 'a') : c);
  }
  return name;
}

TEST(FailuresTest, NamesExactlyTheReferenceServicesRefusals) {
  std::map<int, std::string> of_the_service;
  std::ifstream header(VPTZ_STATUS_HEADER);
  const std::regex enumerator(R"(^\s*(k\w+) = (-\d+))");
  std::smatch match;
  for (std::string line; std::getline(header, line);) {
    if (std::regex_search(line, match, enumerator)) of_the_service[std::stoi(match[2])] = Underscored(match[1]);
  }
  std::map<int, std::string> of_the_tool;
  for (const VptzResultMeaning& known : VptzKnownResults()) {
    if (Explain(known.result).exit_code == ExitCode::kRefused && known.result != 0) {
      of_the_tool[known.result] = known.name;
    }
  }
  EXPECT_GE(of_the_service.size(), 9u);
  EXPECT_EQ(of_the_tool, of_the_service);
}

TEST(FailuresTest, EveryNumberHasAnExplanation) {
  for (const int status : {INT_MIN, -100000, -4096, -4095, -1010, -1000, -134, 1, INT_MAX}) {
    EXPECT_EQ(Explain(status).exit_code, ExitCode::kRefused) << status;
    EXPECT_FALSE(Explain(status).message.empty()) << status;
  }
  EXPECT_EQ(Explain(-EINVAL).name, "EINVAL");
  EXPECT_EQ(Explain(-EINVAL).exit_code, ExitCode::kOther);
}

struct ErrorCase {
  int error;
  int exit_code;
  const char* name;
};

class TransportFailureTest : public BusTest, public testing::WithParamInterface<ErrorCase> {};

constexpr ErrorCase kErrors[] = {
    {-ENOTCONN, 3, "ENOTCONN"}, {-EACCES, 3, "EACCES"},     {-ETIMEDOUT, 4, "ETIMEDOUT"},
    {-ESRCH, 5, "ESRCH"},       {-EMSGSIZE, 6, "EMSGSIZE"}, {-ECONNRESET, 6, "ECONNRESET"},
    {-EPROTO, 6, "EPROTO"},
};

INSTANTIATE_TEST_SUITE_P(Failures, TransportFailureTest, testing::ValuesIn(kErrors),
                         [](const auto& info) { return "Error" + std::to_string(-info.param.error); });

TEST_P(TransportFailureTest, HasItsExitCodeAndName) {
  const FakeService service(broker.address(), FailingWith(GetParam().error));
  const RunResult result = Ctl("--json ptz home 1");
  ExpectFailure(result, GetParam().exit_code, GetParam().name);
  EXPECT_EQ(Json::parse(result.output)["status"], GetParam().error);
  EXPECT_EQ(Json::parse(result.output)["camera"], 1);
}

TEST_F(CliTest, AStoppedServiceIsATimeOut) {
  service->Signal(SIGSTOP);
  const RunResult result = Ctl("--timeout 1 --json status");
  service->Signal(SIGCONT);
  ExpectFailure(result, 4, "ETIMEDOUT");
  EXPECT_THAT(result.errors, HasSubstr("no answer within the time-out of 1 s (ETIMEDOUT, -110)"));
  EXPECT_FALSE(Json::parse(result.output).contains("state"));
}

TEST_F(BusTest, AReplyThatIsTooLongIsAnotherFailure) {
  const FakeService service(broker.address(), [](bus_request* request) {
    const std::string reply(600, '\0');
    bus_request_reply(request, reply.data(), static_cast<int>(reply.size()));
  });
  ExpectFailure(Ctl("--json ptz position 1"), 6, "EMSGSIZE");
}

TEST_F(BusTest, ABrokerKilledInTheMiddleOfACallIsAnotherFailure) {
  sem_t received;
  sem_init(&received, 0, 0);
  bus_request* kept = nullptr;
  {
    const FakeService service(broker.address(), [&](bus_request* request) {
      kept = request;
      sem_post(&received);
    });
    Process tool(ToolOnBus("--json --timeout 60 power on"), environment());
    while (sem_wait(&received) != 0) {
    }
    broker.Kill();
    const int exit_code = tool.Wait();
    ExpectFailure({exit_code, tool.Output(), tool.Errors()}, 6, "ECONNRESET");
  }
  bus_request_fail(kept, -ECANCELED);
  sem_destroy(&received);
}

TEST_F(BusTest, StatusesWithoutANameAreRefusals) {
  for (const int status : {7, -1100, INT_MAX, INT_MIN}) {
    const FakeService service(broker.address(), AnsweringStatus(status));
    const RunResult result = Ctl("--json power on");
    ExpectFailure(result, 1, "refused");
    EXPECT_EQ(Json::parse(result.output)["status"], status);
    EXPECT_THAT(result.errors, HasSubstr(std::to_string(status)));
  }
}

TEST_F(BusTest, APowerStatusWithoutANameIsAnAnswer) {
  const FakeService service(broker.address(), AnsweringStatus(7));
  EXPECT_EQ(CtlJson("power status"), Json({{"command", "power status"}, {"power", nullptr}, {"status", 7}}));
}

// Nothing throws so; if something did, a program would learn of it.
TEST(FailuresTest, AnUnexpectedExceptionIsAFailureInJsonToo) {
  vptzctl::Command command;
  command.group = "ptz";
  command.verb = "dance";
  command.run = [](vptzctl::Session&) -> ExitCode { throw std::runtime_error("out of step"); };
  command.needs = vptzctl::Needs::kNothing;
  vptzctl::Invocation invocation;
  invocation.command = &command;
  invocation.json = true;
  vptzctl::KeptClients clients;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const auto exit_code = static_cast<int>(vptzctl::RunInvocation(invocation, &clients));
  const std::string output = testing::internal::GetCapturedStdout();
  ExpectFailure({exit_code, output, testing::internal::GetCapturedStderr()}, 6, "unexpected");
  EXPECT_EQ(Json::parse(output)["command"], "ptz dance");
}

TEST_F(CliTest, OutputThatCannotBeWrittenIsAFailure) {
  std::string command;
  for (const std::string& word : ToolOnBus("ptz position 1")) command += word + " ";
  const RunResult result = vptz_test::Run({"bash", "-c", command + ">/dev/full"}, environment());
  EXPECT_EQ(result.exit_code, 6);
  EXPECT_THAT(result.errors, HasSubstr("vptzctl: cannot write to standard output\n"));
}

TEST_F(CliTest, ClosedOutputIsAFailureToo) {
  for (const char* line : {"ptz position 1", "device list", "status"}) {
    std::string command = "exec";
    for (const std::string& word : ToolOnBus(line)) command += " " + word;
    const RunResult result = vptz_test::Run({"bash", "-c", command + " >&-"}, environment());
    EXPECT_EQ(result.exit_code, 6) << line;
    EXPECT_THAT(result.errors, HasSubstr("vptzctl: cannot write to standard output\n")) << line;
  }
}

}  // namespace
