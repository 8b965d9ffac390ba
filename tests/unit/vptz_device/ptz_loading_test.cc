// Loading the PTZ profiles, and the live state of either kind of profile.
#include <gmock/gmock.h>

#include <cerrno>
#include <cmath>

#include "vptz_device/device_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz_test::BusCall;
using vptz_test::ExpectRange;
using vptz_test::ExpectValue;
using vptz_test::Insert;
using vptz_test::InsertMovementParameter;
using vptz_test::LoadingTest;
using vptz_test::StatusReply;

// ---- PTZ profiles ----------------------------------------------------------

std::string Movement(int id, const std::string& mode, const std::string& position, const std::string& speed) {
  return Insert("movement", {{"id", std::to_string(id)}, {mode, "1"}}) +
         InsertMovementParameter(id, "position", position) + InsertMovementParameter(id, "speed", speed);
}

// Movements 1, 2 and 3, whose numbers begin at 10, 20 and 30.
std::string Movements() {
  return Movement(1, "have_absolute_move", "11,10,12", "14,13,15") +
         Movement(2, "have_continues_move", "21,20,22", "24,23,25") +
         Movement(3, "have_relative_move", "31,30,32", "34,33,35");
}

std::string FullPtz() {
  return Movements() + Insert("ptz", {{"id", "31"},
                                      {"device", "7"},
                                      {"node", "'ptz0'"},
                                      {"is_enable", "1"},
                                      {"pan", "1"},
                                      {"tilt", "2"},
                                      {"zoom", "3"},
                                      {"track_mode", "-6"}});
}

void ExpectAxis(const VptzAxisData& axis, double first) {
  ExpectValue(axis.position, 1, first + 1);
  ExpectRange(axis.position_range, 1, first, first + 2);
  ExpectValue(axis.speed, 1, first + 4);
  ExpectRange(axis.speed_range, 1, first + 3, first + 5);
  ExpectRange(axis.spare_range, 0, 0, 0);
}

TEST_F(LoadingTest, EveryPtzColumnAndMovementParameterLandsInItsPlace) {
  Store(FullPtz());
  EXPECT_EQ(device.LoadPtzInfo(), 1);
  ASSERT_EQ(device.ptz_list.size(), 1u);
  const VptzPtzData& ptz = device.ptz_list[0];
  EXPECT_EQ(ptz.id, 31u);
  EXPECT_EQ(ptz.node, "ptz0");
  EXPECT_TRUE(ptz.is_enable);
  EXPECT_EQ(ptz.track_mode, -6);
  EXPECT_EQ(ptz.preset_count, 0);
  ExpectAxis(ptz.pan, 10);
  ExpectAxis(ptz.tilt, 20);
  ExpectAxis(ptz.zoom, 30);
  EXPECT_TRUE(ptz.pan.have_absolute_move && !ptz.pan.have_continues_move && !ptz.pan.have_relative_move);
  EXPECT_TRUE(!ptz.tilt.have_absolute_move && ptz.tilt.have_continues_move && !ptz.tilt.have_relative_move);
  EXPECT_TRUE(!ptz.zoom.have_absolute_move && !ptz.zoom.have_continues_move && ptz.zoom.have_relative_move);
  EXPECT_THAT(bus.calls, IsEmpty());
}

TEST_F(LoadingTest, PtzNodesComeInTheOrderOfTheirRowsAndAreCounted) {
  Store(Insert("ptz", {{"id", "33"}, {"device", "7"}}) + Insert("ptz", {{"id", "31"}, {"device", "7"}}) +
        Insert("ptz", {{"id", "32"}, {"device", "8"}}));
  EXPECT_EQ(device.LoadPtzInfo(), 2);
  ASSERT_EQ(device.ptz_list.size(), 2u);
  EXPECT_EQ(device.ptz_list[0].id, 31u);
  EXPECT_EQ(device.ptz_list[1].id, 33u);
  EXPECT_EQ(Handle(9).LoadPtzInfo(), 0);
}

VptzPtzData OddPtz(std::uint32_t id) {
  VptzPtzData ptz;
  ptz.id = id;
  ptz.pan = {true, true, true, {7, 77}, {7, 77}, {7, 77, 777}, {7, 77, 777}, {7, 77, 777}};
  ptz.tilt = ptz.zoom = ptz.pan;
  return ptz;
}

