// How results look, whatever they hold.
#include "people.h"

#include "cli_test.h"
#include "printable.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::Json;
using vptz_test::RunResult;
using vptz_test::RunTool;
using vptz_test::Words;

TEST(OutputTest, NumbersAreShortAndKeepWhatMatters) {
  EXPECT_EQ(vptzctl::FormatNumber(30.0), "30");
  EXPECT_EQ(vptzctl::FormatNumber(-12.5), "-12.5");
  EXPECT_EQ(vptzctl::FormatNumber(4294967295.0), "4294967295");
}

TEST(OutputTest, ControlCharactersAreMadeVisible) {
  EXPECT_EQ(vptzctl::Printable("a\x1b[31m\n\x7f"), "a\\x1b[31m\\x0a\\x7f");
  EXPECT_EQ(vptzctl::Printable("Kamera Süd"), "Kamera Süd");
}

TEST(OutputTest, ControlCharactersOfTheUpperHalfAreMadeVisible) {
  EXPECT_EQ(vptzctl::Printable("\xc2\x9b"
                               "31m"),
            "\\xc2\\x9b31m");
  EXPECT_EQ(vptzctl::Printable("a\xe2\x80\xa8"), "a\\xe2\\x80\\xa8");
}

TEST(OutputTest, MarksThatTurnTheDirectionOfWritingAreMadeVisible) {
  EXPECT_EQ(vptzctl::Printable("Stage\xe2\x80\xae"
                               "1"),
            "Stage\\xe2\\x80\\xae1");
  EXPECT_EQ(vptzctl::Printable("\xe2\x81\xa6"), "\\xe2\\x81\\xa6");
}

TEST(OutputTest, BytesThatAreNoTextAreMadeVisible) {
  EXPECT_EQ(vptzctl::Printable("\xff\xc3"), "\\xff\\xc3");
  EXPECT_EQ(vptzctl::Printable("\xc0\x9b"), "\\xc0\\x9b") << "overlong";
  EXPECT_EQ(vptzctl::Printable("\xed\xa0\x80"), "\\xed\\xa0\\x80") << "a surrogate";
  EXPECT_EQ(vptzctl::Printable("日本語 🎥"), "日本語 🎥");
}

TEST_F(CliTest, ArgumentsCannotControlTheTerminal) {
  const RunResult added = Ctl(Words{"serial", "add", "\x1b]0;owned\a\r\n"});
  EXPECT_EQ(added.exit_code, 0);
  EXPECT_THAT(added.output, Not(HasSubstr("\x1b")));
  EXPECT_THAT(added.output, HasSubstr("\\x1b]0;owned\\x07"));
  const RunResult again = Ctl(Words{"serial", "add", "\x1b]0;owned\a\r\n"});
  EXPECT_EQ(again.exit_code, 1);
  EXPECT_THAT(again.errors, Not(HasSubstr("\x1b")));
}

TEST(HostileArgumentsTest, AMistakeCannotControlTheTerminal) {
  EXPECT_THAT(RunTool({"\x1b[2J"}).errors, Not(HasSubstr("\x1b")));
  EXPECT_THAT(RunTool({"ptz", "stop", "1", "--\x1b[2J"}).errors, Not(HasSubstr("\x1b")));
}

TEST_F(CliTest, JsonEscapesWhateverAnArgumentHolds) {
  for (const std::string token : {"\"},{\"", "\\", "line\nbreak", "\x1b[31m", "Süd", "%s%n", "{}", "[a,b]"}) {
    const RunResult result = Ctl(Words{"--json", "preset", "remove", "1", token});
    ExpectFailure(result, 1, "unknown_id");
    EXPECT_EQ(Json::parse(result.output)["token"], token);
  }
}

TEST_F(CliTest, BytesThatAreNoTextAreReplacedInJson) {
  const RunResult result = Ctl(Words{"--json", "preset", "remove", "1", "\xff\xfe"});
  ExpectFailure(result, 1, "unknown_id");
  EXPECT_EQ(Json::parse(result.output)["token"], "\xef\xbf\xbd\xef\xbf\xbd");
}

TEST_F(CliTest, AVeryLongArgumentGetsAnOrdinaryAnswer) {
  const std::string token(100000, 'x');
  const RunResult result = Ctl(Words{"--json", "preset", "remove", "1", token});
  ExpectFailure(result, 1, "unknown_id");
  EXPECT_EQ(Json::parse(result.output)["token"], token);
}

// What a command writes to a terminal of its own.
std::string OnTerminal(const Words& tool, const Words& environment) {
  std::string command;
  for (const std::string& word : tool) command += word + " ";
  return vptz_test::Run({VPTZ_SCRIPT, "--quiet", "--return", "--command", command, "/dev/null"}, environment)
      .output;
}

TEST_F(CliTest, ColoursAreForTerminalsWhoseUserWantsThem) {
  const Words tool = ToolOnBus("device list");
  const std::string folder = environment()[0];
  EXPECT_THAT(OnTerminal(tool, {folder, "TERM=xterm", "NO_COLOR="}), HasSubstr("\x1b[1m"));
  EXPECT_THAT(OnTerminal(tool, {folder, "TERM=xterm", "NO_COLOR=1"}), Not(HasSubstr("\x1b")));
  EXPECT_THAT(OnTerminal(tool, {folder, "TERM=dumb", "NO_COLOR="}), Not(HasSubstr("\x1b")));
  EXPECT_THAT(Ctl("device list").output, Not(HasSubstr("\x1b")));
}

TEST_F(CliTest, GlobalOptionsMayStandAnywhere) {
  EXPECT_EQ(Ctl("ptz position --json 1 --timeout 5").exit_code, 0);
  EXPECT_EQ(Ctl("--json --timeout 0 power status").exit_code, 0);
  EXPECT_EQ(Ctl("power --timeout 5 status --json").exit_code, 0);
}

}  // namespace
