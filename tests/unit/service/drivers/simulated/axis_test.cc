#include "drivers/simulated/axis.h"

#include <chrono>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::Axis;

constexpr Axis::Limits kLimits = {-170.0, 170.0, 100.0, 400.0};
constexpr auto kForever = std::chrono::nanoseconds::max();

Axis RestingAxis() { return Axis(kLimits, 0.0); }

TEST(Axis, RestsAtFirst) {
  Axis axis = RestingAxis();
  axis.Advance(kForever);
  EXPECT_EQ(axis.position(), 0.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

// At 400 per second squared 100 per second are reached in 250 ms, over 12.5.
TEST(Axis, SpeedsUpEvenly) {
  Axis axis = RestingAxis();
  axis.MoveTo(-100.0, 100.0);
  EXPECT_EQ(axis.speed(), 0.0);
  axis.Advance(125ms);
  EXPECT_EQ(axis.speed(), 50.0);
  EXPECT_EQ(axis.position(), -3.125);
  axis.Advance(125ms);
  EXPECT_EQ(axis.speed(), 100.0);
  EXPECT_EQ(axis.position(), -12.5);
}

TEST(Axis, TravelsAtItsSpeed) {
  Axis axis = RestingAxis();
  axis.MoveTo(-100.0, 100.0);
  axis.Advance(500ms);
  EXPECT_EQ(axis.position(), -37.5);
  EXPECT_EQ(axis.speed(), 100.0);
}

TEST(Axis, SlowsDownEvenlyBeforeItsTarget) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 100.0);
  axis.Advance(1125ms);
  EXPECT_EQ(axis.speed(), 50.0);
  EXPECT_EQ(axis.position(), 96.875);
}

TEST(Axis, ShortMoveTurnsBeforeItReachesItsSpeed) {
  Axis axis = RestingAxis();
  axis.MoveTo(4.0, 100.0);
  axis.Advance(100ms);
  EXPECT_DOUBLE_EQ(axis.speed(), 40.0);
  EXPECT_DOUBLE_EQ(axis.position(), 2.0);
  axis.Advance(100ms);
  EXPECT_EQ(axis.position(), 4.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, StopsExactlyAtItsTarget) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 100.0);
  axis.Advance(1250ms - 1us);
  EXPECT_LT(axis.position(), 100.0);
  EXPECT_GT(axis.speed(), 0.0);
  axis.Advance(1us);
  EXPECT_EQ(axis.position(), 100.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, MovesTheSameInHoweverManySteps) {
  Axis steps = RestingAxis();
  Axis leap = RestingAxis();
  steps.MoveTo(99.9, 0.7);
  leap.MoveTo(99.9, 0.7);
  for (int i = 0; i < 100000; ++i) steps.Advance(333333ns);
  leap.Advance(100000 * 333333ns);
  EXPECT_EQ(steps.position(), leap.position());
}

TEST(Axis, MoveToWhereItIsRestsAtOnce) {
  Axis axis = RestingAxis();
  axis.MoveTo(0.0, 10.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, SlowsDownBeforeTheUpperLimitAndEndsExactlyThere) {
  Axis axis = RestingAxis();
  axis.MoveAt(100.0);
  axis.Advance(1700ms);
  EXPECT_DOUBLE_EQ(axis.position(), 157.5);
  EXPECT_EQ(axis.speed(), 100.0);
  axis.Advance(125ms);
  EXPECT_NEAR(axis.speed(), 50.0, 1e-9);
  axis.Advance(125ms);
  EXPECT_EQ(axis.position(), 170.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, MovesUntilTheLowerLimit) {
  Axis axis = RestingAxis();
  axis.MoveAt(-17.0);
  axis.Advance(11s);
  EXPECT_EQ(axis.position(), -170.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, AgainstALimitStaysAtRestAndLeavesItTheOtherWay) {
  Axis axis(kLimits, 170.0);
  axis.MoveAt(50.0);
  EXPECT_EQ(axis.speed(), 0.0);
  axis.MoveAt(-50.0);
  axis.Advance(1s);
  EXPECT_EQ(axis.position(), 123.125);
}

TEST(Axis, VelocityBeyondTheTopSpeedMovesWithTheTopSpeed) {
  Axis axis = RestingAxis();
  axis.MoveAt(-1e308);
  axis.Advance(500ms);
  EXPECT_EQ(axis.speed(), 100.0);
  EXPECT_EQ(axis.position(), -37.5);
}

TEST(Axis, ZeroVelocityStops) {
  for (const double zero : {0.0, -0.0}) {
    Axis axis = RestingAxis();
    axis.MoveAt(100.0);
    axis.Advance(500ms);
    axis.MoveAt(zero);
    axis.Advance(1s);
    EXPECT_EQ(axis.position(), 50.0);
    EXPECT_EQ(axis.speed(), 0.0);
  }
}

TEST(Axis, StopSlowsDownToRest) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 100.0);
  axis.Advance(500ms);
  axis.Stop();
  EXPECT_EQ(axis.speed(), 100.0);
  axis.Advance(125ms);
  EXPECT_EQ(axis.speed(), 50.0);
  axis.Advance(125ms);
  EXPECT_EQ(axis.position(), 50.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, StopTwiceEndsWhereTheFirstOneDoes) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 100.0);
  axis.Advance(500ms);
  axis.Stop();
  axis.Advance(100ms);
  axis.Stop();
  axis.Advance(1s);
  EXPECT_DOUBLE_EQ(axis.position(), 50.0);
}

