#include <vptz/model/media_parameter-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<MediaParameter>;
template class vptz::UpdatableRow<MediaParameter>;

MediaParameter::MediaParameter(Media* media, const std::string& name, double value, double min, double max)
    : media_(vptz::Borrow(media)), name_(name), value_(value), min_(min), max_(max) {}

Media* MediaParameter::media() const { return VptzModel::LoadLazyPtr(media_); }

void MediaParameter::set_media(Media* value) { media_ = vptz::Borrow(value); }

int MediaParameter::QueryByName(MediaParameter** parameter, unsigned int media_id, const std::string& name) {
  using Query = odb::query<MediaParameter>;
  return VptzModel::QueryObject<MediaParameter>(Query::media == media_id && Query::name == name, parameter);
}
