#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <set>
#include <string>

#include <vptz/results.h>

namespace {

std::string NameOf(int result) { return VptzExplainResult(result).name; }

TEST(ResultsTest, RefusalsOfTheReferenceServiceHaveNames) {
  EXPECT_EQ(NameOf(-1006), "out_of_range");
  EXPECT_EQ(NameOf(-1010), "offline");
}

TEST(ResultsTest, FailuresOfTheBusHaveTheirErrnoNames) {
  EXPECT_EQ(NameOf(-ETIMEDOUT), "ETIMEDOUT");
  EXPECT_EQ(NameOf(-ENOENT), "ENOENT");  // has the system's text
  EXPECT_STRNE(VptzExplainResult(-ENOENT).text, "");
}

TEST(ResultsTest, LocalFailureIsNoErrno) { EXPECT_EQ(NameOf(-1), "not_sent"); }

TEST(ResultsTest, DoneIsDone) { EXPECT_EQ(NameOf(0), "done"); }

TEST(ResultsTest, StatusOfAnotherServiceIsARefusalWithoutAName) {
  for (const int status : {INT_MIN, -100000, -4096, -1000, 1, INT_MAX}) EXPECT_EQ(NameOf(status), "refused");
}

TEST(ResultsTest, EachResultAndEachNameStandsOnceInTheTable) {
  std::set<int> results;
  std::set<std::string> names;
  for (const VptzResultMeaning& known : VptzKnownResults()) {
    EXPECT_TRUE(results.insert(known.result).second) << known.result;
    EXPECT_TRUE(names.insert(known.name).second) << known.name;
    EXPECT_STREQ(VptzExplainResult(known.result).text, known.text);
  }
}

}  // namespace
