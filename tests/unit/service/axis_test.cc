#include "camera/axis.h"

#include <chrono>
#include <cmath>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::Axis;

constexpr Axis::Limits kLimits = {-170.0, 170.0, 100.0};
constexpr auto kForever = std::chrono::nanoseconds::max();

Axis RestingAxis() { return Axis(kLimits, 0.0); }

TEST(Axis, RestsAtFirst) {
  Axis axis = RestingAxis();
  axis.Advance(kForever);
  EXPECT_EQ(axis.position(), 0.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, TravelsAtItsSpeed) {
  Axis axis = RestingAxis();
  axis.MoveTo(-100.0, 10.0);
  axis.Advance(2500ms);
  EXPECT_EQ(axis.position(), -25.0);
  EXPECT_EQ(axis.speed(), 10.0);
}

TEST(Axis, StopsExactlyAtItsTarget) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 10.0);
  axis.Advance(10s - 1ns);
  EXPECT_LT(axis.position(), 100.0);
  EXPECT_EQ(axis.speed(), 10.0);
  axis.Advance(1ns);
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

TEST(Axis, MovesUntilTheUpperLimit) {
  Axis axis = RestingAxis();
  axis.MoveAt(17.0);
  axis.Advance(9s);
  EXPECT_EQ(axis.position(), 153.0);
  axis.Advance(1s);
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
  EXPECT_EQ(axis.position(), 120.0);
}

TEST(Axis, VelocityBeyondTheTopSpeedMovesWithTheTopSpeed) {
  Axis axis = RestingAxis();
  axis.MoveAt(-1e308);
  EXPECT_EQ(axis.speed(), 100.0);
  axis.Advance(500ms);
  EXPECT_EQ(axis.position(), -50.0);
}

TEST(Axis, ZeroVelocityStops) {
  for (const double zero : {0.0, -0.0}) {
    Axis axis = RestingAxis();
    axis.MoveAt(10.0);
    axis.Advance(1s);
    axis.MoveAt(zero);
    axis.Advance(1s);
    EXPECT_EQ(axis.position(), 10.0);
    EXPECT_EQ(axis.speed(), 0.0);
  }
}

TEST(Axis, StopEndsAMotionWhereItIs) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 10.0);
  axis.Advance(3s);
  axis.Stop();
  axis.Advance(3s);
  EXPECT_EQ(axis.position(), 30.0);
  EXPECT_EQ(axis.speed(), 0.0);
}

TEST(Axis, NewMotionReplacesTheOldOneFromWhereItIs) {
  Axis axis = RestingAxis();
  axis.MoveTo(100.0, 10.0);
  axis.Advance(3s);
  axis.MoveTo(-30.0, 20.0);
  axis.Advance(1s);
  EXPECT_EQ(axis.position(), 10.0);
  axis.Advance(2s);
  EXPECT_EQ(axis.position(), -30.0);
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
