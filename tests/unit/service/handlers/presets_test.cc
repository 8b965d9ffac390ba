#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <vptz/model/preset.h>

#include "stored_simulation.h"

namespace vptz_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptzd::FaultKind;

class PresetsTest : public StoredSimulation {
 protected:
  static std::unique_ptr<Preset> Stored(unsigned ptz, const std::string& token) {
    return vptzd::FoundRow<Preset>([&](Preset** row) { return Preset::QueryByToken(row, ptz, token); });
  }
  void TurnTo(double pan) {
    tutorial::VptzCommand command = OfPreset(1, "");
    command.mutable_ptz_command()->set_pan_position(pan);
    ASSERT_EQ(Status("absolute_move", command), 0);
    Wait(10s);
  }
  double Pan() { return simulation_->Look(1).pan().position(); }
};

TEST_F(PresetsTest, NewPresetHoldsThePresentPositionUnderTheNextFreeNumber) {
  TurnTo(12.5);
  EXPECT_EQ(Status("set_preset", OfPreset(1, "door", "Door")), 0);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
  const auto row = Stored(1, "door");
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->preset_id(), 4u);
  EXPECT_EQ(row->name(), "Door");
  EXPECT_EQ(row->pan(), 12.5);
  EXPECT_EQ(Stored(2, "door"), nullptr);
}

TEST_F(PresetsTest, FreeNumberInTheMiddleIsTaken) {
  EXPECT_EQ(Status("remove_preset", OfPreset(1, "preset2")), 0);
  EXPECT_EQ(Status("set_preset", OfPreset(1, "", "New")), 0);
  const auto row = Stored(1, "preset2");
  ASSERT_NE(row, nullptr) << "an empty token gets one made from the number";
  EXPECT_EQ(row->name(), "New");
}

TEST_F(PresetsTest, KnownTokenIsStoredAnewUnderItsNumber) {
  TurnTo(12.5);
  EXPECT_EQ(Status("set_preset", OfPreset(1, "preset2", "Pulpit")), 0);
  EXPECT_EQ(Preset::QueryCountByPtz(1), 3);
  EXPECT_EQ(Stored(1, "preset2")->preset_id(), 2u);
  EXPECT_EQ(Stored(1, "preset2")->pan(), 12.5);
}

TEST_F(PresetsTest, GotoMovesToThePositionWithTheSpeeds) {
  tutorial::VptzCommand command = OfPreset(1, "preset3");
  command.mutable_ptz_command()->set_pan_speed(10.0);
  EXPECT_EQ(Status("goto_preset", command), 0);
  Wait(1s);
  EXPECT_EQ(Pan(), 9.875);
  Wait(1h);
  EXPECT_EQ(Pan(), 120.0);
  EXPECT_EQ(simulation_->Look(1).zoom().position(), 2.0);
  command.mutable_ptz_command()->set_pan_speed(101.0);
  EXPECT_EQ(Status("goto_preset", command), -1006);
}

TEST_F(PresetsTest, UnknownPresetsAreRefused) {
  EXPECT_EQ(Status("goto_preset", OfPreset(1, "nowhere")), -1004);
  EXPECT_EQ(Status("remove_preset", OfPreset(1, "")), -1004);
  EXPECT_EQ(Status("set_preset", OfPreset(9, "x")), -1004);
  EXPECT_EQ(Status("update_device_presets", OfDevice(9)), -1004);
  EXPECT_THAT(TakeSignals(), IsEmpty());
}

TEST_F(PresetsTest, RemovedPresetIsGone) {
  EXPECT_EQ(Status("remove_preset", OfPreset(1, "preset1")), 0);
  EXPECT_EQ(Stored(1, "preset1"), nullptr);
  EXPECT_EQ(Status("goto_preset", OfPreset(1, "preset1")), -1004);
}

TEST_F(PresetsTest, CameraKeepsALimitedNumber) {
  for (int i = 4; i <= 256; ++i)
    fleet().CameraOfPtz(1)->presets().Store({static_cast<unsigned>(i), std::to_string(i), "", {}});
  EXPECT_EQ(Status("set_preset", OfPreset(1, "more")), -1006);
  EXPECT_EQ(Status("set_preset", OfPreset(1, "256")), 0);
  EXPECT_EQ(Status("set_preset", OfPreset(1, std::string(256, 'x'))), -1002);
}

TEST_F(PresetsTest, NdihxCameraNumbersItsPresetsShifted) {
  tutorial::VptzCommand search;
  search.mutable_device_command()->set_protocol("NDIHX");
  ASSERT_EQ(Status("search_device", search), 0);
  Wait(1s);
  EXPECT_EQ(Stored(3, "preset11")->preset_id(), 11u);
  fleet().CameraOfPtz(3)->set_logged_in(true);
  EXPECT_EQ(Status("set_preset", OfPreset(3, "door")), 0);
  EXPECT_EQ(Stored(3, "door")->preset_id(), 14u);
}

TEST_F(PresetsTest, UpdateMakesTheRowsThoseOfTheCamera) {
  fleet().CameraOfPtz(1)->presets().Remove("preset1");
  fleet().CameraOfPtz(1)->presets().Store({2, "preset2", "Renamed", {1.0, 2.0, 3.0}});
  EXPECT_EQ(Status("update_device_presets", OfDevice(1)), 0);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
  EXPECT_EQ(Stored(1, "preset1"), nullptr);
  EXPECT_EQ(Stored(1, "preset2")->name(), "Renamed");
  EXPECT_EQ(Status("update_presets", OfPreset(1, "")), 0);
  EXPECT_THAT(TakeSignals(), IsEmpty()) << "nothing has changed";
}

TEST_F(PresetsTest, CameraThatForgetsHasNone) {
  Put(FaultKind::kForgetPresets);
  EXPECT_EQ(Status("set_preset", OfPreset(1, "door")), 0);
  EXPECT_EQ(Status("goto_preset", OfPreset(1, "door")), -1004);
  EXPECT_EQ(Status("update_presets", OfPreset(1, "")), 0);
  EXPECT_EQ(Preset::QueryCountByPtz(1), 0);
  EXPECT_EQ(Preset::QueryCountByPtz(2), 3);
}

}  // namespace
}  // namespace vptz_test
