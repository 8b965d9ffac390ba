// Values at the limits of what a column holds.
#include <vptz/model/event.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/setting-odb.hxx>

#include <cmath>
#include <limits>

#include "model/model_test.h"

namespace {

using vptz_test::ById;
using vptz_test::OpenModelTest;

using ValuesTest = OpenModelTest;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST_F(ValuesTest, InfinitiesAreKept) {
  MovementParameter parameter(nullptr, "position", -0.0, -kInfinity, kInfinity);
  EXPECT_EQ(MovementParameter::Add(&parameter), 1);
  const auto stored = ById<MovementParameter>(1);
  ASSERT_NE(stored, nullptr);
  EXPECT_EQ(stored->min(), -kInfinity);
  EXPECT_EQ(stored->max(), kInfinity);
  EXPECT_EQ(stored->value(), 0.0);
}

TEST_F(ValuesTest, NaNIsStoredAsNullAndReadAsNaN) {
  Preset preset(nullptr, 1, "t", "n", kNaN, 0.5, kNaN);
  EXPECT_EQ(Preset::Add(&preset), 1);
  EXPECT_EQ(raw.Value("SELECT pan, tilt, zoom FROM preset"), "NULL|0.5|NULL");
  const auto stored = ById<Preset>(1);
  ASSERT_NE(stored, nullptr);
  EXPECT_TRUE(std::isnan(stored->pan()));
  EXPECT_EQ(stored->tilt(), 0.5);
  EXPECT_TRUE(std::isnan(stored->zoom()));
}

TEST_F(ValuesTest, TheLimitsOfRealNumbersAreKept) {
  const double limits[] = {std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min(), 0.1};
  Preset preset(nullptr, 1, "", "", limits[0], limits[1], limits[2]);
  EXPECT_EQ(Preset::Add(&preset), 1);
  const auto stored = ById<Preset>(1);
  ASSERT_NE(stored, nullptr);
  EXPECT_EQ(stored->pan(), limits[0]);
  EXPECT_EQ(stored->tilt(), limits[1]);
  EXPECT_EQ(stored->zoom(), limits[2]);
}

class TextTest : public OpenModelTest, public testing::WithParamInterface<std::string> {};

TEST_P(TextTest, IsKeptAndFound) {
  Event event(GetParam(), GetParam());
  EXPECT_EQ(Event::Add(&event), 1);
  Event* found = nullptr;
  EXPECT_EQ(Event::QueryByName(&found, GetParam()), 0);
  const std::unique_ptr<Event> stored(found);
  ASSERT_NE(stored, nullptr);
  EXPECT_TRUE(stored->name() == GetParam());
  EXPECT_TRUE(stored->message() == GetParam());
  EXPECT_EQ(raw.Value("SELECT typeof(name), length(CAST(name AS BLOB)) FROM event"),
            "'text'|" + std::to_string(GetParam().size()));
}

INSTANTIATE_TEST_SUITE_P(Texts, TextTest,
                         testing::Values("", "it's", "say \"hello\"", "'; DROP TABLE event; --", "%_*?",
                                         "line\nline", "\xc3\xa4\xe2\x82\xac\xf0\x9f\x8e\xa5",
                                         "\xff\xfe not UTF-8", "$1 :a @b ?1", std::string("nul\0inside", 10),
                                         std::string("\0", 1), std::string(1 << 20, 'x'),
                                         std::string(1 << 20, '\'')));

TEST_F(ValuesTest, ALongTextReplacesAShortOneAndBack) {
  Setting setting("key", "short");
  EXPECT_EQ(VptzModel::Add(&setting), 0);
  for (const std::string& text : {std::string(1 << 20, 'x'), std::string("short"), std::string()}) {
    setting.set_value(text);
    EXPECT_EQ(setting.Save(), 0);
    std::string stored;
    EXPECT_EQ(Setting::QueryValue("key", &stored), 0);
    EXPECT_TRUE(stored == text);
  }
}

TEST_F(ValuesTest, IdsUpTo32BitsAreFound) {
  for (const char* id : {"2147483647", "2147483648", "4294967295"}) {
    raw.Execute(std::string("INSERT INTO event VALUES (") + id + ", 'event " + id + "', '', '')");
    const auto event = ById<Event>(static_cast<unsigned int>(std::stoul(id)));
    ASSERT_NE(event, nullptr) << id;
    EXPECT_EQ(std::to_string(event->id()), id);
    EXPECT_EQ(event->name(), std::string("event ") + id);
    EXPECT_EQ(Event::Update(*event), 0);
    EXPECT_EQ(Event::Remove(event->id()), 0);
    EXPECT_EQ(raw.Value("SELECT count(*) FROM event"), "0");
  }
}

// The id is told as a signed number; the object has it whole.
TEST_F(ValuesTest, AddTellsALargeIdAsASignedNumber) {
  raw.Execute("INSERT INTO event VALUES (4294967292, 'before', '', '')");
  Event event("after", "");
  EXPECT_EQ(Event::Add(&event), -3);
  EXPECT_EQ(event.id(), 4294967293u);
  EXPECT_NE(ById<Event>(4294967293u), nullptr);
}

TEST_F(ValuesTest, NumbersAtTheirLimitsAreKept) {
  Preset preset(nullptr, 4294967295u, "", "", 0, 0, 0);
  EXPECT_EQ(Preset::Add(&preset), 1);
  EXPECT_EQ(raw.Value("SELECT preset_id FROM preset"), "4294967295");
  EXPECT_EQ(ById<Preset>(1)->preset_id(), 4294967295u);
}

}  // namespace
