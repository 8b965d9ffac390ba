#include "drivers/simulated/camera.h"

#include <array>
#include <cstddef>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::AxisIndex;
using vptzd::AxisValues;
using vptzd::Camera;
using vptzd::kPan;
using vptzd::kTilt;
using vptzd::kZoom;
using vptzd::Status;

const AxisValues kNone = {};

void ExpectAt(const Camera& camera, double pan, double tilt, double zoom) {
  EXPECT_NEAR(camera.axis(kPan).position(), pan, kAlmost);
  EXPECT_NEAR(camera.axis(kTilt).position(), tilt, kAlmost);
  EXPECT_NEAR(camera.axis(kZoom).position(), zoom, kAlmost);
}

// A moment from now.
void ExpectSpeeds(Camera camera, double pan, double tilt, double zoom) {
  camera.Advance(1ms);
  EXPECT_NEAR(camera.axis(kPan).speed(), pan, kAlmost);
  EXPECT_NEAR(camera.axis(kTilt).speed(), tilt, kAlmost);
  EXPECT_NEAR(camera.axis(kZoom).speed(), zoom, kAlmost);
}

TEST(Camera, BeginsPoweredAndAtRestStraightAhead) {
  const Camera camera;
  EXPECT_TRUE(camera.powered());
  ExpectAt(camera, 0.0, 0.0, 1.0);
  ExpectSpeeds(camera, 0.0, 0.0, 0.0);
}

TEST(Camera, HasTheDocumentedRangesAndTopSpeeds) {
  const Camera camera;
  const auto expect = [&](AxisIndex index, double min, double max, double top_speed) {
    EXPECT_EQ(camera.axis(index).limits().min, min);
    EXPECT_EQ(camera.axis(index).limits().max, max);
    EXPECT_EQ(camera.axis(index).limits().top_speed, top_speed);
  };
  expect(kPan, -170.0, 170.0, 100.0);
  expect(kTilt, -30.0, 90.0, 80.0);
  expect(kZoom, 1.0, 20.0, 8.0);
}

TEST(Camera, EachAxisTravelsAtItsOwnSpeedAndStopsAtItsTarget) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveTo({90.0, -20.0, 5.0}, {30.0, 20.0, 2.0}), Status::kDone);
  camera.Advance(500ms);
  ExpectAt(camera, 15.0, -10.0, 2.0);
  ExpectSpeeds(camera, 30.0, 20.0, 2.0);
  camera.Advance(500ms);
  ExpectAt(camera, 30.0, -20.0, 3.0);
  ExpectSpeeds(camera, 30.0, 0.0, 2.0);
  camera.Advance(2s);
  ExpectAt(camera, 90.0, -20.0, 5.0);
  ExpectSpeeds(camera, 0.0, 0.0, 0.0);
}

TEST(Camera, WithoutASpeedAnAxisMovesWithItsTopSpeed) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveTo({100.0, 80.0, 20.0}, kNone), Status::kDone);
  ExpectSpeeds(camera, 100.0, 80.0, 8.0);
}

TEST(Camera, AxisWithoutAPositionIsLeftAloneWhateverItsSpeed) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveAt({10.0, {}, {}}), Status::kDone);
  ASSERT_EQ(camera.MoveTo({std::nullopt, 40.0, std::nullopt}, {kNaN, 40.0, 1e308}), Status::kDone);
  camera.Advance(1s);
  ExpectAt(camera, 10.0, 40.0, 1.0);
}

TEST(Camera, MoveOfNoAxisIsDoneAndMovesNothing) {
  Camera camera(AbruptCamera(1));
  EXPECT_EQ(camera.MoveTo(kNone, kNone), Status::kDone);
  EXPECT_EQ(camera.MoveAt(kNone), Status::kDone);
  camera.Advance(1s);
  ExpectAt(camera, 0.0, 0.0, 1.0);
}

TEST(Camera, OneImpossiblePositionRefusesTheWholeMove) {
  for (const double position : {170.5, -170.5, 1e308, -1e308, kInfinity, -kInfinity, kNaN}) {
    Camera camera(AbruptCamera(1));
    EXPECT_EQ(camera.MoveTo({position, 10.0, 2.0}, kNone), Status::kOutOfRange) << position;
    EXPECT_EQ(camera.MoveTo({10.0, 10.0, position}, kNone), Status::kOutOfRange) << position;
    camera.Advance(1s);
    ExpectAt(camera, 0.0, 0.0, 1.0);
  }
}

