#include <vptz/model/movement_parameter-odb.hxx>

#include "model/stored_rows.h"

namespace {

using Query = odb::query<MovementParameter>;

Query MovementAndNameAre(const unsigned int& movement, const std::string& name) {
  return Query::movement == Query::_ref(movement) && Query::name == Query::_ref(name);
}
constexpr vptz::PreparedQuery kByName("MovementParameter::QueryByName", MovementAndNameAre);

}  // namespace

template class vptz::StoredRow<MovementParameter>;
template class vptz::UpdatableRow<MovementParameter>;

MovementParameter::MovementParameter(Movement* movement, const std::string& name, double value, double min,
                                     double max)
    : movement_(vptz::Borrow(movement)), name_(name), value_(value), min_(min), max_(max) {}

Movement* MovementParameter::movement() const { return VptzModel::LoadLazyPtr(movement_); }

void MovementParameter::set_movement(Movement* value) { movement_ = vptz::Borrow(value); }

int MovementParameter::QueryByName(MovementParameter** parameter, unsigned int movement_id,
                                   const std::string& name) {
  return kByName.One(parameter, movement_id, name);
}
