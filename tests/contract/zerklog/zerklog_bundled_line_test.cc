// How the bundled log writes its lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support/process.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

// Runs a program that logs everything to standard error; the lines it wrote.
std::vector<std::string> LinesOf(std::vector<std::string> command) {
  const vptz_test::RunResult result =
      vptz_test::Run(std::move(command), {"ZERK_LOG_LEVEL=detail", "ZERK_LOG_TARGET="});
  EXPECT_EQ(result.exit_code, 0);
  return Lines(result.errors);
}

// The same through a pipe, whose other end reads only so fast.
std::vector<std::string> LinesThroughPipe(const std::string& arguments) {
  const std::string command = std::string(ZERKLOG_PROBE) + " " + arguments + " 2>&1 | cat";
  // A forked child lacks its parent's threads, which ThreadSanitizer takes for a leak.
  const std::string sanitizer = "TSAN_OPTIONS=report_thread_leaks=0 atexit_sleep_ms=0";
  const vptz_test::RunResult result =
      vptz_test::Run({"/bin/sh", "-c", command}, {"ZERK_LOG_LEVEL=detail", "ZERK_LOG_TARGET=", sanitizer});
  return Lines(result.output);
}

// The line from its level on.
std::string WithoutTime(const std::string& line) { return line.substr(line.find(' ') + 1); }

TEST(ZerklogLine, HoldsTimeLevelModulePlaceFunctionAndMessage) {
  const auto lines = LinesOf({ZERKLOG_PROBE, "text", "Hello, camera"});
  ASSERT_THAT(lines, SizeIs(1));
  const std::regex form(
      R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d warning 42 probe\.cc:12 Log: Hello, camera)");
  EXPECT_TRUE(std::regex_match(lines[0], form)) << lines[0];
}

TEST(ZerklogLine, NamesTheNearestLevel) {
  const auto lines = LinesOf({ZERKLOG_PROBE, "levels", "-7", "0", "1", "2", "3", "9"});
  std::vector<std::string> names;
  for (const std::string& line : lines) {
    const std::string rest = WithoutTime(line);
    names.push_back(rest.substr(0, rest.find(' ')));
  }
  EXPECT_THAT(names, ElementsAre("error", "error", "warning", "notice", "detail", "detail"));
}

TEST(ZerklogLine, WritesADashForWhatIsNull) {
  std::vector<std::string> rest = LinesOf({ZERKLOG_PROBE, "nulls"});
  std::transform(rest.begin(), rest.end(), rest.begin(), WithoutTime);
  EXPECT_THAT(rest, ElementsAre("error 42 -:1 Function: no file", "error 42 file.cc:2 -: no function",
                                "error 42 file.cc:3 Function: ", "error -1 -:-1 -: "));
}

TEST(ZerklogLine, ANewlineInTheMessageDoesNotMakeAnotherLine) {
  const auto lines = LinesOf({ZERKLOG_PROBE, "text", "one\n2030-01-01T00:00:00.000+00:00 error 1 forged\r\n"});
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], EndsWith(R"(: one\n2030-01-01T00:00:00.000+00:00 error 1 forged\r\n)"));
}

TEST(ZerklogLine, ControlCharactersAreEscapedAndOtherLanguagesAreNot) {
  const auto lines = LinesOf({ZERKLOG_PROBE, "text",
                              "tab\t, escape \x1b[2J, delete \x7f, Gr\xc3\xb6\xc3\x9f"
                              "e"});
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], EndsWith("tab\t, escape \\x1b[2J, delete \\x7f, Gr\xc3\xb6\xc3\x9f"
                                 "e"));
}

TEST(ZerklogLine, ALongLineArrivesWhole) {
  const auto lines = LinesOf({ZERKLOG_PROBE, "long", "1048576"});
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], EndsWith(": " + std::string(1048576, 'x')));
}

TEST(ZerklogLine, AMessageOfAnyLengthIsComplete) {
  for (const std::size_t length : {0, 1, 510, 511, 512, 513, 4096}) {
    const auto lines = LinesOf({ZERKLOG_PROBE, "long", std::to_string(length)});
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_THAT(lines[0], EndsWith(" Log: " + std::string(length, 'x'))) << length;
  }
}

// Lines longer than what a pipe takes at once.
TEST(ZerklogLine, LinesOfSeveralThreadsDoNotMix) {
  const auto lines = LinesThroughPipe("threads 8 50 20000");
  ASSERT_THAT(lines, SizeIs(8 * 50));
  std::vector<int> count(8);
  for (const std::string& line : lines) {
    const char letter = line.back();
    ASSERT_THAT(line, EndsWith(" Log: " + std::string(20000, letter)));
    ++count.at(static_cast<std::size_t>(letter - 'a'));
  }
  EXPECT_THAT(count, testing::Each(50));
}

TEST(ZerklogLine, AFormatMayReadTheCallersErrno) {
  const auto lines = LinesOf({ZERKLOG_PROBE, "reads-errno", "%m, %d"});
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], EndsWith(": Invalid cross-device link, 7"));
}

TEST(ZerklogLine, AMessageThatCannotBeFormattedShowsItsFormat) {
  const auto lines = LinesOf({ZERKLOG_PROBE, "cannot-be-formatted"});
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], EndsWith(": (cannot be formatted) wide %ls"));
}

TEST(ZerklogLine, StaticObjectsAreHeardBeforeAndAfterMain) {
  const auto lines = LinesOf({ZERKLOG_STATIC_PROBE});
  EXPECT_THAT(lines, ElementsAre(EndsWith("static construction"), EndsWith("static destruction"),
                                 EndsWith("last of all")));
}

TEST(ZerklogLine, AChildMadeInTheMiddleOfLoggingCanLog) {
  const auto lines = LinesThroughPipe("fork 200");
  const auto children =
      std::count_if(lines.begin(), lines.end(), [](const std::string& line) { return line.back() == 'd'; });
  EXPECT_EQ(children, 200);
  EXPECT_THAT(lines, SizeIs(2200));
}

TEST(ZerklogLine, AForkWaitsForNoLineThatIsStuckAndItsChildCanLog) {
  const vptz_test::RunResult result = vptz_test::Run(
      {ZERKLOG_PROBE, "fork-while-stuck"},
      {"ZERK_LOG_LEVEL=detail", "ZERK_LOG_TARGET=", "TSAN_OPTIONS=report_thread_leaks=0 atexit_sleep_ms=0"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(Lines(result.output), ElementsAre(EndsWith(": child"), EndsWith(": grandchild")));
}

TEST(ZerklogLine, ACancelledThreadWritesItsWholeLine) {
  const auto lines = LinesOf({ZERKLOG_PROBE, "cancelled"});
  EXPECT_THAT(lines, ElementsAre(EndsWith(": cancelled")));
}

}  // namespace
