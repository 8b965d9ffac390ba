#include "fleet/watchdog.h"

#include <gtest/gtest.h>

#include "fleet/member.h"
#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::Camera;
using vptzd::kPan;
using vptzd::kTilt;
using vptzd::kZoom;
using vptzd::Member;
using vptzd::Status;

void ExpectAt(const Camera& camera, double pan, double tilt, double zoom) {
  EXPECT_NEAR(camera.axis(kPan).position(), pan, kAlmost);
  EXPECT_NEAR(camera.axis(kTilt).position(), tilt, kAlmost);
  EXPECT_NEAR(camera.axis(kZoom).position(), zoom, kAlmost);
}

TEST(Watchdog, WhatNobodyWatchesIsStoppedExactlyAtTheEndOfItsGrace) {
  Member member{1, Camera(AbruptCamera(1))};
  ASSERT_EQ(member.MoveAt({10.0, 5.0, {}}, {1, 2s}), Status::kDone);
  member.Advance(1s);
  member.watchdog.GiveSignOfLife(1);
  member.Advance(1h);
  ExpectAt(member.camera, 30.0, 15.0, 1.0);
}

TEST(Watchdog, AxesRunOutEachAtTheEndOfItsOwnGrace) {
  Member member{1, Camera(AbruptCamera(1))};
  ASSERT_EQ(member.MoveAt({10.0, 10.0, 1.0}, {1, 2s}), Status::kDone);
  member.Advance(1s);
  ASSERT_EQ(member.MoveAt({10.0, {}, {}}, {2, 3s}), Status::kDone);
  member.watchdog.GiveSignOfLife(3);
  member.Advance(1h);
  ExpectAt(member.camera, 40.0, 20.0, 3.0);
}

TEST(Watchdog, AxisThatWasStoppedOrSentToAPositionBelongsToNobody) {
  Member member{1, Camera(AbruptCamera(1))};
  ASSERT_EQ(member.MoveAt({10.0, 10.0, {}}, {1, 1s}), Status::kDone);
  member.Stop({false, true, false});
  ASSERT_EQ(member.MoveAt(vptzd::AxisValues{std::nullopt, 10.0, std::nullopt}, {0, 0s}), Status::kDone);
  ASSERT_EQ(member.MoveTo({30.0, {}, {}}, {10.0, {}, {}}), Status::kDone);
  member.Advance(4s);
  ExpectAt(member.camera, 30.0, 40.0, 1.0);
}

TEST(Watchdog, PositioningMoveNeedsNobodyToWatch) {
  Member member{1, Camera(AbruptCamera(1))};
  ASSERT_EQ(member.MoveAt({10.0, 5.0, {}}, {1, 1s}), Status::kDone);
  ASSERT_EQ(member.MoveTo({30.0, {}, {}}, {10.0, {}, {}}), Status::kDone);
  member.Advance(1h);
  ExpectAt(member.camera, 30.0, 5.0, 1.0);
}

TEST(Watchdog, FocusThatBecomesAutomaticBelongsToNobody) {
  Member member{1, Camera(AbruptCamera(1))};
  ASSERT_EQ(member.DriveFocus("main", -0.1, {1, 1s}), Status::kDone);
  vptzd::ImageSettings image = member.camera.media_profiles().front().image;
  image.auto_focus = 1.0;
  ASSERT_EQ(member.SetImage("main", image), Status::kDone);
  EXPECT_FALSE(member.watchdog.Driven()[vptzd::Watchdog::kFocus]);
  member.Advance(1h);
  EXPECT_EQ(member.camera.focus().position(), Camera::kSharp);
}

TEST(Watchdog, CameraWithoutPowerIsDrivenByNobody) {
  Member member{1, Camera(AbruptCamera(1))};
  ASSERT_EQ(member.MoveAt({10.0, {}, {}}, {1, 1s}), Status::kDone);
  member.PowerOff();
  EXPECT_EQ(member.watchdog.Driven(), vptzd::Watchdog::PerDrive<bool>{});
}

TEST(Watchdog, GraceEndsEachTimeItIsNoticedLateToo) {
  Member at_once{1, Camera(AbruptCamera(1))};
  ASSERT_EQ(at_once.MoveAt({10.0, 5.0, 1.0}, {1, 1500ms}), Status::kDone);
  Member in_steps = at_once;
  at_once.Advance(1h);
  for (int i = 0; i < 5000; ++i) in_steps.Advance(1ms);
  ExpectAt(at_once.camera, 15.0, 7.5, 2.5);
  ExpectAt(in_steps.camera, 15.0, 7.5, 2.5);
}

}  // namespace
}  // namespace vptz_test
