#include <vptz/model/movement_parameter-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<MovementParameter>;
template class vptz::UpdatableRow<MovementParameter>;

MovementParameter::MovementParameter(Movement* movement, const std::string& name, double value, double min,
                                     double max)
    : movement_(vptz::Borrow(movement)), name_(name), value_(value), min_(min), max_(max) {}

Movement* MovementParameter::movement() const { return VptzModel::LoadLazyPtr(movement_); }

void MovementParameter::set_movement(Movement* value) { movement_ = vptz::Borrow(value); }

int MovementParameter::QueryByName(MovementParameter** parameter, unsigned int movement_id,
                                   const std::string& name) {
  using Query = odb::query<MovementParameter>;
  return VptzModel::QueryObject<MovementParameter>(Query::movement == movement_id && Query::name == name,
                                                   parameter);
}
