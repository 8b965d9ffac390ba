// One axis of a simulated camera.
//
// An axis is a value: it moves only when Advance tells it how much time has
// passed. Every motion has an end, the target or a limit of the range, and the
// position is worked out from where and when the motion began. So it makes no
// difference in how many steps the time is told, and the end is met exactly.
#ifndef VPTZ_SERVICE_CAMERA_AXIS_H
#define VPTZ_SERVICE_CAMERA_AXIS_H

#include <chrono>

namespace vptzd {

class Axis {
 public:
  // Positions in the axis's unit, top speed in that unit per second.
  struct Limits {
    double min;
    double max;
    double top_speed;
  };

  // A resting axis. `position` lies within the limits.
  Axis(const Limits& limits, double position);

  const Limits& limits() const { return limits_; }
  double position() const { return position_; }

  // How fast it moves now, in whichever direction: 0 ... top speed.
  double speed() const;

  // Whether MoveTo takes the value; false for a NaN.
  bool CanReach(double position) const;
  bool CanMoveWith(double speed) const;

  // Begins to move to a position that it can reach, with a speed that it can
  // move with. Replaces whatever motion there was.
  void MoveTo(double position, double speed);

  // Begins to move to the limit in the direction of a finite velocity. More
  // than the top speed moves with the top speed, 0 stops.
  void MoveAt(double velocity);

  // Stops where it is.
  void Stop();

  // Lets time pass; `elapsed` is not negative.
  void Advance(std::chrono::nanoseconds elapsed);

 private:
  Limits limits_;
  double position_;
  double velocity_ = 0.0;  // 0 at rest; then the next three mean nothing
  double start_ = 0.0;
  double destination_ = 0.0;
  std::chrono::nanoseconds elapsed_{0};  // since the motion began
};

}  // namespace vptzd

#endif
