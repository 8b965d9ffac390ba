// The completion script for bash and the manual page that the build makes.
#include <sstream>

#include "cli_test.h"
#include "command.h"

namespace {

using testing::HasSubstr;

using vptz_test::RunResult;
using vptz_test::Words;

constexpr char kComplete[] = R"bash(
. "$1"
shift
COMP_WORDS=(vptzctl "$@")
COMP_CWORD=$#
_vptzctl
printf '%s\n' "${COMPREPLY[@]}"
)bash";

// What is offered for the last of the words, in its order.
Words Offered(const Words& words) {
  Words argv = {"bash", "-c", kComplete, "bash", VPTZCTL_COMPLETION};
  argv.insert(argv.end(), words.begin(), words.end());
  const RunResult result = vptz_test::Run(argv);
  EXPECT_EQ(result.exit_code, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  return vptz_test::Split(result.output);
}

TEST(CompletionTest, IsSoundBash) {
  const RunResult result = vptz_test::Run({"bash", "-n", VPTZCTL_COMPLETION});
  EXPECT_EQ(result.exit_code, 0) << result.errors;
}

TEST(CompletionTest, OffersEveryCommand) {
  for (const vptzctl::Command& command : vptzctl::Commands()) {
    const Words before = command.group.empty() ? Words{""} : Words{command.group, ""};
    EXPECT_THAT(Offered(before), testing::Contains(command.verb)) << command.Name();
  }
}

TEST(CompletionTest, OffersWhatBeginsSo) {
  EXPECT_EQ(Offered({"p"}), (Words{"ptz", "preset", "power", "profile"}));
  EXPECT_EQ(Offered({"ptz", "st"}), Words{"stop"});
  EXPECT_EQ(Offered({"dance", ""}), Words{});
}

TEST(CompletionTest, OffersTheOptionsOfTheCommand) {
  EXPECT_EQ(Offered({"ptz", "move", "1", "--pan"}), (Words{"--pan", "--pan-speed"}));
  EXPECT_EQ(Offered({"--vers"}), Words{"--version"});
  EXPECT_EQ(Offered({"power", "on", "--js"}), Words{"--json"});
}

TEST(CompletionTest, ValuesOfOptionsAreNoCommands) {
  EXPECT_EQ(Offered({"--bus", "ptz", "pow"}), Words{"power"});
  EXPECT_EQ(Offered({"--bus", "p"}), Words{});
  EXPECT_EQ(Offered({"--json", "ptz", "--timeout", "5", "st"}), Words{"stop"});
}

TEST(CompletionTest, OffersChoicesAndFiles) {
  EXPECT_EQ(Offered({"serial", "reset2p0", "o"}), (Words{"on", "off"}));
  EXPECT_EQ(Offered({"nat", "query", "1", "--type", "m"}), Words{"media"});
  EXPECT_EQ(Offered({"db", "show", VPTZCTL_COMPLETION}), Words{VPTZCTL_COMPLETION});
  EXPECT_EQ(Offered({"device", "login", "1", "admin", "--password-file", VPTZCTL_MANUAL}),
            Words{VPTZCTL_MANUAL});
}

TEST(ManualTest, DescribesEveryCommandAndExitCode) {
  const RunResult page =
      vptz_test::Run({"man", "--local-file", "--pager=cat", VPTZCTL_MANUAL}, {"MANWIDTH=400", "LC_ALL=C"});
  EXPECT_EQ(page.exit_code, 0) << page.errors;
  for (const vptzctl::Command& command : vptzctl::Commands()) {
    EXPECT_THAT(page.output, HasSubstr("       " + command.Name())) << command.Name();
    EXPECT_THAT(page.output, HasSubstr(command.help));
  }
  EXPECT_THAT(page.output, HasSubstr("7  the database lacks"));
}

TEST(ManualTest, NamesTheEnvironmentTheFilesAndOtherPages) {
  const RunResult page =
      vptz_test::Run({"man", "--local-file", "--pager=cat", VPTZCTL_MANUAL}, {"MANWIDTH=400", "LC_ALL=C"});
  for (const char* name : {"DORV_BUS_ADDRESS", "DORV_BUS_SETTINGS", "DORV_BUS_CONNECT_TIMEOUT",
                           "ZERK_LOG_LEVEL", "ZERK_LOG_TARGET", "NO_COLOR", "TERM", "TZ", "/etc/dorv/bus.conf",
                           "/run/dorv/bus.sock", "vptz.conf", "vptz.db", "vptzd(1)", "mosquitto(8)"}) {
    EXPECT_THAT(page.output, HasSubstr(name));
  }
}

TEST(ManualTest, GivesTheFormatterNoReasonToWarn) {
  const RunResult result = vptz_test::Run({"man", "--warnings", "--local-file", "--pager=cat", VPTZCTL_MANUAL},
                                          {"MANWIDTH=80", "LC_ALL=C"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.errors, "");
}

TEST(ManualTest, EveryDashCanBeCopiedFromIt) {
  std::istringstream lines(vptz_test::Content(VPTZCTL_MANUAL));
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind('.', 0) == 0 && line.rfind(".B ", 0) != 0) continue;
    const std::size_t dash = line.find("--");
    EXPECT_EQ(dash, std::string::npos) << line;
  }
}

}  // namespace
