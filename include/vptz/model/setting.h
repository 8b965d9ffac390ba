#ifndef VPTZ_MODEL_SETTING_H
#define VPTZ_MODEL_SETTING_H

#include <string>

#include <vptz/model/odb.h>

#include <vptz/export.h>
#include <vptz/model/version.h>
#ifndef ODB_COMPILER  // which refuses the headers of the back end
#include <vptz/model/vptzmodel.h>
#endif

// A named text. One row of the table "setting"; not safe for use from several
// threads at once. A new one is inserted with VptzModel::Add.
class VPTZ_API Setting {
 public:
  // A row that is not stored yet.
  Setting() = default;
  Setting(const std::string& name, const std::string& value);
  virtual ~Setting() = default;

  // Its name, the key.
  const std::string& name() const { return name_; }
  void set_name(const std::string& value) { name_ = value; }

  // Its text.
  const std::string& value() const { return value_; }
  void set_value(const std::string& value) { value_ = value; }

  // Loads the setting of that name into a new object of the caller's; an object
  // that *setting points at is deleted first. 0, or -1 and null.
  static int Query(const std::string& name, Setting** setting);

  // Copies the text of the setting of that name. 0, or -1, and `value` left
  // alone, when there is none.
  static int QueryValue(const std::string& name, std::string* value);

  // Converts it to a decimal number; what follows the digits is ignored. 0, or
  // -1, and `value` left alone, when there is none. Throws
  // std::invalid_argument when the text does not begin with a number and
  // std::out_of_range ("stoi") when it does not fit into 32 bits.
  static int QueryValue(const std::string& name, int* value);

  // Writes the text to the setting's row, which must exist. 0, or -1.
  virtual int Save();

 private:
  friend class odb::access;

  PRAGMA_DB(id)
  std::string name_;
  std::string value_;
};

PRAGMA_DB(object(Setting) table("setting") pointer(std::shared_ptr))

#ifndef ODB_COMPILER
// In the library, so that a new setting can be inserted without the generated
// header.
extern template VPTZ_API int VptzModel::Add(Setting* object);
#endif

#endif
