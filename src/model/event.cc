#include <vptz/model/event-odb.hxx>

#include "model/stored_rows.h"

namespace {

using Query = odb::query<Event>;

Query NameIs(const std::string& name) { return Query::name == Query::_ref(name); }
constexpr vptz::PreparedQuery kByName("Event::QueryByName", NameIs);

}  // namespace

template class vptz::StoredRow<Event>;
template class vptz::UpdatableRow<Event>;

Event::Event(const std::string& name, const std::string& message) : name_(name), message_(message) {}

int Event::QueryByName(Event** event, const std::string& name) { return kByName.One(event, name); }
