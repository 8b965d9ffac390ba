#ifndef VPTZ_MODEL_MOVEMENT_PARAMETER_H
#define VPTZ_MODEL_MOVEMENT_PARAMETER_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/movement.h>
#include <vptz/model/odb.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// A number that describes an axis: its "position" or its "speed". One row of the table "movement_parameter";
// not safe for use from several threads at once.
//
// A reference is loaded from the database when it is asked for and belongs to
// this object; the getter gives null when there is none or it cannot be loaded.
// A setter's object stays the caller's and must live as long as this one uses it.
class VPTZ_API MovementParameter : public vptz::UpdatableRow<MovementParameter> {
 public:
  // A row that is not stored yet.
  MovementParameter() = default;
  MovementParameter(Movement* movement, const std::string& name, double value, double min, double max);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Whose it is.
  Movement* movement() const;
  void set_movement(Movement* value);

  // What it is.
  const std::string& name() const { return name_; }
  void set_name(const std::string& value) { name_ = value; }

  // Its value; NULL reads as NaN.
  double value() const { return value_; }
  void set_value(double value) { value_ = value; }

  // Its lower limit; NULL reads as NaN.
  double min() const { return min_; }
  void set_min(double value) { min_ = value; }

  // Its upper limit; NULL reads as NaN.
  double max() const { return max_; }
  void set_max(double value) { max_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

  // The parameter of an axis with that name.
  static int QueryByName(MovementParameter** parameter, unsigned int movement_id, const std::string& name);

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Movement> movement_;
  std::string name_;
  double value_ = 0.0;
  double min_ = 0.0;
  double max_ = 0.0;
  std::string reserved_;
};

PRAGMA_DB(object(MovementParameter) table("movement_parameter") pointer(std::shared_ptr))

#endif
