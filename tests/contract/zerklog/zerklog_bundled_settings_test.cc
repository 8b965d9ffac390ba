// The bundled log's settings: ZERK_LOG_LEVEL and ZERK_LOG_TARGET.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "support/process.h"
#include "support/temp_dir.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using vptz_test::RunResult;
using vptz_test::TempDir;

RunResult RunProbe(std::vector<std::string> arguments, const std::string& level, const std::string& target,
                   const std::string& syslog = "present") {
  arguments.insert(arguments.begin(), ZERKLOG_PROBE);
  RunResult result =
      vptz_test::Run(std::move(arguments),
                     {"ZERK_LOG_LEVEL=" + level, "ZERK_LOG_TARGET=" + target, "RECORDED_SYSLOG=" + syslog});
  EXPECT_EQ(result.exit_code, 0);
  return result;
}

std::ptrdiff_t LineCount(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

std::string Content(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A value of ZERK_LOG_LEVEL, and how many of the levels 0 to 3 it lets through.
using Threshold = std::pair<std::string, int>;

class ZerklogThreshold : public testing::TestWithParam<Threshold> {};

TEST_P(ZerklogThreshold, LetsThroughThatLevelAndMoreSevereOnes) {
  const RunResult result = RunProbe({"levels", "0", "1", "2", "3"}, GetParam().first, "");
  EXPECT_EQ(LineCount(result.errors), GetParam().second) << result.errors;
}

INSTANTIATE_TEST_SUITE_P(Names, ZerklogThreshold,
                         testing::Values(Threshold{"error", 1}, Threshold{"warning", 2}, Threshold{"notice", 3},
                                         Threshold{"detail", 4}, Threshold{"Detail", 4}));
INSTANTIATE_TEST_SUITE_P(Numbers, ZerklogThreshold,
                         testing::Values(Threshold{"0", 1}, Threshold{"1", 2}, Threshold{"2", 3},
                                         Threshold{"3", 4}));
INSTANTIATE_TEST_SUITE_P(Default, ZerklogThreshold, testing::Values(Threshold{"", 2}));

class ZerklogInvalidLevel : public testing::TestWithParam<const char*> {};

TEST_P(ZerklogInvalidLevel, FallsBackToWarningAndSaysSoOnce) {
  const RunResult result = RunProbe({"levels", "0", "1", "2", "3"}, GetParam(), "");
  EXPECT_EQ(LineCount(result.errors), 3) << result.errors;
  EXPECT_THAT(result.errors, HasSubstr("ZERK_LOG_LEVEL is \"" + std::string(GetParam()) + "\""));
}

INSTANTIATE_TEST_SUITE_P(Values, ZerklogInvalidLevel, testing::Values("4", "-1", "loud", "1x", "01", " 1"));

TEST(ZerklogTarget, AnInvalidOneFallsBackToStandardErrorAndSaysSoOnce) {
  for (const std::string target : {"tape", "file:", "STDERR", "/var/log/x"}) {
    const RunResult result = RunProbe({"text", "one", "two"}, "", target);
    EXPECT_EQ(LineCount(result.errors), 3) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr("ZERK_LOG_TARGET is \"" + target + "\""));
  }
}

TEST(ZerklogTarget, AnInvalidOneIsToldAlsoWhenOnlyErrorsAreWritten) {
  EXPECT_THAT(RunProbe({"levels", "1"}, "error", "tape").errors, HasSubstr("ZERK_LOG_TARGET"));
}

TEST(ZerklogTarget, AFileIsMadeAndAppendedTo) {
  const TempDir directory;
  const std::string path = directory.path() + "/log";
  RunProbe({"text", "one"}, "", "file:" + path);
  const RunResult result = RunProbe({"text", "two"}, "", "file:" + path);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(Content(path), AllOf(HasSubstr(": one\n"), EndsWith(": two\n")));
}

TEST(ZerklogTarget, LinesOfSeveralThreadsDoNotMixInAFile) {
  const TempDir directory;
  const std::string path = directory.path() + "/log";
  RunProbe({"threads", "4", "100", "5000"}, "", "file:" + path);
  std::ifstream file(path);
  int lines = 0;
  for (std::string line; std::getline(file, line); ++lines) {
    ASSERT_THAT(line, EndsWith(" Log: " + std::string(5000, line.back())));
  }
  EXPECT_EQ(lines, 400);
}

TEST(ZerklogTarget, AFileThatCannotBeOpenedFallsBackToStandardErrorAndSaysSoOnce) {
  const TempDir directory;
  const std::string path = directory.path() + "/missing/log";
  const RunResult result = RunProbe({"text", "one", "two"}, "", "file:" + path);
  EXPECT_EQ(LineCount(result.errors), 3) << result.errors;
  EXPECT_THAT(result.errors, HasSubstr("cannot open " + path + " (No such file or directory)"));
}

TEST(ZerklogTarget, APipeWithoutAReaderIsNotWaitedFor) {
  const TempDir directory;
  const std::string path = directory.path() + "/pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(LineCount(RunProbe({"text", "one"}, "", "file:" + path).errors), 2);
}

TEST(ZerklogTarget, AFullDiskIsToldOnce) {
  const RunResult result = RunProbe({"text", "one", "two", "three"}, "", "file:/dev/full");
  EXPECT_EQ(result.errors, "zerklog: cannot write to /dev/full: No space left on device\n");
}

TEST(ZerklogTarget, AFileThatMayNotGrowDoesNotEndTheProcess) {
  const TempDir directory;
  const std::string path = directory.path() + "/log";
  const RunResult result = RunProbe({"file-limit", "1000"}, "", "file:" + path);
  EXPECT_EQ(result.errors, "zerklog: cannot write to " + path + ": File too large\n");
  EXPECT_EQ(Content(path).size(), 1000U);
}

TEST(ZerklogTarget, SyslogReceivesEachLineWithItsPriority) {
  const RunResult result = RunProbe({"levels", "0", "1", "2", "3"}, "detail", "syslog");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output,
            "<3> error 42 probe.cc:12 Log: level 0\n"
            "<4> warning 42 probe.cc:12 Log: level 1\n"
            "<5> notice 42 probe.cc:12 Log: level 2\n"
            "<7> detail 42 probe.cc:12 Log: level 3\n");
}

TEST(ZerklogTarget, SyslogReceivesALongLineInPieces) {
  const RunResult result = RunProbe({"long", "20000"}, "", "syslog");
  EXPECT_EQ(LineCount(result.output), 3);
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), 'x'), 20000);
}

TEST(ZerklogTarget, SyslogPiecesHoldWholeCharacters) {
  std::string text;
  for (int number = 0; number < 6000; ++number) {
    text += "\xe2\x82\xac";
  }
  const RunResult result = RunProbe({"text", text}, "", "syslog");
  EXPECT_EQ(LineCount(result.output), 3);
  EXPECT_THAT(result.output, Not(HasSubstr("... \x82")));
  EXPECT_THAT(result.output, Not(HasSubstr("... \xac")));
}

TEST(ZerklogTarget, AMissingSyslogFallsBackToStandardErrorAndSaysSoOnce) {
  const RunResult result = RunProbe({"text", "one", "two"}, "", "syslog", "absent");
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(LineCount(result.errors), 3) << result.errors;
  EXPECT_THAT(result.errors, HasSubstr("there is no system log; using stderr"));
}

}  // namespace
