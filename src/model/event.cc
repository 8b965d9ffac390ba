#include <vptz/model/event-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<Event>;
template class vptz::UpdatableRow<Event>;

Event::Event(const std::string& name, const std::string& message) : name_(name), message_(message) {}

int Event::QueryByName(Event** event, const std::string& name) {
  return VptzModel::QueryObject<Event>(odb::query<Event>::name == name, event);
}
