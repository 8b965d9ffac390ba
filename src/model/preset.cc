#include <vptz/model/preset-odb.hxx>

#include <algorithm>

#include "model/stored_rows.h"

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
  return VptzModel::QueryObjects<Preset>(odb::query<Preset>::ptz == ptz_id, presets);
}

int Preset::QueryByPresetId(Preset** preset, unsigned int ptz_id, unsigned int preset_id) {
  using Query = odb::query<Preset>;
  return VptzModel::QueryObject<Preset>(Query::ptz == ptz_id && Query::preset_id == preset_id, preset);
}

int Preset::QueryByToken(Preset** preset, unsigned int ptz_id, const std::string& token) {
  using Query = odb::query<Preset>;
  return VptzModel::QueryObject<Preset>(Query::ptz == ptz_id && Query::token == token, preset);
}

int Preset::QueryCountByPtz(unsigned int ptz_id) {
  return vptz::Count<Preset>(odb::query<Preset>::ptz == ptz_id);
}

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