TEST(Camera, OneImpossibleSpeedRefusesTheWholeMove) {
  for (const double speed : {0.0, -1.0, 100.5, 1e308, kInfinity, -kInfinity, kNaN}) {
    Camera camera(AbruptCamera(1));
    EXPECT_EQ(camera.MoveTo({10.0, 10.0, 2.0}, {speed, 10.0, 1.0}), Status::kOutOfRange) << speed;
    EXPECT_EQ(camera.MoveTo({10.0, 10.0, 2.0}, {10.0, 10.0, speed}), Status::kOutOfRange) << speed;
    EXPECT_EQ(camera.GoHome({10.0, speed, 1.0}), Status::kOutOfRange) << speed;
    camera.Advance(1s);
    ExpectAt(camera, 0.0, 0.0, 1.0);
  }
}

TEST(Camera, RefusedMoveLeavesTheRunningOneAlone) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveAt({10.0, 10.0, 1.0}), Status::kDone);
  EXPECT_EQ(camera.MoveTo({0.0, 0.0, kNaN}, kNone), Status::kOutOfRange);
  EXPECT_EQ(camera.MoveAt({0.0, 0.0, kNaN}), Status::kOutOfRange);
  camera.Advance(1s);
  ExpectAt(camera, 10.0, 10.0, 2.0);
}

TEST(Camera, ContinuousMoveRunsToTheLimits) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveAt({-50.0, 10.0, 8.0}), Status::kDone);
  camera.Advance(2s);
  ExpectAt(camera, -100.0, 20.0, 17.0);
  camera.Advance(1h);
  ExpectAt(camera, -170.0, 90.0, 20.0);
  ExpectSpeeds(camera, 0.0, 0.0, 0.0);
}

TEST(Camera, ContinuousVelocityBeyondTheTopSpeedIsTakenAsTheTopSpeed) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveAt({101.0, -1e308, 1e308}), Status::kDone);
  ExpectSpeeds(camera, 100.0, 80.0, 8.0);
}

TEST(Camera, ContinuousVelocityThatIsNotFiniteRefusesTheWholeMove) {
  for (const double velocity : {kNaN, kInfinity, -kInfinity}) {
    Camera camera(AbruptCamera(1));
    EXPECT_EQ(camera.MoveAt({10.0, velocity, 1.0}), Status::kOutOfRange) << velocity;
    ExpectSpeeds(camera, 0.0, 0.0, 0.0);
  }
}

TEST(Camera, ZeroVelocityStopsOnlyItsAxis) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveAt({10.0, 10.0, {}}), Status::kDone);
  ASSERT_EQ(camera.MoveAt({0.0, {}, {}}), Status::kDone);
  ExpectSpeeds(camera, 0.0, 10.0, 0.0);
}

TEST(Camera, StopEndsTheMarkedAxesOnly) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveTo({100.0, 80.0, 15.0}, {10.0, 10.0, 1.0}), Status::kDone);
  camera.Advance(2s);
  camera.Stop({true, false, true});
  camera.Advance(2s);
  ExpectAt(camera, 20.0, 40.0, 3.0);
  ExpectSpeeds(camera, 0.0, 10.0, 0.0);
}

TEST(Camera, AbsoluteMoveReplacesAContinuousOneOnOneAxis) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveAt({10.0, 5.0, {}}), Status::kDone);
  camera.Advance(4s);
  ASSERT_EQ(camera.MoveTo({30.0, {}, {}}, {5.0, {}, {}}), Status::kDone);
  camera.Advance(10s);
  ExpectAt(camera, 30.0, 70.0, 1.0);
  ExpectSpeeds(camera, 0.0, 5.0, 0.0);
}

TEST(Camera, HomeIsStoredAndReachedAgain) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveTo({50.0, 40.0, 4.0}, kNone), Status::kDone);
  camera.Advance(1s);
  camera.SetHome();
  ASSERT_EQ(camera.MoveTo({-50.0, 0.0, 1.0}, kNone), Status::kDone);
  camera.Advance(2s);
  ASSERT_EQ(camera.GoHome({50.0, {}, 0.5}), Status::kDone);
  ExpectSpeeds(camera, 50.0, 80.0, 0.5);
  camera.Advance(1s);
  ExpectAt(camera, 0.0, 40.0, 1.5);
  camera.Advance(5s);
  ExpectAt(camera, 50.0, 40.0, 4.0);
}

