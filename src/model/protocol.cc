#include <vptz/model/protocol-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<Protocol>;

Protocol::Protocol(const std::string& name) : name_(name) {}

int Protocol::QueryByName(Protocol** protocol, const std::string& name) {
  return VptzModel::QueryObject<Protocol>(odb::query<Protocol>::name == name, protocol);
}
