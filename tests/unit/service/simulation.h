// A world whose time the test holds, reached as a client reaches it.
#ifndef VPTZ_TESTS_UNIT_SERVICE_SIMULATION_H
#define VPTZ_TESTS_UNIT_SERVICE_SIMULATION_H

#include <chrono>
#include <cstddef>
#include <limits>
#include <string>

#include <vptz/vptz.pb.h>
#include <vptz/vptz_data.h>

#include "camera/clock.h"
#include "dispatcher.h"
#include "world.h"

namespace vptz_test {

using namespace std::chrono_literals;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();

class ManualClock final : public vptzd::Clock {
 public:
  std::chrono::nanoseconds Now() const override { return now_; }
  void Advance(std::chrono::nanoseconds elapsed) { now_ += elapsed; }

 private:
  std::chrono::nanoseconds now_{0};
};

class Simulation {
 public:
  explicit Simulation(std::size_t cameras = 2) : world_(cameras, clock_) {}

  vptzd::World& world() { return world_; }
  void Wait(std::chrono::nanoseconds elapsed) { clock_.Advance(elapsed); }

  tutorial::VptzResponse Call(const std::string& method, tutorial::VptzCommand command = {}) {
    command.set_method_name(method);
    const std::string bytes = command.SerializeAsString();
    return vptzd::Dispatch(world_, method, bytes.data(), static_cast<int>(bytes.size()));
  }

  int Status(const std::string& method, const tutorial::VptzCommand& command = {}) {
    return Call(method, command).status_code();
  }

  // What get_ptz_profiles tells of a camera.
  tutorial::PtzInfo Look(unsigned camera = 1) {
    tutorial::VptzCommand command;
    command.mutable_device_command()->set_device_id(camera);
    command.mutable_device_command()->set_token("ptz0");
    return Call("get_ptz_profiles", command).ptz_info();
  }

 private:
  ManualClock clock_;
  vptzd::World world_;
};

}  // namespace vptz_test

#endif
