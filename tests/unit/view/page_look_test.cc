// What people see of the page, measured in a browser.
#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <set>

#include "browser.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::SizeIs;
using vptz_test::Measured;
using vptzd::CameraView;
using Cameras = std::vector<CameraView>;

CameraView Camera(double pan = 0, double tilt = 0, double zoom = 1) {
  CameraView camera;
  camera.device = 1;
  camera.ptz = 1;
  camera.name = "balcony";
  camera.protocol = "ONVIF";
  camera.pan = {pan, 0, -180, 180};
  camera.tilt = {tilt, 0, -90, 90};
  camera.zoom = {zoom, 0, 1, 20};
  return camera;
}

json MeasuredCamera(const CameraView& camera) { return Measured(Cameras{camera})["cameras"].at(0); }

bool IsNumber(const json& drawn) { return drawn["text"].get<std::string>().find("°") != std::string::npos; }

// The numbers that stand below each other, or else those side by side.
std::set<std::string> Numbers(const json& camera, const char* same) {
  std::map<double, std::set<std::string>> lines;
  for (const json& drawn : camera["drawn"]) {
    if (IsNumber(drawn)) lines[drawn[same]].insert(drawn["text"]);
  }
  std::set<std::string> most;
  for (const auto& [place, numbers] : lines) most = numbers.size() > most.size() ? numbers : most;
  return most;
}

Cameras AllDirections() {
  Cameras cameras;
  for (int pan = -180; pan <= 180; pan += 30) {
    for (int tilt = -90; tilt <= 90; tilt += 30) {
      cameras.push_back(Camera(pan, tilt));
      cameras.back().device = static_cast<std::uint32_t>(cameras.size());
    }
  }
  return cameras;
}

TEST(PageLookTest, TheHallGoesAllTheWayRound) {
  const Cameras cameras = AllDirections();
  const json shown = Measured(cameras)["cameras"];
  ASSERT_THAT(shown, SizeIs(cameras.size()));
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    const json& drawn = shown[i]["drawn"];
    EXPECT_FALSE(std::all_of(drawn.begin(), drawn.end(), IsNumber))
        << "nothing at pan " << cameras[i].pan.position << " tilt " << cameras[i].tilt.position;
  }
}

// A camera that turns further than once round, or over its head, sees the hall again.
TEST(PageLookTest, TheHallGoesOnBeyondAWholeTurn) {
  const std::string desk = MeasuredCamera(Camera(0, 3, 8))["picture"];
  EXPECT_THAT(desk, HasSubstr("desk"));
  EXPECT_EQ(MeasuredCamera(Camera(720, 3, 8))["picture"], desk);
  EXPECT_EQ(MeasuredCamera(Camera(180, 177, 8))["picture"], desk);
}

TEST(PageLookTest, LinesOfPanAndTiltHaveNumbers) {
  const json camera = MeasuredCamera(Camera(100, 35));
  EXPECT_THAT(Numbers(camera, "y"), IsSupersetOf({"90°", "100°", "110°", "120°"}));
  EXPECT_THAT(Numbers(camera, "x"), IsSupersetOf({"30°", "40°", "50°"}));
}

TEST(PageLookTest, LinesOfANarrowPictureHaveNumbersToo) {
  const json camera = MeasuredCamera(Camera(-50.3, 10.1, 40));
  EXPECT_THAT(Numbers(camera, "y"), IsSupersetOf({"-50.4°", "-50.2°"}));
  EXPECT_THAT(Numbers(camera, "x"), IsSupersetOf({"10.0°", "10.2°"}));
}

TEST(PageLookTest, WordsInThePictureAreLargeEnoughToRead) {
  for (const int width : {360, 1280}) {
    const json camera = Measured(Cameras{Camera(0, 3)}, width)["cameras"].at(0);
    ASSERT_FALSE(camera["drawn"].empty());
    for (const json& drawn : camera["drawn"]) EXPECT_GE(drawn["pixels"], 11) << drawn << width;
  }
}

