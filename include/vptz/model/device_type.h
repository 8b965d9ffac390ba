#ifndef VPTZ_MODEL_DEVICE_TYPE_H
#define VPTZ_MODEL_DEVICE_TYPE_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/odb.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// A kind of device. One row of the table "device_type"; not safe for use from several
// threads at once.
class VPTZ_API DeviceType : public vptz::UpdatableRow<DeviceType> {
 public:
  // A row that is not stored yet.
  DeviceType() = default;
  explicit DeviceType(const std::string& name);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Its name.
  const std::string& name() const { return name_; }
  void set_name(const std::string& value) { name_ = value; }

  // How it is driven; its numbers are the service's.
  int method() const { return method_; }
  void set_method(int value) { method_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

  // The type of that name; of several the one with the lowest method.
  static int QueryByName(DeviceType** type, const std::string& name);

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  std::string name_;
  int method_ = 0;
  std::string reserved_;
};

PRAGMA_DB(object(DeviceType) table("device_type") pointer(std::shared_ptr))

#endif
