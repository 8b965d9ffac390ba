#ifndef VPTZ_MODEL_EVENT_H
#define VPTZ_MODEL_EVENT_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/odb.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// A kind of event. One row of the table "event"; not safe for use from several
// threads at once.
class VPTZ_API Event : public vptz::UpdatableRow<Event> {
 public:
  // A row that is not stored yet.
  Event() = default;
  Event(const std::string& name, const std::string& message);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Its name; unique.
  const std::string& name() const { return name_; }
  void set_name(const std::string& value) { name_ = value; }

  // Its text for people.
  const std::string& message() const { return message_; }
  void set_message(const std::string& value) { message_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

  // The event of that name.
  static int QueryByName(Event** event, const std::string& name);

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  PRAGMA_DB(unique)
  std::string name_;
  std::string message_;
  std::string reserved_;
};

PRAGMA_DB(object(Event) table("event") pointer(std::shared_ptr))

#endif
