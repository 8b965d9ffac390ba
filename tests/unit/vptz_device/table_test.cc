#include "vptz_device/table.h"

#include <gtest/gtest.h>

namespace {

struct Lamp {
  std::string name;
  double watts = 0;
  int room = 0;
};

constexpr vptz::Table kLamps("lamp", "house", vptz::OtherColumn{"colour"}, vptz::Column("watts", &Lamp::watts),
                             vptz::KeyText("name", &Lamp::name), vptz::Column("room", &Lamp::room));

static_assert(std::string_view(kLamps.select()) ==
              R"(SELECT "house", "colour", "watts", "name", "room" FROM "lamp" ORDER BY "id")");
static_assert(kLamps.PlaceOf("colour") == 1);
static_assert(kLamps.PlaceOf("room") == 4);

// A row whose values tell their place.
struct Places {
  void Read(int place, std::string& text) const { text = std::to_string(place); }
  void Read(int place, double& number) const { number = place; }
  void Read(int place, int& number) const { number = place; }
  bool IsText(int place) const { return place != blob; }

  int blob = 0;
};

TEST(TableTest, EachColumnIsReadFromItsPlaceInTheStatement) {
  Lamp lamp;
  kLamps.Read(Places(), lamp);
  EXPECT_EQ(lamp.watts, kLamps.PlaceOf("watts"));
  EXPECT_EQ(lamp.name, std::to_string(kLamps.PlaceOf("name")));
  EXPECT_EQ(lamp.room, kLamps.PlaceOf("room"));
}

TEST(TableTest, ABlobIsNoNameToLookFor) {
  Lamp lamp;
  kLamps.Read(Places{kLamps.PlaceOf("name")}, lamp);
  EXPECT_EQ(lamp.name, "");
}

TEST(TableTest, AColumnThatIsNotInTheListHasNoPlace) {
  EXPECT_THROW(kLamps.PlaceOf("house"), std::out_of_range);
  EXPECT_THROW(kLamps.PlaceOf("id"), std::out_of_range);
}

}  // namespace
