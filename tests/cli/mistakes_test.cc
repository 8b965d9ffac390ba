#include "mistakes.h"

#include <gtest/gtest.h>

namespace {

using vptzctl::Argument;
using vptzctl::EditDistance;
using vptzctl::Flag;
using vptzctl::FlagWithValue;
using vptzctl::Nearest;
using vptzctl::Number;
using vptzctl::Suggestion;
using vptzctl::UnknownOption;

TEST(MistakesTest, EachSlipOfTheFingerCountsOnce) {
  EXPECT_EQ(EditDistance("pan", "pan"), 0u);
  EXPECT_EQ(EditDistance("pna", "pan"), 1u);
  EXPECT_EQ(EditDistance("pn", "pan"), 1u);
  EXPECT_EQ(EditDistance("paan", "pan"), 1u);
  EXPECT_EQ(EditDistance("pin", "pan"), 1u);
  EXPECT_EQ(EditDistance("", "pan"), 3u);
}

TEST(MistakesTest, TheNearestIsMeantIfItIsNearEnough) {
  EXPECT_EQ(Nearest("--pna", {"--tilt", "--pan", "--pan-speed"}), "--pan");
  EXPECT_EQ(Nearest("--bogus", {"--tilt", "--pan", "--bus"}), "");
  EXPECT_EQ(Nearest("--zoom", {}), "");
  EXPECT_EQ(Nearest("", {"", "a"}), "");
  EXPECT_EQ(Nearest(std::string(100000, 'p'), {std::string(99999, 'p')}), "");
}

TEST(MistakesTest, ASuggestionIsMadeOnlyWhereThereIsOne) {
  EXPECT_EQ(Suggestion("lits", {"list", "show"}), ", perhaps list is meant");
  EXPECT_EQ(Suggestion("dance", {"list", "show"}), "");
}

TEST(MistakesTest, ValuesAreNoUnknownOptions) {
  const std::vector<Argument> known = {Number("--pan", "DEG", "deg", ""), Flag("--verbose", "").Letter("-v")};
  EXPECT_EQ(UnknownOption({"--pan", "--roll"}, known), "");
  EXPECT_EQ(UnknownOption({"-3", "-.5", "-", "-v", "--verbose"}, known), "");
  EXPECT_EQ(UnknownOption({"--pan=3", "--roll=4"}, known), "--roll");
  EXPECT_EQ(UnknownOption({"--verbose", "--roll"}, known), "--roll");
  EXPECT_EQ(UnknownOption({"--", "--roll"}, known), "");
  EXPECT_EQ(UnknownOption({"--pan"}, known), "");
}

TEST(MistakesTest, AFlagWithAValueIsFound) {
  const std::vector<Argument> known = {Number("--pan", "DEG", "deg", ""), Flag("--verbose", "").Letter("-v")};
  EXPECT_EQ(FlagWithValue({"--pan=3", "--verbose=yes"}, known), "--verbose");
  EXPECT_EQ(FlagWithValue({"-v=3"}, known), "-v");
  EXPECT_EQ(FlagWithValue({"--verbose", "--roll=3", "--pan", "-v=3"}, known), "");
  EXPECT_EQ(FlagWithValue({"--", "-v=3"}, known), "");
}

}  // namespace