TEST(Camera, HomeIsStraightAheadUntilItIsSet) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveTo({50.0, 40.0, 4.0}, kNone), Status::kDone);
  camera.Advance(1s);
  ASSERT_EQ(camera.GoHome(kNone), Status::kDone);
  camera.Advance(1s);
  ExpectAt(camera, 0.0, 0.0, 1.0);
}

TEST(Camera, SetHomeInMotionTakesThePresentPositionAndDoesNotStop) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveAt({10.0, {}, {}}), Status::kDone);
  camera.Advance(1s);
  camera.SetHome();
  camera.Advance(1s);
  ExpectAt(camera, 20.0, 0.0, 1.0);
  ASSERT_EQ(camera.GoHome(kNone), Status::kDone);
  camera.Advance(1s);
  ExpectAt(camera, 10.0, 0.0, 1.0);
}

TEST(Camera, PowerOffStopsAMoveWhereItIsAndPowerOnKeepsThePosition) {
  Camera camera(AbruptCamera(1));
  ASSERT_EQ(camera.MoveTo({100.0, {}, {}}, {10.0, {}, {}}), Status::kDone);
  camera.Advance(3s);
  camera.PowerOff();
  EXPECT_FALSE(camera.powered());
  camera.Advance(3s);
  camera.PowerOn();
  camera.Advance(3s);
  ExpectAt(camera, 30.0, 0.0, 1.0);
  EXPECT_EQ(camera.MoveTo({100.0, {}, {}}, {10.0, {}, {}}), Status::kDone);
  camera.Advance(7s);
  ExpectAt(camera, 100.0, 0.0, 1.0);
}

TEST(Camera, EveryMoveIsRefusedWithoutPower) {
  Camera camera(AbruptCamera(1));
  camera.PowerOff();
  EXPECT_EQ(camera.MoveTo({10.0, 10.0, 2.0}, kNone), Status::kPoweredOff);
  EXPECT_EQ(camera.MoveTo({kNaN, 10.0, 2.0}, kNone), Status::kPoweredOff);
  EXPECT_EQ(camera.MoveAt({10.0, 10.0, 2.0}), Status::kPoweredOff);
  EXPECT_EQ(camera.GoHome(kNone), Status::kPoweredOff);
  camera.PowerOn();
  camera.Advance(1s);
  ExpectAt(camera, 0.0, 0.0, 1.0);
}

// Draws what a command may hold: mostly sensible numbers, some of them wild.
class Numbers {
 public:
  std::optional<double> Draw() {
    const int kind = Between(0, 9);
    if (kind == 0) return std::nullopt;
    if (kind == 1) return kWild[static_cast<std::size_t>(Between(0, 8))];
    return std::uniform_real_distribution<double>(-200.0, 200.0)(generator_);
  }
  AxisValues DrawAll() { return {Draw(), Draw(), Draw()}; }
  int Between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(generator_); }

 private:
  static constexpr std::array<double, 9> kWild = {kNaN,      kInfinity, -kInfinity, 1e308, -1e308,
                                                  kSmallest, 0.0,       -0.0,       170.0};
  std::mt19937 generator_{20240217};
};

void DoAnything(Camera& camera, Numbers& numbers) {
  switch (numbers.Between(0, 6)) {
    case 0:
      camera.MoveTo(numbers.DrawAll(), numbers.DrawAll());
      break;
    case 1:
      camera.MoveTo(numbers.DrawAll(), {});
      break;
    case 2:
      camera.MoveAt(numbers.DrawAll());
      break;
    case 3:
      camera.GoHome(numbers.DrawAll());
      break;
    case 4:
      camera.SetHome();
      break;
    case 5:
      camera.Stop({numbers.Between(0, 1) == 1, false, true});
      break;
    default:
      numbers.Between(0, 3) == 0 ? camera.PowerOff() : camera.PowerOn();
  }
}

