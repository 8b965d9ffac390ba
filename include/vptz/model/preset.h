#ifndef VPTZ_MODEL_PRESET_H
#define VPTZ_MODEL_PRESET_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/odb.h>
#include <vptz/model/ptz.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// A stored position of a PTZ node. One row of the table "preset"; not safe for use from several
// threads at once.
//
// A reference is loaded from the database when it is asked for and belongs to
// this object; the getter gives null when there is none or it cannot be loaded.
// A setter's object stays the caller's and must live as long as this one uses it.
class VPTZ_API Preset : public vptz::UpdatableRow<Preset> {
 public:
  // A row that is not stored yet.
  Preset() = default;
  Preset(Ptz* ptz, unsigned int preset_id, const std::string& token, const std::string& name, double pan,
         double tilt, double zoom);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Whose it is.
  Ptz* ptz() const;
  void set_ptz(Ptz* value);

  // Its number at the camera.
  unsigned int preset_id() const { return preset_id_; }
  void set_preset_id(unsigned int value) { preset_id_ = value; }

  // Its name at the camera.
  const std::string& token() const { return token_; }
  void set_token(const std::string& value) { token_ = value; }

  // Its name for people.
  const std::string& name() const { return name_; }
  void set_name(const std::string& value) { name_ = value; }

  // Stored position, degrees; NULL reads as NaN.
  double pan() const { return pan_; }
  void set_pan(double value) { pan_ = value; }

  // Stored position, degrees; NULL reads as NaN.
  double tilt() const { return tilt_; }
  void set_tilt(double value) { tilt_ = value; }

  // Stored position, magnification factor; NULL reads as NaN.
  double zoom() const { return zoom_; }
  void set_zoom(double value) { zoom_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

  // The presets of a PTZ node; the last two arguments are accepted and ignored.
  static int QueryByPtz(std::vector<Preset*>* presets, unsigned int ptz_id, unsigned int first,
                        unsigned int count);

  // The preset of a PTZ node with that number, and with that token.
  static int QueryByPresetId(Preset** preset, unsigned int ptz_id, unsigned int preset_id);
  static int QueryByToken(Preset** preset, unsigned int ptz_id, const std::string& token);

  // Number of presets of a PTZ node.
  static int QueryCountByPtz(unsigned int ptz_id);

  // The largest preset_id of a node, compared as signed numbers; -1, as an
  // unsigned number, when the node has no presets.
  static unsigned int QueryMaxPresetIdByPtz(unsigned int ptz_id);

  // Inserts `count` presets that lie one behind the other in one transaction:
  // all or none. 0, or -1.
  static int AddAll(Preset* presets, int count);

  // Deletes every preset of a PTZ node. 0, or -1 when there was none.
  static int RemoveByPtz(unsigned int ptz_id);

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Ptz> ptz_;
  unsigned int preset_id_ = 0;
  std::string token_;
  std::string name_;
  double pan_ = 0.0;
  double tilt_ = 0.0;
  double zoom_ = 0.0;
  std::string reserved_;
};

PRAGMA_DB(object(Preset) table("preset") pointer(std::shared_ptr))

#endif
