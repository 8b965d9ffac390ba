#include <vptz/model/ptz-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<Ptz>;
template class vptz::UpdatableRow<Ptz>;

namespace {

using Query = odb::query<Ptz>;

Query DeviceIs(const unsigned int& device) { return Query::device == Query::_ref(device); }
constexpr vptz::PreparedQuery kByDevice("Ptz::QueryByDevice", DeviceIs);

Query DeviceAndNodeAre(const unsigned int& device, const std::string& node) {
  return Query::device == Query::_ref(device) && Query::node == Query::_ref(node);
}
constexpr vptz::PreparedQuery kByNode("Ptz::QueryByNode", DeviceAndNodeAre);

std::uint32_t IdOf(const odb::lazy_shared_ptr<Movement>& movement) {
  return movement ? movement.object_id<Movement>() : 0;
}

}  // namespace

Ptz::Ptz(Device* device, Movement* pan, Movement* tilt, Movement* zoom, const std::string& node,
         const std::string& authorization, bool is_enable, int track_mode)
    : device_(vptz::Borrow(device)),
      node_(node),
      is_enable_(is_enable),
      authorization_(authorization),
      pan_(vptz::Borrow(pan)),
      tilt_(vptz::Borrow(tilt)),
      zoom_(vptz::Borrow(zoom)),
      track_mode_(track_mode) {}

Device* Ptz::device() const { return VptzModel::LoadLazyPtr(device_); }

void Ptz::set_device(Device* value) { device_ = vptz::Borrow(value); }

Movement* Ptz::pan() const { return VptzModel::LoadLazyPtr(pan_); }

std::uint32_t Ptz::pan_id() const { return IdOf(pan_); }

void Ptz::set_pan(Movement* value) { pan_ = vptz::Borrow(value); }

Movement* Ptz::tilt() const { return VptzModel::LoadLazyPtr(tilt_); }

std::uint32_t Ptz::tilt_id() const { return IdOf(tilt_); }

void Ptz::set_tilt(Movement* value) { tilt_ = vptz::Borrow(value); }

Movement* Ptz::zoom() const { return VptzModel::LoadLazyPtr(zoom_); }

std::uint32_t Ptz::zoom_id() const { return IdOf(zoom_); }

void Ptz::set_zoom(Movement* value) { zoom_ = vptz::Borrow(value); }

int Ptz::QueryByDevice(std::vector<Ptz*>* nodes, unsigned int device_id, unsigned int, unsigned int) {
  return kByDevice.All(nodes, device_id);
}

int Ptz::QueryByNode(Ptz** ptz, unsigned int device_id, const std::string& node) {
  return kByNode.One(ptz, device_id, node);
}

int Ptz::QueryCountByDevice(unsigned int device_id) { return kByDevice.Count(device_id); }

int Ptz::RemoveByDevice(unsigned int device_id) {
  return VptzModel::Erase<Ptz>(odb::query<Ptz>::device == device_id);
}
