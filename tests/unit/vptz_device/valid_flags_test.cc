// When a number that is loaded counts as valid.
#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <string>

#include "vptz_device/device_test.h"

namespace {

using vptz_test::Insert;
using vptz_test::InsertMediaParameter;
using vptz_test::InsertMovementParameter;
using vptz_test::LoadingTest;

struct FlagsCase {
  std::string name;
  std::string numbers;  // value, min and max as SQL
  int value_valid;
  int range_valid;
  bool ok;
};

std::ostream& operator<<(std::ostream& out, const FlagsCase& row) { return out << row.name; }

const FlagsCase kFlags[] = {
    {"Inside", "5, 0, 10", 1, 1, true},
    {"AtTheMinimum", "0, 0, 10", 1, 1, true},
    {"BelowTheMinimum", "5, 10, 20", 0, 1, false},
    {"AboveTheMaximum", "30, 10, 20", 1, 1, true},
    {"OnePointRange", "10, 10, 10", 1, 1, true},
    {"TurnedRange", "30, 20, 10", 1, 0, false},
    {"BelowATurnedRange", "5, 20, 10", 0, 0, false},
    {"NoMinimum", "5, NULL, 10", 1, 1, true},
    {"NoNumbers", "NULL, NULL, NULL", 1, 1, true},
    {"NoValue", "NULL, 0, 10", 1, 1, true},
    {"NoMaximum", "5, 0, NULL", 1, 1, true},
    {"Infinite", "9e999, -9e999, 9e999", 1, 1, true},
    {"Negative", "-9999999, 0, 10", 0, 1, false},
};

class FlagsTest : public LoadingTest, public testing::WithParamInterface<FlagsCase> {};

std::string FlagsName(const testing::TestParamInfo<FlagsCase>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Loading, FlagsTest, testing::ValuesIn(kFlags), FlagsName);

TEST_P(FlagsTest, OfAMediaSourceFollowItsNumbers) {
  Store(Insert("media", {{"id", "1"}, {"device", "7"}}) +
        InsertMediaParameter(1, "frame_rate", GetParam().numbers) +
        InsertMediaParameter(1, "width", GetParam().numbers) +
        InsertMediaParameter(1, "auto_focus", GetParam().numbers));
  device.LoadMediaInfo();
  const VptzMediaData& media = device.media_list.at(0);
  EXPECT_EQ(media.frame_rate.valid, GetParam().value_valid);
  EXPECT_EQ(media.frame_rate_range.valid, GetParam().range_valid);
  EXPECT_EQ(media.frame_rate_ok, GetParam().ok);
  EXPECT_EQ(media.width.valid, GetParam().value_valid);
  EXPECT_EQ(media.width_ok, GetParam().ok);
  EXPECT_EQ(media.auto_focus.valid, GetParam().value_valid);
}

TEST_P(FlagsTest, OfAnAxisFollowItsNumbers) {
  Store(Insert("movement", {{"id", "4"}}) + Insert("ptz", {{"id", "1"}, {"device", "7"}, {"tilt", "4"}}) +
        InsertMovementParameter(4, "position", GetParam().numbers) +
        InsertMovementParameter(4, "speed", GetParam().numbers));
  device.LoadPtzInfo();
  const VptzAxisData& tilt = device.ptz_list.at(0).tilt;
  EXPECT_EQ(tilt.position.valid, GetParam().value_valid);
  EXPECT_EQ(tilt.position_range.valid, GetParam().range_valid);
  EXPECT_EQ(tilt.speed.valid, GetParam().value_valid);
  EXPECT_EQ(tilt.speed_range.valid, GetParam().range_valid);
}

TEST_F(LoadingTest, NullNumbersAreLoadedAsNaN) {
  Store(Insert("media", {{"id", "1"}, {"device", "7"}}) +
        InsertMediaParameter(1, "contrast", "NULL, NULL, NULL"));
  device.LoadMediaInfo();
  EXPECT_TRUE(std::isnan(device.media_list.at(0).contrast.value));
  EXPECT_TRUE(std::isnan(device.media_list.at(0).contrast_range.min));
  EXPECT_TRUE(std::isnan(device.media_list.at(0).contrast_range.max));
}

}  // namespace
