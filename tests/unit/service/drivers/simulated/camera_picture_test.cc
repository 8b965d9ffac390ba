#include "drivers/simulated/camera.h"

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::Camera;
using vptzd::Status;

TEST(CameraPicture, FindsItsMediaProfilesByToken) {
  const Camera camera;
  ASSERT_NE(camera.FindMediaProfile("main"), nullptr);
  EXPECT_EQ(camera.FindMediaProfile("main")->encoder.width, 1920.0);
  ASSERT_NE(camera.FindMediaProfile("sub"), nullptr);
  EXPECT_EQ(camera.FindMediaProfile("sub")->encoder.width, 640.0);
  EXPECT_EQ(camera.FindMediaProfile(""), nullptr);
  EXPECT_EQ(camera.FindMediaProfile("Main"), nullptr);
}

TEST(CameraPicture, RefusesAPictureOutsideItsRanges) {
  Camera camera;
  for (const double wrong : {-0.5, 100.5, kNaN, kInfinity}) {
    vptzd::ImageSettings image;
    image.contrast = wrong;
    EXPECT_EQ(camera.SetImage("main", image), Status::kOutOfRange) << wrong;
    image = {};
    image.auto_focus = wrong;
    EXPECT_EQ(camera.SetImage("main", image), Status::kOutOfRange) << wrong;
  }
  EXPECT_EQ(camera.FindMediaProfile("main")->image.contrast, 50.0);
}

TEST(CameraPicture, FocusIsDrivenUntilItIsStopped) {
  Camera camera;
  const double before = camera.focus().position();
  ASSERT_EQ(camera.DriveFocus("main", -0.5), Status::kDone);
  EXPECT_EQ(camera.FindMediaProfile("main")->image.auto_focus, 0.0);
  camera.Advance(500ms);
  camera.StopFocus();
  camera.Advance(1s);
  const double stopped = camera.focus().position();
  EXPECT_LT(stopped, before - 0.1);
  EXPECT_GT(stopped, 0.0);
  ASSERT_EQ(camera.DriveFocus("main", 1.0), Status::kDone);
  camera.Advance(1h);
  EXPECT_EQ(camera.focus().position(), 1.0);
}

TEST(CameraPicture, AutoFocusBringsTheFocusBack) {
  Camera camera;
  const double sharp = camera.focus().position();
  ASSERT_EQ(camera.DriveFocus("main", 1.0), Status::kDone);
  camera.Advance(10s);
  vptzd::ImageSettings image = camera.FindMediaProfile("main")->image;
  image.auto_focus = 1.0;
  ASSERT_EQ(camera.SetImage("main", image), Status::kDone);
  camera.Advance(10s);
  EXPECT_EQ(camera.focus().position(), sharp);
}

}  // namespace
}  // namespace vptz_test
