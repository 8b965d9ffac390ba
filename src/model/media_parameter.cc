#include <vptz/model/media_parameter-odb.hxx>

#include "model/stored_rows.h"

namespace {

using Query = odb::query<MediaParameter>;

Query MediaAndNameAre(const unsigned int& media, const std::string& name) {
  return Query::media == Query::_ref(media) && Query::name == Query::_ref(name);
}
constexpr vptz::PreparedQuery kByName("MediaParameter::QueryByName", MediaAndNameAre);

}  // namespace

template class vptz::StoredRow<MediaParameter>;
template class vptz::UpdatableRow<MediaParameter>;

MediaParameter::MediaParameter(Media* media, const std::string& name, double value, double min, double max)
    : media_(vptz::Borrow(media)), name_(name), value_(value), min_(min), max_(max) {}

Media* MediaParameter::media() const { return VptzModel::LoadLazyPtr(media_); }

void MediaParameter::set_media(Media* value) { media_ = vptz::Borrow(value); }

int MediaParameter::QueryByName(MediaParameter** parameter, unsigned int media_id, const std::string& name) {
  return kByName.One(parameter, media_id, name);
}