TEST(Axis, HaltRestsAtOnce) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 100.0);
  axis.Advance(500ms);
  axis.Halt();
  axis.Advance(1s);
  EXPECT_EQ(axis.position(), 37.5);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, TurnsRoundWithoutALeap) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 100.0);
  axis.Advance(500ms);
  axis.MoveTo(0.0, 100.0);
  EXPECT_EQ(axis.position(), 37.5);
  axis.Advance(250ms);
  EXPECT_EQ(axis.position(), 50.0);
  EXPECT_NEAR(axis.speed(), 0.0, 1e-9);
  axis.Advance(250ms);
  EXPECT_EQ(axis.position(), 37.5);
  EXPECT_EQ(axis.speed(), 100.0);
  axis.Advance(1s);
  EXPECT_EQ(axis.position(), 0.0);
}

TEST(Axis, OvershootsATargetThatIsTooNearAndComesBack) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 100.0);
  axis.Advance(500ms);
  axis.MoveTo(40.0, 100.0);
  axis.Advance(250ms);
  EXPECT_EQ(axis.position(), 50.0);
  axis.Advance(1s);
  EXPECT_EQ(axis.position(), 40.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, SlowerMoveSlowsDownToItsSpeedFirst) {
  Axis axis = RestingAxis();
  axis.MoveAt(100.0);
  axis.Advance(500ms);
  axis.MoveTo(100.0, 20.0);
  axis.Advance(100ms);
  EXPECT_DOUBLE_EQ(axis.speed(), 60.0);
  axis.Advance(100ms);
  EXPECT_EQ(axis.speed(), 20.0);
  axis.Advance(1h);
  EXPECT_EQ(axis.position(), 100.0);
}

// However motions follow one another, the position never leaps: within a
// millisecond it changes by the top speed at most.
TEST(Axis, NeverLeaps) {
  Axis axis = RestingAxis();
  std::mt19937 generator(11);
  std::uniform_real_distribution<double> position(-170.0, 170.0);
  std::uniform_real_distribution<double> speed(0.1, 100.0);
  for (int i = 0; i < 100000; ++i) {
    const double before = axis.position();
    const double speed_before = axis.speed();
    axis.Advance(1ms);
    ASSERT_LE(std::abs(axis.position() - before), 0.1 + 1e-9) << i;
    ASSERT_LE(std::abs(axis.speed() - speed_before), 0.4 + 1e-6) << i;
    if (i % 97 == 0) axis.MoveTo(position(generator), speed(generator));
    if (i % 211 == 0) axis.MoveAt(position(generator));
    if (i % 307 == 0) axis.Stop();
  }
}

TEST(Axis, ReachesItsLimitsAndNothingBeyond) {
  const Axis axis = RestingAxis();
  EXPECT_TRUE(axis.CanReach(-170.0));
  EXPECT_TRUE(axis.CanReach(170.0));
  for (const double position : {std::nextafter(170.0, 171.0), std::nextafter(-170.0, -171.0), 1e308, -1e308,
                                kInfinity, -kInfinity, kNaN}) {
    EXPECT_FALSE(axis.CanReach(position)) << position;
  }
}

TEST(Axis, MovesWithSpeedsAboveZeroUpToTheTopSpeed) {
  const Axis axis = RestingAxis();
  EXPECT_TRUE(axis.CanMoveWith(kSmallest));
  EXPECT_TRUE(axis.CanMoveWith(100.0));
  for (const double speed : {0.0, -0.0, -1.0, std::nextafter(100.0, 101.0), 1e308, kInfinity, kNaN}) {
    EXPECT_FALSE(axis.CanMoveWith(speed)) << speed;
  }
}

TEST(Axis, HugeElapsedTimeEndsAtTheTarget) {
  Axis axis = RestingAxis();
  axis.MoveTo(12.5, 1.0);
  axis.Advance(kForever);
  EXPECT_EQ(axis.position(), 12.5);
}

TEST(Axis, SlowestMotionOutlastsAllTime) {
  Axis axis = RestingAxis();
  axis.MoveAt(kSmallest);
  for (int i = 0; i < 3; ++i) {
    axis.Advance(kForever);
    EXPECT_EQ(axis.position(), kSmallest * std::chrono::duration<double>(kForever).count());
    EXPECT_EQ(axis.speed(), kSmallest);
  }
}

TEST(Axis, TargetADenormalAwayIsMet) {
  Axis axis = RestingAxis();
  axis.MoveTo(-kSmallest, 1.0);
  axis.Advance(1ns);
  EXPECT_EQ(axis.position(), -kSmallest);
}

}  // namespace
}  // namespace vptz_test
