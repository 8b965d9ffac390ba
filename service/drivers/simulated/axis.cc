#include "drivers/simulated/axis.h"

#include <algorithm>
#include <cmath>

namespace vptzd {
namespace {

using std::chrono::nanoseconds;

// A motion can be slow enough to outlast what the type can count.
nanoseconds AddSaturated(nanoseconds a, nanoseconds b) {
  return a > nanoseconds::max() - b ? nanoseconds::max() : a + b;
}

}  // namespace

Axis::Axis(const Limits& limits, double position) : limits_(limits), position_(position) {}

double Axis::speed() const { return std::abs(velocity_); }

bool Axis::CanReach(double position) const { return position >= limits_.min && position <= limits_.max; }

bool Axis::CanMoveWith(double speed) const { return speed > 0.0 && speed <= limits_.top_speed; }

// Reckoned along the direction in which the target lies beyond the point at
// which slowing down at once would end.
void Axis::MoveTo(double position, double speed) {
  const double a = limits_.acceleration;
  const double rest = position_ + velocity_ * std::abs(velocity_) / (2.0 * a);
  const double way = position >= rest ? 1.0 : -1.0;
  const double distance = way * (position - position_);
  const double now = way * velocity_;
  const double highest = std::sqrt(std::max(0.0, a * distance + now * now / 2.0));
  const double cruise = std::min(speed, std::max(highest, now));
  const double to_cruise = (cruise - now) * (cruise + now) / (2.0 * a) * (now > cruise ? -1.0 : 1.0);
  const double to_rest = cruise * cruise / (2.0 * a);
  const double between = std::max(0.0, distance - to_cruise - to_rest);
  Begin(position, {{{std::abs(cruise - now) / a, position_, velocity_, std::copysign(a, way * (cruise - now))},
                    {cruise > 0.0 ? between / cruise : 0.0, position_ + way * to_cruise, way * cruise, 0.0},
                    {cruise / a, position - way * to_rest, way * cruise, -way * a}}});
}

void Axis::MoveAt(double velocity) {
  if (velocity == 0.0) {
    Stop();
    return;
  }
  MoveTo(velocity > 0.0 ? limits_.max : limits_.min, std::min(std::abs(velocity), limits_.top_speed));
}

void Axis::Stop() {
  if (!moving_) return;
  const double a = limits_.acceleration;
  const double rest = position_ + velocity_ * std::abs(velocity_) / (2.0 * a);
  const Leg slowing = {std::abs(velocity_) / a, position_, velocity_, std::copysign(a, -velocity_)};
  Begin(std::clamp(rest, limits_.min, limits_.max), {{{}, {}, slowing}});
}

void Axis::Halt() {
  velocity_ = 0.0;
  moving_ = false;
}

void Axis::Begin(double destination, const std::array<Leg, 3>& legs) {
  destination_ = destination;
  legs_ = legs;
  elapsed_ = nanoseconds(0);
  moving_ = true;
  Follow(0.0);  // already there: at rest at once
}

void Axis::Advance(nanoseconds elapsed) {
  if (!moving_) return;
  elapsed_ = AddSaturated(elapsed_, elapsed);
  Follow(std::chrono::duration<double>(elapsed_).count());
}

void Axis::Follow(double seconds) {
  for (const Leg& leg : legs_) {
    if (seconds < leg.seconds) {
      const double gained = leg.acceleration * seconds;
      position_ = std::clamp(leg.position + (leg.velocity + gained / 2.0) * seconds, limits_.min, limits_.max);
      velocity_ = std::clamp(leg.velocity + gained, -limits_.top_speed, limits_.top_speed);
      return;
    }
    seconds -= leg.seconds;
  }
  position_ = destination_;
  Halt();
}

}  // namespace vptzd