TEST(Camera, EachAxisSpeedsUpAndSlowsDownInItsOwnWay) {
  Camera camera;
  ASSERT_EQ(camera.MoveTo({100.0, 80.0, 9.0}, kNone), Status::kDone);
  camera.Advance(125ms);
  EXPECT_EQ(camera.axis(kPan).speed(), 50.0);
  EXPECT_EQ(camera.axis(kTilt).speed(), 40.0);
  EXPECT_EQ(camera.axis(kZoom).speed(), 4.0);
  camera.Advance(1124ms);
  EXPECT_GT(camera.axis(kPan).speed(), 0.0);
  camera.Advance(2ms);
  ExpectAt(camera, 100.0, 80.0, 9.0);
}

TEST(Camera, PowerOffStopsAtOnceAndStopDoesNot) {
  Camera braking;
  ASSERT_EQ(braking.MoveAt({100.0, {}, {}}), Status::kDone);
  braking.Advance(1s);
  Camera cut = braking;
  braking.Stop({true, true, true});
  cut.PowerOff();
  braking.Advance(1s);
  cut.Advance(1s);
  EXPECT_EQ(cut.axis(kPan).position(), 87.5);
  EXPECT_EQ(braking.axis(kPan).position(), 100.0);
}

TEST(Camera, LosesItsPowerInTheMoveOnly) {
  Camera camera(AbruptCamera(1));
  camera.LosePowerAfter(500ms);
  camera.Advance(1h);
  EXPECT_TRUE(camera.powered());
  ASSERT_EQ(camera.MoveTo({30.0, {}, {}}, {10.0, {}, {}}), Status::kDone);
  camera.Advance(1h);
  EXPECT_FALSE(camera.powered());
  ExpectAt(camera, 5.0, 0.0, 1.0);
  camera.PowerOn();
  ASSERT_EQ(camera.MoveTo({30.0, {}, {}}, {10.0, {}, {}}), Status::kDone);
  camera.Advance(1h);
  ExpectAt(camera, 30.0, 0.0, 1.0);
}

TEST(Camera, RefusesAnAxisThatItDoesNotHave) {
  vptzd::CameraDescription description;
  description.axes[kZoom].reset();
  Camera camera(description);
  EXPECT_EQ(camera.MoveTo({10.0, {}, 2.0}, kNone), Status::kUnsupportedAxis);
  EXPECT_EQ(camera.MoveAt({10.0, {}, 0.0}), Status::kUnsupportedAxis);
  EXPECT_EQ(camera.GoHome(kNone), Status::kDone);
  EXPECT_EQ(camera.MoveTo({10.0, 5.0, {}}, kNone), Status::kDone);
}

TEST(Camera, RecordTellsWhatItIsAndWhereItStands) {
  vptzd::CameraDescription description = vptzd::BuiltInCamera(1);
  description.axes[kZoom].reset();
  Camera camera(description);
  ASSERT_EQ(camera.MoveTo({30.0, {}, {}}, kNone), Status::kDone);
  camera.Advance(1h);
  const vptzd::CameraRecord record = camera.Record();
  EXPECT_EQ(record.identity.name, "camera-1");
  EXPECT_EQ(record.abilities.ptz_token, "ptz0");
  EXPECT_EQ(record.abilities.axes[kTilt]->top_speed, 80.0);
  EXPECT_FALSE(record.abilities.axes[kZoom].has_value());
  EXPECT_EQ(record.state.position, (vptzd::PerAxis<double>{30.0, 0.0, 1.0}));
  EXPECT_EQ(record.state.credentials.user, "admin");
  EXPECT_EQ(record.state.presets.size(), 3u);
  EXPECT_EQ(record.state.media.size(), 2u);
}

TEST(Camera, NeverLeavesItsRangesWhateverItIsTold) {
  Camera camera;
  Numbers numbers;
  int moving = 0;
  for (int i = 0; i < 50000; ++i) {
    DoAnything(camera, numbers);
    camera.Advance(std::chrono::nanoseconds(numbers.Between(0, 2000000000)));
    for (const AxisIndex index : {kPan, kTilt, kZoom}) {
      const vptzd::Axis& axis = camera.axis(index);
      ASSERT_TRUE(axis.CanReach(axis.position())) << "step " << i << ", axis " << index;
      ASSERT_TRUE(axis.speed() == 0.0 || axis.CanMoveWith(axis.speed())) << "step " << i << ", axis " << index;
      if (axis.speed() > 0.0) ++moving;
    }
  }
  EXPECT_GT(moving, 1000);
}

}  // namespace
}  // namespace vptz_test
