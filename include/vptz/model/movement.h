#ifndef VPTZ_MODEL_MOVEMENT_H
#define VPTZ_MODEL_MOVEMENT_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/odb.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// What one axis of a PTZ node can do. One row of the table "movement"; not safe for use from several
// threads at once.
class VPTZ_API Movement : public vptz::UpdatableRow<Movement> {
 public:
  // A row that is not stored yet.
  Movement(bool have_absolute_move, bool have_continues_move, bool have_relative_move);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Whether it moves to positions.
  bool have_absolute_move() const { return have_absolute_move_; }
  void set_have_absolute_move(bool value) { have_absolute_move_ = value; }

  // Whether it moves at velocities (kept: the column is spelled so).
  bool have_continues_move() const { return have_continues_move_; }
  void set_have_continues_move(bool value) { have_continues_move_ = value; }

  // Whether it moves by distances.
  bool have_relative_move() const { return have_relative_move_; }
  void set_have_relative_move(bool value) { have_relative_move_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

 private:
  friend class odb::access;
  Movement() = default;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  bool have_absolute_move_ = false;
  bool have_continues_move_ = false;
  bool have_relative_move_ = false;
  std::string reserved_;
};

PRAGMA_DB(object(Movement) table("movement") pointer(std::shared_ptr))

#endif
