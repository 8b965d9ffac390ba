// A fleet whose time the test holds, reached as a client reaches it.
#ifndef VPTZ_TESTS_UNIT_SERVICE_SIMULATION_H
#define VPTZ_TESTS_UNIT_SERVICE_SIMULATION_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include <vptz/vptz.pb.h>
#include <vptz/vptz_data.h>

#include "bus/router.h"
#include "drivers/simulated/clock.h"
#include "drivers/simulated/simulated_fleet.h"
#include "fleet/fleet.h"
#include "handlers/answers.h"
#include "handlers/context.h"

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

// A built-in camera that speeds up and slows down so fast that its positions can
// be reckoned from speed and time alone, to within kAlmost.
inline vptzd::CameraDescription AbruptCamera(std::size_t number) {
  vptzd::CameraDescription camera = vptzd::BuiltInCamera(number);
  for (auto& axis : camera.axes) axis->acceleration = 1e9;
  return camera;
}

constexpr double kAlmost = 1e-4;

class Simulation {
 public:
  explicit Simulation(std::size_t cameras = 2) : fleet_(cameras, clock_) {
    for (std::uint32_t number = 1; number <= cameras; ++number) {
      *fleet_.CameraNumber(number) = vptzd::Camera(AbruptCamera(number));
    }
  }
  explicit Simulation(const vptzd::SimulatedFleet& simulated) : fleet_(simulated.cameras, clock_) {
    context_.search_time = simulated.search_time;
    fleet_.SetFaults(simulated.faults);
  }

  // No camera is simulated.
  struct Real {};
  explicit Simulation(Real) : fleet_(clock_) {}

  vptzd::Fleet& fleet() { return fleet_; }
  vptzd::Context& context() { return context_; }

  // Whose calls come from now on; 0 at first, as from a bus that does not tell.
  void SpeakFor(std::uint64_t caller) { caller_ = caller; }

  // Lets time pass, and does what is to be done until then.
  void Wait(std::chrono::nanoseconds elapsed) {
    clock_.Advance(elapsed);
    agenda_.RunDue();
  }

  tutorial::VptzResponse Call(const std::string& method, tutorial::VptzCommand command = {}) {
    command.set_method_name(method);
    const std::string bytes = command.SerializeAsString();
    return Dispatch(method, bytes.data(), static_cast<int>(bytes.size()));
  }

  tutorial::VptzResponse Dispatch(std::string_view method, const void* payload, int length) {
    vptzd::Call call;
    call.caller = caller_;
    const vptzd::Status status = vptzd::ReadCall(method, payload, length, &call);
    return status == vptzd::Status::kDone ? vptzd::Answer(context_, call) : vptzd::Answer(status);
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
  vptzd::Fleet fleet_;
  vptzd::Agenda agenda_{clock_};
  vptzd::Context context_{fleet_, agenda_};
  std::uint64_t caller_ = 0;
};

}  // namespace vptz_test

#endif