TEST_F(LoadingTest, AMissingMovementLeavesItsAxisUntouched) {
  Store(Insert("ptz", {{"id", "31"}, {"device", "7"}, {"pan", "99"}}));
  device.ptz_list = {OddPtz(31)};
  device.LoadPtzInfo();
  for (const VptzAxisData* axis : {&device.ptz_list[0].pan, &device.ptz_list[0].tilt}) {
    EXPECT_TRUE(axis->have_absolute_move && axis->have_continues_move && axis->have_relative_move);
    ExpectValue(axis->position, 7, 77);
    ExpectValue(axis->speed, 7, 77);
    ExpectRange(axis->position_range, 7, 77, 777);
    ExpectRange(axis->speed_range, 7, 77, 777);
  }
}

TEST_F(LoadingTest, AMovementWithoutParametersClearsTheFlagsAndKeepsTheNumbers) {
  Store(Insert("movement", {{"id", "1"}}) + Insert("ptz", {{"id", "31"}, {"device", "7"}, {"pan", "1"}}));
  device.ptz_list = {OddPtz(31)};
  device.LoadPtzInfo();
  const VptzAxisData& pan = device.ptz_list[0].pan;
  EXPECT_FALSE(pan.have_absolute_move || pan.have_continues_move || pan.have_relative_move);
  ExpectValue(pan.position, 0, 77);
  ExpectValue(pan.speed, 0, 77);
  ExpectRange(pan.position_range, 0, 77, 777);
  ExpectRange(pan.speed_range, 0, 77, 777);
  ExpectRange(pan.spare_range, 7, 77, 777);
}

TEST_F(LoadingTest, OneMovementMayServeTwoAxes) {
  Store(Movements() + Insert("ptz", {{"id", "31"}, {"device", "7"}, {"pan", "1"}, {"tilt", "1"}}));
  device.LoadPtzInfo();
  ExpectAxis(device.ptz_list.at(0).pan, 10);
  ExpectAxis(device.ptz_list.at(0).tilt, 10);
}

std::string TwoPresets() {
  return Insert("preset", {{"id", "5"},
                           {"ptz", "31"},
                           {"preset_id", "8"},
                           {"token", "'t8'"},
                           {"name", "'door'"},
                           {"pan", "1.5"},
                           {"tilt", "-2.5"},
                           {"zoom", "NULL"}}) +
         Insert("preset", {{"id", "4"}, {"ptz", "31"}, {"preset_id", "9"}}) +
         Insert("preset", {{"id", "6"}, {"ptz", "32"}, {"preset_id", "7"}});
}

TEST_F(LoadingTest, PresetsComeInTheOrderOfTheirRowsAndAreCounted) {
  Store(FullPtz() + TwoPresets());
  device.LoadPtzInfo();
  const VptzPtzData& ptz = device.ptz_list.at(0);
  EXPECT_EQ(ptz.preset_count, 2);
  ASSERT_EQ(ptz.presets.size(), 2u);
  EXPECT_EQ(ptz.presets[0].preset_id, 9u);
  EXPECT_EQ(ptz.presets[1].preset_id, 8u);
  EXPECT_EQ(ptz.presets[1].token, "t8");
  EXPECT_EQ(ptz.presets[1].name, "door");
  EXPECT_EQ(ptz.presets[1].pan, 1.5);
  EXPECT_EQ(ptz.presets[1].tilt, -2.5);
  EXPECT_TRUE(std::isnan(ptz.presets[1].zoom));
}

TEST_F(LoadingTest, AReloadAppendsThePresetsAgainButCountsTheRows) {
  Store(FullPtz() + TwoPresets());
  device.LoadPtzInfo();
  EXPECT_EQ(device.LoadPtzInfo(), 1);
  ASSERT_EQ(device.ptz_list.size(), 1u);
  EXPECT_EQ(device.ptz_list[0].presets.size(), 4u);
  EXPECT_EQ(device.ptz_list[0].preset_count, 2);
}

