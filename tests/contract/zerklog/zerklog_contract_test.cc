// What an application relies on, whatever library stands behind zerklog.h. The
// tests can't see where such a library writes to; they see to it that logging
// leaves the process alive and as it was.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/process.h"

namespace {

int ExitCodeOf(std::vector<std::string> command) {
  return vptz_test::Run(std::move(command), {"ZERK_LOG_LEVEL=detail", "ZERK_LOG_TARGET="}).exit_code;
}

TEST(ZerklogContract, ANullFileFunctionOrFormatIsAccepted) {
  EXPECT_EQ(ExitCodeOf({ZERKLOG_PROBE, "nulls"}), 0);
}

TEST(ZerklogContract, AnyLevelIsAccepted) {
  EXPECT_EQ(ExitCodeOf({ZERKLOG_PROBE, "levels", "0", "1", "2", "3", "-1", "4", "-2147483648", "2147483647"}),
            0);
}

TEST(ZerklogContract, ALineOfOneMebibyteIsAccepted) {
  EXPECT_EQ(ExitCodeOf({ZERKLOG_PROBE, "long", "1048576"}), 0);
}

TEST(ZerklogContract, SeveralThreadsMayLogAtOnce) {
  EXPECT_EQ(ExitCodeOf({ZERKLOG_PROBE, "threads", "8", "200", "100"}), 0);
}

TEST(ZerklogContract, ErrnoIsKept) { EXPECT_EQ(ExitCodeOf({ZERKLOG_PROBE, "keeps-errno"}), 0); }

TEST(ZerklogContract, AMessageThatCannotBeFormattedIsSurvived) {
  EXPECT_EQ(ExitCodeOf({ZERKLOG_PROBE, "cannot-be-formatted"}), 0);
}

TEST(ZerklogContract, StaticObjectsMayLog) { EXPECT_EQ(ExitCodeOf({ZERKLOG_STATIC_PROBE}), 0); }

TEST(ZerklogContract, AReaderThatWentAwayDoesNotEndTheProcess) {
  EXPECT_EQ(ExitCodeOf({ZERKLOG_PROBE, "reader-gone"}), 0);
}

TEST(ZerklogContract, AClosedStandardErrorDoesNotEndTheProcess) {
  EXPECT_EQ(ExitCodeOf({ZERKLOG_PROBE, "no-standard-error"}), 0);
}

}  // namespace
