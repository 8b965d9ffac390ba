#include <string>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using tutorial::MediaInfo;
using tutorial::PtzParams;
using tutorial::VptzCommand;
using tutorial::VptzResponse;

VptzCommand Profile(unsigned device, const std::string& token) {
  VptzCommand command;
  command.mutable_device_command()->set_device_id(device);
  command.mutable_device_command()->set_token(token);
  return command;
}

void ExpectLimits(const PtzParams& axis, double min, double max, double top_speed) {
  EXPECT_EQ(axis.position_range().min(), min);
  EXPECT_EQ(axis.position_range().max(), max);
  EXPECT_EQ(axis.speed_range().min(), 0.0);
  EXPECT_EQ(axis.speed_range().max(), top_speed);
  EXPECT_EQ(axis.spare_range().min(), kVptzNotCommanded);
  EXPECT_EQ(axis.spare_range().max(), kVptzNotCommanded);
}

class ProfilesTest : public testing::Test {
 protected:
  Simulation simulation_;
};

TEST_F(ProfilesTest, PtzProfileTellsTheLimits) {
  const tutorial::PtzInfo info = simulation_.Look();
  ExpectLimits(info.pan(), -170.0, 170.0, 100.0);
  ExpectLimits(info.tilt(), -30.0, 90.0, 80.0);
  ExpectLimits(info.zoom(), 1.0, 20.0, 8.0);
}

TEST_F(ProfilesTest, PtzProfileTellsPositionsAndSpeedsInMotion) {
  VptzCommand move;
  move.mutable_ptz_command()->set_ptz_id(2);
  move.mutable_ptz_command()->set_pan_velocity(-12.5);
  ASSERT_EQ(simulation_.Status("continuous_move", move), 0);
  simulation_.Wait(2s);
  const tutorial::PtzInfo info = simulation_.Look(2);
  EXPECT_NEAR(info.pan().position(), -25.0, kAlmost);
  EXPECT_EQ(info.pan().speed(), 12.5);
  EXPECT_EQ(info.tilt().speed(), 0.0);
  EXPECT_NEAR(info.zoom().position(), 1.0, kAlmost);
}

TEST_F(ProfilesTest, PtzProfileSetsEveryNumber) {
  const tutorial::PtzInfo info = simulation_.Look();
  EXPECT_TRUE(info.has_track_mode());
  for (const PtzParams& axis : {info.pan(), info.tilt(), info.zoom()}) {
    EXPECT_TRUE(axis.has_position());
    EXPECT_TRUE(axis.has_speed());
  }
}

TEST_F(ProfilesTest, PtzProfileIsToldWithoutPower) {
  ASSERT_EQ(simulation_.Status("power_off_devices"), 0);
  EXPECT_EQ(simulation_.Status("get_ptz_profiles", Profile(1, "ptz0")), 0);
}

TEST_F(ProfilesTest, MainMediaProfile) {
  const VptzResponse response = simulation_.Call("get_media_profiles", Profile(1, "main"));
  ASSERT_EQ(response.status_code(), 0);
  const MediaInfo& info = response.media_info();
  EXPECT_EQ(info.video_encoder().width(), 1920.0);
  EXPECT_EQ(info.video_encoder().height(), 1080.0);
  EXPECT_EQ(info.video_encoder().frame_rate(), 50.0);
  EXPECT_EQ(info.video_encoder().bit_rate(), 8000.0);
  EXPECT_EQ(info.image_settings().brightness(), 50.0);
  EXPECT_EQ(info.image_settings().contrast(), 50.0);
  EXPECT_EQ(info.image_settings().sharpness(), 50.0);
  EXPECT_EQ(info.image_settings().auto_focus(), 1.0);
  EXPECT_TRUE(info.image_settings().has_backlight_mode());
  EXPECT_EQ(info.image_settings().backlight_mode(), 0.0);
}

TEST_F(ProfilesTest, SubMediaProfile) {
  const VptzResponse response = simulation_.Call("get_media_profiles", Profile(2, "sub"));
  ASSERT_EQ(response.status_code(), 0);
  EXPECT_EQ(response.media_info().video_encoder().width(), 640.0);
  EXPECT_EQ(response.media_info().video_encoder().height(), 360.0);
  EXPECT_EQ(response.media_info().video_encoder().frame_rate(), 25.0);
  EXPECT_EQ(response.media_info().video_encoder().bit_rate(), 512.0);
}

TEST_F(ProfilesTest, UnknownDevicesAndTokensAreRefusedWithoutAProfile) {
  for (const std::string method : {"get_ptz_profiles", "get_media_profiles"}) {
    const std::string known = method == "get_ptz_profiles" ? "ptz0" : "main";
    const std::string of_the_other = method == "get_ptz_profiles" ? "main" : "ptz0";
    for (const VptzCommand& command : {Profile(0, known), Profile(3, known), Profile(1, ""), Profile(1, "PTZ0"),
                                       Profile(1, of_the_other), Profile(1, std::string(100000, 'x'))}) {
      const VptzResponse response = simulation_.Call(method, command);
      EXPECT_EQ(response.status_code(), -1004) << method;
      EXPECT_FALSE(response.has_ptz_info());
      EXPECT_FALSE(response.has_media_info());
    }
  }
}

TEST_F(ProfilesTest, MissingDeviceCommandIsABadRequest) {
  EXPECT_EQ(simulation_.Status("get_ptz_profiles"), -1002);
  EXPECT_EQ(simulation_.Status("get_media_profiles"), -1002);
}

}  // namespace
}  // namespace vptz_test