TEST_F(LoadingTest, AReloadChangesPtzProfilesInPlaceAppendsNewOnesAndRemovesNone) {
  device.ptz_list = {OddPtz(99), OddPtz(32)};
  Store(FullPtz() + Insert("ptz", {{"id", "32"}, {"device", "7"}, {"node", "'ptz1'"}}));
  EXPECT_EQ(device.LoadPtzInfo(), 2);
  ASSERT_EQ(device.ptz_list.size(), 3u);
  EXPECT_EQ(device.ptz_list[0].id, 99u);
  EXPECT_EQ(device.ptz_list[1].node, "ptz1");
  ExpectValue(device.ptz_list[1].pan.position, 7, 77);
  EXPECT_EQ(device.ptz_list[2].id, 31u);
}

// ---- live state ------------------------------------------------------------

class LiveStateTest : public LoadingTest {
 protected:
  LiveStateTest() {
    Store(Insert("ptz", {{"id", "31"}, {"device", "7"}, {"node", "'p1'"}}) +
          Insert("ptz", {{"id", "32"}, {"device", "7"}, {"node", "'p2'"}}) +
          Insert("media", {{"id", "41"}, {"device", "7"}, {"node", "'m1'"}}) +
          Insert("media", {{"id", "42"}, {"device", "7"}, {"node", "'m2'"}}));
    device.ptz_list.resize(2);
    device.ptz_list[0].id = 32;
    device.ptz_list[1].id = 31;
    device.media_list.resize(2);
    device.media_list[0].id = 41;
    device.media_list[1].id = 42;
  }
};

TEST_F(LiveStateTest, EachStoredPtzNodeIsAskedForAndItsEntryFilled) {
  bus.on_call = [this](const BusCall& call) {
    tutorial::VptzResponse response = StatusReply(0);
    const bool first = CommandOf(call).device_command().token() == "p1";
    response.mutable_ptz_info()->set_track_mode(first ? 1 : 2);
    bus.ReplyWith(response);
  };
  EXPECT_EQ(device.LoadPtzProfiles(), 2);
  EXPECT_THAT(Sent(), ElementsAre("get_ptz_profiles device_command { token: \"p1\" device_id: 7 }",
                                  "get_ptz_profiles device_command { token: \"p2\" device_id: 7 }"));
  EXPECT_EQ(bus.calls.at(0).timeout, 4);
  EXPECT_EQ(device.ptz_list[0].track_mode, 2);
  EXPECT_EQ(device.ptz_list[1].track_mode, 1);
}

TEST_F(LiveStateTest, EachStoredMediaSourceIsAskedForAndItsEntryFilled) {
  tutorial::VptzResponse response = StatusReply(0);
  response.mutable_media_info()->mutable_video_encoder()->set_width(640);
  bus.ReplyWith(response);
  EXPECT_EQ(device.LoadMediaProfiles(), 2);
  EXPECT_THAT(Sent(), ElementsAre("get_media_profiles device_command { token: \"m1\" device_id: 7 }",
                                  "get_media_profiles device_command { token: \"m2\" device_id: 7 }"));
  ExpectValue(device.media_list[0].width, 1, 640);
  ExpectValue(device.media_list[1].width, 1, 640);
}

TEST_F(LiveStateTest, ARowThatIsNotInTheListMakesItMinusOneButTheOthersAreAskedFor) {
  device.ptz_list[1].id = 99;
  device.media_list.erase(device.media_list.begin());
  EXPECT_EQ(device.LoadPtzProfiles(), -1);
  EXPECT_EQ(device.LoadMediaProfiles(), -1);
  EXPECT_THAT(Sent(), ElementsAre("get_ptz_profiles device_command { token: \"p2\" device_id: 7 }",
                                  "get_media_profiles device_command { token: \"m2\" device_id: 7 }"));
}

TEST_F(LiveStateTest, HowTheQueriesEndDoesNotChangeTheResult) {
  bus.ReplyWith(StatusReply(-1004));
  EXPECT_EQ(device.LoadPtzProfiles(), 2);
  bus.FailCalls(-ESRCH);
  EXPECT_EQ(device.LoadMediaProfiles(), 2);
}

TEST_F(LiveStateTest, ADeviceWithoutRowsHasZeroProfiles) {
  device.id = 8;
  EXPECT_EQ(device.LoadPtzProfiles(), 0);
  EXPECT_EQ(device.LoadMediaProfiles(), 0);
  EXPECT_THAT(bus.calls, IsEmpty());
}

}  // namespace
