#include <functional>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <vptz/model/media_parameter.h>

#include "bus/fake_bus_service.h"
#include "bus/server.h"
#include "stored_simulation.h"

namespace vptz_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tutorial::VptzCommand;

class ImagingTest : public StoredSimulation {
 protected:
  // Media 1 and 2 belong to camera 1.
  static VptzCommand Image(unsigned media, double brightness, const std::string& mode = "DEFAULT") {
    VptzCommand command;
    tutorial::MediaCommand* settings = command.mutable_media_command();
    settings->set_media_id(media);
    settings->set_brightness(brightness);
    settings->set_contrast(kVptzNotCommanded);
    settings->set_auto_focus(kVptzNotCommanded);
    settings->set_auto_focus_mode(mode);
    return command;
  }
  static double Stored(unsigned media, const char* name) {
    return vptzd::FoundRow<MediaParameter>(
               [&](MediaParameter** row) { return MediaParameter::QueryByName(row, media, name); })
        ->value();
  }
  tutorial::ImageSettings Live(const std::string& token) {
    return simulation_->Call("get_media_profiles", OfDevice(1, token)).media_info().image_settings();
  }
  double Focus() {
    fleet().Enter();
    return fleet().CameraNumber(1)->focus().position();
  }
};

TEST_F(ImagingTest, SettingsReachTheCameraAndTheRowsOfOneMediaSource) {
  EXPECT_EQ(Status("set_imaging_settings", Image(1, 80.0)), 0);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
  EXPECT_EQ(Live("main").brightness(), 80.0);
  EXPECT_EQ(Live("main").contrast(), 50.0);
  EXPECT_EQ(Live("sub").brightness(), 50.0);
  EXPECT_EQ(Stored(1, "brightness"), 80.0);
  EXPECT_EQ(Stored(2, "brightness"), 50.0);
  Begin(vptzd::BuiltInFleet(2));
  EXPECT_EQ(Live("main").brightness(), 80.0) << "the picture outlasts the service";
}

TEST_F(ImagingTest, ImpossibleSettingsAreRefusedAndChangeNothing) {
  for (const double wrong : {-1.0, 101.0, kNaN, kInfinity}) {
    EXPECT_EQ(Status("set_imaging_settings", Image(1, wrong)), -1006) << wrong;
  }
  EXPECT_EQ(Status("set_imaging_settings", Image(1, 80.0, "SOMETIMES")), -1002);
  EXPECT_EQ(Status("set_imaging_settings", Image(99, 80.0)), -1004);
  EXPECT_EQ(Live("main").brightness(), 50.0);
  EXPECT_THAT(TakeSignals(), IsEmpty());
}

TEST_F(ImagingTest, FocusModeIsSetByTextAndSwitched) {
  EXPECT_EQ(Status("set_imaging_settings", Image(1, kVptzNotCommanded, "MANUAL")), 0);
  EXPECT_EQ(Live("main").auto_focus(), 0.0);
  EXPECT_EQ(Status("switch_focus_mode", Image(1, 0.0)), 0);
  EXPECT_EQ(Live("main").auto_focus(), 1.0);
  EXPECT_EQ(Stored(1, "auto_focus"), 1.0);
}

TEST_F(ImagingTest, FocusRunsUntilItIsStopped) {
  const double before = Focus();
  EXPECT_EQ(Status("focus_near", OfDevice(1)), 0);
  EXPECT_EQ(Stored(1, "auto_focus"), 0.0);
  EXPECT_THAT(TakeSignals(), ElementsAre("update_devices"));
  Wait(500ms);
  EXPECT_EQ(Status("focus_stop", OfDevice(1)), 0);
  Wait(10s);
  const double stopped = Focus();
  EXPECT_LT(stopped, before);
  EXPECT_GT(stopped, 0.0);
  EXPECT_EQ(Status("focus_far", OfDevice(1)), 0);
  EXPECT_THAT(TakeSignals(), IsEmpty()) << "the focus was manual already";
  Wait(10s);
  EXPECT_EQ(Focus(), 1.0);
}

