#ifndef VPTZ_MODEL_PROTOCOL_H
#define VPTZ_MODEL_PROTOCOL_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/odb.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// A control protocol. One row of the table "protocol"; not safe for use from several
// threads at once.
class VPTZ_API Protocol : public vptz::StoredRow<Protocol> {
 public:
  // A row that is not stored yet.
  Protocol() = default;
  explicit Protocol(const std::string& name);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Its name; unique.
  const std::string& name() const { return name_; }
  void set_name(const std::string& value) { name_ = value; }

  // Its version.
  const std::string& version() const { return version_; }
  void set_version(const std::string& value) { version_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

  // The protocol of that name.
  static int QueryByName(Protocol** protocol, const std::string& name);

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  PRAGMA_DB(unique)
  std::string name_;
  std::string version_;
  std::string reserved_;
};

PRAGMA_DB(object(Protocol) table("protocol") pointer(std::shared_ptr))

#endif
