#include <vptz/model/media-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<Media>;
template class vptz::UpdatableRow<Media>;

Media::Media(Device* device, const std::string& node, const std::string& url, const std::string& authorization,
             bool is_enable)
    : device_(vptz::Borrow(device)),
      node_(node),
      url_(url),
      authorization_(authorization),
      is_enable_(is_enable) {}

Device* Media::device() const { return VptzModel::LoadLazyPtr(device_); }

void Media::set_device(Device* value) { device_ = vptz::Borrow(value); }

int Media::QueryByDevice(std::vector<Media*>* media, unsigned int device_id, unsigned int, unsigned int) {
  return VptzModel::QueryObjects<Media>(odb::query<Media>::device == device_id, media);
}

int Media::QueryByNode(Media** media, unsigned int device_id, const std::string& node) {
  using Query = odb::query<Media>;
  return VptzModel::QueryObject<Media>(Query::device == device_id && Query::node == node, media);
}

int Media::QueryCountByDevice(unsigned int device_id) {
  return vptz::Count<Media>(odb::query<Media>::device == device_id);
}
