#include <vptz/model/media-odb.hxx>

#include "model/stored_rows.h"

namespace {

using Query = odb::query<Media>;

Query DeviceIs(const unsigned int& device) { return Query::device == Query::_ref(device); }
constexpr vptz::PreparedQuery kByDevice("Media::QueryByDevice", DeviceIs);

Query DeviceAndNodeAre(const unsigned int& device, const std::string& node) {
  return Query::device == Query::_ref(device) && Query::node == Query::_ref(node);
}
constexpr vptz::PreparedQuery kByNode("Media::QueryByNode", DeviceAndNodeAre);

}  // namespace

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
  return kByDevice.All(media, device_id);
}

int Media::QueryByNode(Media** media, unsigned int device_id, const std::string& node) {
  return kByNode.One(media, device_id, node);
}

int Media::QueryCountByDevice(unsigned int device_id) { return kByDevice.Count(device_id); }