// What runs once while a row is changed.
std::function<void()> while_storing;

int WatchRows(sqlite3* connection, char**, const void*) {
  sqlite3_update_hook(
      connection,
      [](void*, int, const char*, const char*, sqlite3_int64) {
        if (const auto body = std::exchange(while_storing, nullptr)) body();
      },
      nullptr);
  return 0;
}

TEST_F(ImagingTest, DriveThatBeginsWhileAPictureIsStoredRunsOn) {
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(WatchRows));
  Begin(vptzd::BuiltInFleet(2));
  sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(WatchRows));
  ASSERT_EQ(Live("main").auto_focus(), 1.0);
  const double before = Focus();
  while_storing = [this] {
    const auto lock = fleet().Enter();
    EXPECT_EQ(fleet().CameraNumber(1)->DriveFocus("main", -1.0), vptzd::Status::kDone);
  };
  EXPECT_EQ(Status("set_imaging_settings", Image(1, 80.0)), 0);
  EXPECT_FALSE(while_storing) << "no row was changed";
  EXPECT_EQ(Live("main").brightness(), 80.0);
  EXPECT_EQ(Live("main").auto_focus(), 0.0);
  Wait(500ms);
  EXPECT_LT(Focus(), before);
}

// The request for the row waits on the agenda, as it does for a database that is
// locked; the stop does not wait.
TEST_F(ImagingTest, StopHoldsThatComesWhileTheRowOfADriveWaits) {
  FakeBusService bus;
  vptzd::Server server(simulation_->context());
  ASSERT_EQ(server.Start(nullptr), 0);
  const double before = Focus();
  for (const std::string method : {"focus_near", "focus_stop"}) {
    VptzCommand command = OfDevice(1);
    command.set_method_name(method);
    bus.Request(method, command.SerializeAsString());
  }
  EXPECT_EQ(bus.ended, 1) << "the stop";
  Wait(1s);
  EXPECT_EQ(bus.ended, 2);
  EXPECT_EQ(Stored(1, "auto_focus"), 0.0);
  Wait(10s);
  EXPECT_EQ(Focus(), before);
}

TEST_F(ImagingTest, DriveWhoseRowIsNotStoredDoesNotRunOn) {
  const double before = Focus();
  VptzModel::Instance().Release();
  EXPECT_EQ(Status("focus_near", OfDevice(1)), -1011);
  Wait(10s);
  EXPECT_EQ(Focus(), before);
}

TEST_F(ImagingTest, DriveTextIsAPartOfTheTopSpeed) {
  EXPECT_EQ(Status("focus_near", OfDevice(1, "1")), 0);
  EXPECT_EQ(Status("focus_near", OfDevice(3, "0.1")), 0);
  Wait(800ms);
  fleet().Enter();
  EXPECT_LT(fleet().CameraNumber(1)->focus().position(), fleet().CameraNumber(2)->focus().position());
  EXPECT_EQ(Status("focus_near", OfDevice(1, "quickly")), 0);
}

TEST_F(ImagingTest, NeedsPower) {
  EXPECT_EQ(Status("power_off_devices"), 0);
  EXPECT_EQ(Status("set_imaging_settings", Image(1, 80.0)), -1009);
  EXPECT_EQ(Status("switch_focus_mode", Image(1, 0.0)), -1009);
  EXPECT_EQ(Status("focus_far", OfDevice(1)), -1009);
  EXPECT_EQ(Status("focus_stop", OfDevice(1)), 0);
}

TEST_F(ImagingTest, CapabilitiesAreReadFromTheCamera) {
  fleet().CameraNumber(1)->SetImage("main", {10.0, 20.0, 30.0, 1.0, 1.0});
  EXPECT_EQ(Status("get_capabilities", OfDevice(1)), 0);
  EXPECT_EQ(Stored(1, "sharpness"), 30.0);
  EXPECT_EQ(Status("get_capabilities", OfDevice(99)), -1004);
}

}  // namespace
}  // namespace vptz_test
