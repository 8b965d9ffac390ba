// One axis of a simulated camera.
//
// An axis is a value: it moves only when Advance tells it how much time has
// passed. It speeds up and slows down evenly. Every motion has an end, the
// target or a limit of the range, before which it slows down, and the position
// is worked out from where and when the motion began. So it makes no difference
// in how many steps the time is told, and the end is met exactly.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_AXIS_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_AXIS_H

#include <array>
#include <chrono>

namespace vptzd {

class Axis {
 public:
  // Positions in the axis's unit, top speed in that unit per second,
  // acceleration in that unit per second squared. All but the positions are
  // above 0.
  struct Limits {
    double min;
    double max;
    double top_speed;
    double acceleration;
  };

  // A resting axis. `position` lies within the limits.
  Axis(const Limits& limits, double position);

  const Limits& limits() const { return limits_; }
  double position() const { return position_; }

  // How fast it moves now, in whichever direction: 0 ... top speed.
  double speed() const;
  bool moving() const { return moving_; }

  // Whether MoveTo takes the value; false for a NaN.
  bool CanReach(double position) const;
  bool CanMoveWith(double speed) const;

  // Begins to move to a position that it can reach, with a speed that it can
  // move with. Replaces whatever motion there was; a motion the other way slows
  // down first.
  void MoveTo(double position, double speed);

  // Begins to move to the limit in the direction of a finite velocity. More
  // than the top speed moves with the top speed, 0 stops.
  void MoveAt(double velocity);

  // Slows down to rest.
  void Stop();

  // Rests at once where it is.
  void Halt();

  // Lets time pass; `elapsed` is not negative.
  void Advance(std::chrono::nanoseconds elapsed);

 private:
  // A part of a motion with an even acceleration.
  struct Leg {
    double seconds = 0.0;
    double position = 0.0;  // at its begin
    double velocity = 0.0;  // at its begin
    double acceleration = 0.0;
  };

  void Begin(double destination, const std::array<Leg, 3>& legs);
  void Follow(double seconds);

  Limits limits_;
  double position_;
  double velocity_ = 0.0;
  bool moving_ = false;  // at rest the rest means nothing
  double destination_ = 0.0;
  std::array<Leg, 3> legs_;              // speeding up, at speed, slowing down
  std::chrono::nanoseconds elapsed_{0};  // since the motion began
};

}  // namespace vptzd

#endif
