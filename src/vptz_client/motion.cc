#include <vptz/method_names.h>
#include "vptz_client/exchange.h"

namespace method = vptz::method;
using tutorial::PtzCommand;
using vptz::ExchangePtz;

namespace {

// An axis that a command leaves alone.
constexpr double kLeave = kVptzNotCommanded;

}  // namespace

int VptzClient::AbsoluteMove(unsigned int ptz_id, double pan_position, double tilt_position,
                             double zoom_position, double pan_speed, double tilt_speed, double zoom_speed,
                             int timeout) {
  return ExchangePtz(*this, method::kAbsoluteMove, ptz_id, timeout, [&](PtzCommand& ptz) {
    ptz.set_pan_position(pan_position);
    ptz.set_tilt_position(tilt_position);
    ptz.set_zoom_position(zoom_position);
    ptz.set_pan_speed(pan_speed);
    ptz.set_tilt_speed(tilt_speed);
    ptz.set_zoom_speed(zoom_speed);
  });
}

int VptzClient::AbsolutePanMove(unsigned int ptz_id, double pan_position, double pan_speed, int timeout) {
  return AbsoluteMove(ptz_id, pan_position, kLeave, kLeave, pan_speed, kLeave, kLeave, timeout);
}

int VptzClient::AbsoluteTiltMove(unsigned int ptz_id, double tilt_position, double tilt_speed, int timeout) {
  return AbsoluteMove(ptz_id, kLeave, tilt_position, kLeave, kLeave, tilt_speed, kLeave, timeout);
}

int VptzClient::AbsolutePanTiltMove(unsigned int ptz_id, double pan_position, double tilt_position,
                                    double pan_speed, double tilt_speed, int timeout) {
  return AbsoluteMove(ptz_id, pan_position, tilt_position, kLeave, pan_speed, tilt_speed, kLeave, timeout);
}

int VptzClient::AbsoluteZoomMove(unsigned int ptz_id, double zoom_position, double zoom_speed, int timeout) {
  return AbsoluteMove(ptz_id, kLeave, kLeave, zoom_position, kLeave, kLeave, zoom_speed, timeout);
}

int VptzClient::ContinuousMove(unsigned int ptz_id, double pan_velocity, double tilt_velocity,
                               double zoom_velocity, int timeout) {
  return ExchangePtz(*this, method::kContinuousMove, ptz_id, timeout, [&](PtzCommand& ptz) {
    ptz.set_pan_velocity(pan_velocity);
    ptz.set_tilt_velocity(tilt_velocity);
    ptz.set_zoom_velocity(zoom_velocity);
  });
}

int VptzClient::ContinuousPanMove(unsigned int ptz_id, double pan_velocity, int timeout) {
  return ContinuousMove(ptz_id, pan_velocity, kLeave, kLeave, timeout);
}

int VptzClient::ContinuousTiltMove(unsigned int ptz_id, double tilt_velocity, int timeout) {
  return ContinuousMove(ptz_id, kLeave, tilt_velocity, kLeave, timeout);
}

int VptzClient::ContinuousPanTiltMove(unsigned int ptz_id, double pan_velocity, double tilt_velocity,
                                      int timeout) {
  return ContinuousMove(ptz_id, pan_velocity, tilt_velocity, kLeave, timeout);
}

int VptzClient::ContinuousZoomMove(unsigned int ptz_id, double zoom_velocity, int timeout) {
  return ContinuousMove(ptz_id, kLeave, kLeave, zoom_velocity, timeout);
}

int VptzClient::PtzStop(unsigned int ptz_id, bool stop_pan, bool stop_tilt, bool stop_zoom, int timeout) {
  return ExchangePtz(*this, method::kPtzStop, ptz_id, timeout, [&](PtzCommand& ptz) {
    ptz.set_stop_pan(stop_pan);
    ptz.set_stop_tilt(stop_tilt);
    ptz.set_stop_zoom(stop_zoom);
  });
}

int VptzClient::PanTiltStop(unsigned int ptz_id, int timeout) {
  return PtzStop(ptz_id, true, true, false, timeout);
}

int VptzClient::ZoomStop(unsigned int ptz_id, int timeout) {
  return PtzStop(ptz_id, false, false, true, timeout);
}

int VptzClient::GotoHome(unsigned int ptz_id, double pan_speed, double tilt_speed, double zoom_speed,
                         int timeout) {
  return ExchangePtz(*this, method::kGotoHome, ptz_id, timeout, [&](PtzCommand& ptz) {
    ptz.set_pan_speed(pan_speed);
    ptz.set_tilt_speed(tilt_speed);
    ptz.set_zoom_speed(zoom_speed);
  });
}

int VptzClient::SetHome(unsigned int ptz_id, int timeout) {
  return ExchangePtz(*this, method::kSetHome, ptz_id, timeout, [](PtzCommand&) {});
}

int VptzClient::SetTrackMode(unsigned int ptz_id, unsigned int track_mode, int timeout) {
  return ExchangePtz(*this, method::kSetTrackMode, ptz_id, timeout,
                     [&](PtzCommand& ptz) { ptz.set_track_mode(track_mode); });
}
