#include <vptz/model/device_type-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<DeviceType>;
template class vptz::UpdatableRow<DeviceType>;

DeviceType::DeviceType(const std::string& name) : name_(name) {}

int DeviceType::QueryByName(DeviceType** type, const std::string& name) {
  using Query = odb::query<DeviceType>;
  return VptzModel::QueryObject<DeviceType>((Query::name == name) + "ORDER BY" + Query::method, type);
}
