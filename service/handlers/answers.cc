#include "handlers/answers.h"

#include <optional>

#include <vptz/vptz_data.h>

namespace vptzd {
namespace {

std::optional<double> Commanded(bool present, double value) {
  return present && value != kVptzNotCommanded ? std::optional<double>(value) : std::nullopt;
}

}  // namespace

tutorial::VptzResponse Answer(Status status) {
  tutorial::VptzResponse response;
  response.set_status_code(static_cast<int>(status));
  return response;
}

AxisValues Positions(const tutorial::PtzCommand& command) {
  return {Commanded(command.has_pan_position(), command.pan_position()),
          Commanded(command.has_tilt_position(), command.tilt_position()),
          Commanded(command.has_zoom_position(), command.zoom_position())};
}

AxisValues Speeds(const tutorial::PtzCommand& command) {
  return {Commanded(command.has_pan_speed(), command.pan_speed()),
          Commanded(command.has_tilt_speed(), command.tilt_speed()),
          Commanded(command.has_zoom_speed(), command.zoom_speed())};
}

AxisValues Velocities(const tutorial::PtzCommand& command) {
  return {Commanded(command.has_pan_velocity(), command.pan_velocity()),
          Commanded(command.has_tilt_velocity(), command.tilt_velocity()),
          Commanded(command.has_zoom_velocity(), command.zoom_velocity())};
}

}  // namespace vptzd
