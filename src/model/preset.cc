#include <vptz/model/preset-odb.hxx>

#include <algorithm>

#include "model/stored_rows.h"

namespace {

using Query = odb::query<Preset>;

Query PtzIs(const unsigned int& ptz) { return Query::ptz == Query::_ref(ptz); }
constexpr vptz::PreparedQuery kByPtz("Preset::QueryByPtz", PtzIs);

Query PtzAndPresetIdAre(const unsigned int& ptz, const unsigned int& preset_id) {
  return Query::ptz == Query::_ref(ptz) && Query::preset_id == Query::_ref(preset_id);
}
constexpr vptz::PreparedQuery kByPresetId("Preset::QueryByPresetId", PtzAndPresetIdAre);

Query PtzAndTokenAre(const unsigned int& ptz, const std::string& token) {
  return Query::ptz == Query::_ref(ptz) && Query::token == Query::_ref(token);
}
constexpr vptz::PreparedQuery kByToken("Preset::QueryByToken", PtzAndTokenAre);

}  // namespace

template class vptz::StoredRow<Preset>;
template class vptz::UpdatableRow<Preset>;

Preset::Preset(Ptz* ptz, unsigned int preset_id, const std::string& token, const std::string& name, double pan,
               double tilt, double zoom)
    : ptz_(vptz::Borrow(ptz)),
      preset_id_(preset_id),
      token_(token),
      name_(name),
      pan_(pan),
      tilt_(tilt),
      zoom_(zoom) {}

Ptz* Preset::ptz() const { return VptzModel::LoadLazyPtr(ptz_); }

void Preset::set_ptz(Ptz* value) { ptz_ = vptz::Borrow(value); }

int Preset::QueryByPtz(std::vector<Preset*>* presets, unsigned int ptz_id, unsigned int, unsigned int) {
  return kByPtz.All(presets, ptz_id);
}

int Preset::QueryByPresetId(Preset** preset, unsigned int ptz_id, unsigned int preset_id) {
  return kByPresetId.One(preset, ptz_id, preset_id);
}

int Preset::QueryByToken(Preset** preset, unsigned int ptz_id, const std::string& token) {
  return kByToken.One(preset, ptz_id, token);
}

int Preset::QueryCountByPtz(unsigned int ptz_id) { return kByPtz.Count(ptz_id); }

unsigned int Preset::QueryMaxPresetIdByPtz(unsigned int ptz_id) {
  std::vector<Preset*> presets;
  QueryByPtz(&presets, ptz_id, 0, 65535);
  std::int32_t largest = -1;
  for (const Preset* preset : presets) {
    largest = std::max(largest, static_cast<std::int32_t>(preset->preset_id()));
  }
  VptzModel::CleanQuery(&presets);
  return static_cast<unsigned int>(largest);
}

int Preset::AddAll(Preset* presets, int count) { return VptzModel::AddAll(presets, count); }

int Preset::RemoveByPtz(unsigned int ptz_id) {
  return VptzModel::Erase<Preset>(odb::query<Preset>::ptz == ptz_id);
}
