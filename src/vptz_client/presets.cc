#include <vptz/model/preset.h>

#include <memory>
#include <utility>

#include <vptz/method_names.h>
#include "vptz_client/exchange.h"

namespace method = vptz::method;
using tutorial::PtzCommand;
using vptz::ExchangePtz;

namespace {

// The stored preset; null without a bus client, whose commands need no look at
// the database.
std::unique_ptr<Preset> StoredPreset(const VptzClient& client, unsigned int ptz_id, unsigned int preset_id) {
  Preset* preset = nullptr;
  if (vptz::ClientAccess::HasBusClient(client)) Preset::QueryByPresetId(&preset, ptz_id, preset_id);
  return std::unique_ptr<Preset>(preset);
}

template <class Operation>
int WithStoredPreset(const VptzClient& client, unsigned int ptz_id, unsigned int preset_id,
                     Operation&& operation) {
  return vptz::NoThrow(-1, [&] {
    const auto preset = StoredPreset(client, ptz_id, preset_id);
    return preset == nullptr ? -1 : operation(*preset);
  });
}

}  // namespace

int VptzClient::UpdatePresets(unsigned int ptz_id, int timeout) {
  return ExchangePtz(*this, method::kUpdatePresets, ptz_id, timeout, [](PtzCommand&) {});
}

int VptzClient::SetPreset(unsigned int ptz_id, std::string name, std::string token, int timeout) {
  return ExchangePtz(*this, method::kSetPreset, ptz_id, timeout, [&](PtzCommand& ptz) {
    ptz.set_preset_name(std::move(name));
    ptz.set_preset_token(std::move(token));
  });
}

int VptzClient::SetPresetById(unsigned int ptz_id, unsigned int preset_id, int timeout) {
  return WithStoredPreset(*this, ptz_id, preset_id, [&](const Preset& preset) {
    return SetPreset(ptz_id, preset.name(), preset.token(), timeout);
  });
}

int VptzClient::GotoPreset(unsigned int ptz_id, std::string token, double pan_speed, double tilt_speed,
                           double zoom_speed, int timeout) {
  return ExchangePtz(*this, method::kGotoPreset, ptz_id, timeout, [&](PtzCommand& ptz) {
    ptz.set_preset_token(std::move(token));
    ptz.set_pan_speed(pan_speed);
    ptz.set_tilt_speed(tilt_speed);
    ptz.set_zoom_speed(zoom_speed);
  });
}

int VptzClient::GotoPresetById(unsigned int ptz_id, unsigned int preset_id, double pan_speed, double tilt_speed,
                               double zoom_speed, int timeout) {
  return WithStoredPreset(*this, ptz_id, preset_id, [&](const Preset& preset) {
    return GotoPreset(ptz_id, preset.token(), pan_speed, tilt_speed, zoom_speed, timeout);
  });
}

int VptzClient::RemovePreset(unsigned int ptz_id, std::string token, int timeout) {
  return ExchangePtz(*this, method::kRemovePreset, ptz_id, timeout,
                     [&](PtzCommand& ptz) { ptz.set_preset_token(std::move(token)); });
}

int VptzClient::RemovePresetById(unsigned int ptz_id, unsigned int preset_id, int timeout) {
  return WithStoredPreset(*this, ptz_id, preset_id,
                          [&](const Preset& preset) { return RemovePreset(ptz_id, preset.token(), timeout); });
}
