#include "camera/axis.h"

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

void Axis::MoveTo(double position, double speed) {
  start_ = position_;
  destination_ = position;
  velocity_ = std::copysign(speed, destination_ - start_);
  elapsed_ = nanoseconds(0);
  Advance(nanoseconds(0));  // already there: at rest at once
}

void Axis::MoveAt(double velocity) {
  if (velocity == 0.0) {
    Stop();
    return;
  }
  MoveTo(velocity > 0.0 ? limits_.max : limits_.min, std::min(std::abs(velocity), limits_.top_speed));
}

void Axis::Stop() { velocity_ = 0.0; }

void Axis::Advance(nanoseconds elapsed) {
  if (velocity_ == 0.0) return;
  elapsed_ = AddSaturated(elapsed_, elapsed);
  const double travelled = velocity_ * std::chrono::duration<double>(elapsed_).count();
  if (std::abs(travelled) >= std::abs(destination_ - start_)) {
    position_ = destination_;
    velocity_ = 0.0;
    return;
  }
  position_ = start_ + travelled;
}

}  // namespace vptzd