TEST(PageLookTest, PresetsAreListedAndDoNotLookLikeButtons) {
  CameraView camera = Camera();
  camera.presets = {"Stage", "Desk"};
  const json presets = MeasuredCamera(camera)["presets"];
  ASSERT_THAT(presets, SizeIs(2));
  EXPECT_EQ(presets[0]["text"], "Stage");
  for (const json& preset : presets) {
    EXPECT_EQ(preset["border"], "0px");
    EXPECT_EQ(preset["radius"], "0px");
    EXPECT_EQ(preset["background"], "rgba(0, 0, 0, 0)");
  }
}

TEST(PageLookTest, NothingIsCutInANarrowWindow) {
  CameraView camera = Camera(-179.99, -89.99);
  camera.name = "a-camera-with-a-very-long-host-name-in-the-gallery.auditorium.example.org";
  camera.pan.speed = camera.tilt.speed = 100;
  camera.logged_in = false;
  camera.presets = std::vector<std::string>(20, "a preset with a long name of many words");
  camera.presets.push_back(std::string(120, 'x'));
  for (const int width : {420, 360, 320}) {
    const json page = Measured(Cameras{camera}, width);
    EXPECT_EQ(page["window"], width);
    EXPECT_LE(page["content"], width);
    EXPECT_THAT(page["cameras"].at(0)["cut"], SizeIs(0)) << width << page["cameras"].at(0)["cut"];
  }
}

TEST(PageLookTest, TellsThePicturesSettingsByTheirNames) {
  CameraView camera = Camera();
  camera.brightness = 80;
  camera.contrast = 100.0 / 3;
  camera.sharpness = 0;
  const json facts = MeasuredCamera(camera)["facts"];
  EXPECT_EQ(facts.at("brightness").at(0), "80 of 100");
  EXPECT_EQ(facts.at("contrast").at(0), "33.3 of 100");
  EXPECT_EQ(facts.at("sharpness").at(0), "0 of 100");
}

TEST(PageLookTest, AnAxisThatTheCameraLacksIsFixed) {
  CameraView camera = Camera();
  camera.zoom = {1, 0, 1, 1};
  const json facts = MeasuredCamera(camera)["facts"];
  EXPECT_EQ(facts.at("zoom"), json({"1.00×", "fixed"}));
  EXPECT_EQ(facts.at("pan"), json({"0.00°", "at rest"}));
}

TEST(PageLookTest, AScreenReaderIsToldWhatThereIs) {
  const json page = Measured(Cameras{Camera(0, 3)});
  EXPECT_EQ(page.at("status"), "live");
  const json& camera = page["cameras"].at(0);
  EXPECT_EQ(camera.at("label"), "balcony");
  EXPECT_EQ(camera.at("role"), "img");
  EXPECT_THAT(camera.at("picture"), HasSubstr("picture: "));
  EXPECT_THAT(camera.at("picture"), HasSubstr("desk"));
}

// Else nobody could select a text, nor have it read out, while the page is live.
TEST(PageLookTest, WhatStaysTheSameIsNotMadeAnew) {
  std::atomic<int> readings = 0;
  const json page = Measured([&] {
    CameraView camera = Camera(++readings / 10.0);
    camera.pan.speed = 1;
    camera.presets = {"Stage"};
    return Cameras{camera};
  });
  EXPECT_GT(readings, 2);
  EXPECT_EQ(page["replaced"], 0);
}

TEST(PageLookTest, IsDarkOrLightAsTheDesktopIs) {
  const json dark = Measured(Cameras{Camera()}, 420, {"--blink-settings=preferredColorScheme=0"});
  const json light = Measured(Cameras{Camera()}, 420, {"--blink-settings=preferredColorScheme=1"});
  EXPECT_EQ(dark["ground"], "rgb(20, 23, 28)");
  EXPECT_EQ(light["ground"], "rgb(238, 241, 245)");
}

TEST(PageLookTest, SaysThatNoCameraIsKnown) {
  EXPECT_EQ(Measured(Cameras()).at("status"), "no camera is known yet");
}

}  // namespace
