#include <vptz/model/device_type-odb.hxx>

#include "model/stored_rows.h"

namespace {

using Query = odb::query<DeviceType>;

Query WithNameByMethod(const std::string& name) {
  return (Query::name == Query::_ref(name)) + "ORDER BY" + Query::method;
}
constexpr vptz::PreparedQuery kByName("DeviceType::QueryByName", WithNameByMethod);

}  // namespace

template class vptz::StoredRow<DeviceType>;
template class vptz::UpdatableRow<DeviceType>;

DeviceType::DeviceType(const std::string& name) : name_(name) {}

int DeviceType::QueryByName(DeviceType** type, const std::string& name) { return kByName.One(type, name); }
