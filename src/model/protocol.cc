#include <vptz/model/protocol-odb.hxx>

#include "model/stored_rows.h"

namespace {

using Query = odb::query<Protocol>;

Query NameIs(const std::string& name) { return Query::name == Query::_ref(name); }
constexpr vptz::PreparedQuery kByName("Protocol::QueryByName", NameIs);

}  // namespace

template class vptz::StoredRow<Protocol>;

Protocol::Protocol(const std::string& name) : name_(name) {}

int Protocol::QueryByName(Protocol** protocol, const std::string& name) { return kByName.One(protocol, name); }
