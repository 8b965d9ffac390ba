#ifndef VPTZ_MODEL_PTZ_H
#define VPTZ_MODEL_PTZ_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/device.h>
#include <vptz/model/movement.h>
#include <vptz/model/odb.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// A PTZ node of a device. One row of the table "ptz"; not safe for use from several
// threads at once.
//
// A reference is loaded from the database when it is asked for and belongs to
// this object; the getter gives null when there is none or it cannot be loaded.
// A setter's object stays the caller's and must live as long as this one uses it.
class VPTZ_API Ptz : public vptz::UpdatableRow<Ptz> {
 public:
  // A row that is not stored yet.
  Ptz() = default;
  Ptz(Device* device, Movement* pan, Movement* tilt, Movement* zoom, const std::string& node,
      const std::string& authorization, bool is_enable, int track_mode);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Whose it is.
  Device* device() const;
  void set_device(Device* value);

  // The profile's token at the device.
  const std::string& node() const { return node_; }
  void set_node(const std::string& value) { node_ = value; }

  // Whether it is in use.
  bool is_enable() const { return is_enable_; }
  void set_is_enable(bool value) { is_enable_ = value; }

  // Stored credentials; keep it out of logs.
  const std::string& authorization() const { return authorization_; }
  void set_authorization(const std::string& value) { authorization_ = value; }

  // Its pan axis, and the row id of that, 0 when there is none; the id loads
  // nothing.
  Movement* pan() const;
  std::uint32_t pan_id() const;
  void set_pan(Movement* value);

  // Its tilt axis, and the row id of that, 0 when there is none; the id loads
  // nothing.
  Movement* tilt() const;
  std::uint32_t tilt_id() const;
  void set_tilt(Movement* value);

  // Its zoom axis, and the row id of that, 0 when there is none; the id loads
  // nothing.
  Movement* zoom() const;
  std::uint32_t zoom_id() const;
  void set_zoom(Movement* value);

  // Tracking mode; its numbers are the service's.
  int track_mode() const { return track_mode_; }
  void set_track_mode(int value) { track_mode_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

  // The PTZ nodes of a device; the last two arguments are accepted and ignored.
  static int QueryByDevice(std::vector<Ptz*>* nodes, unsigned int device_id, unsigned int first,
                           unsigned int count);

  // The PTZ node of a device with that token.
  static int QueryByNode(Ptz** ptz, unsigned int device_id, const std::string& node);

  // Number of PTZ nodes of a device.
  static int QueryCountByDevice(unsigned int device_id);

  // Deletes every PTZ node of a device. 0, or -1 when there was none.
  static int RemoveByDevice(unsigned int device_id);

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Device> device_;
  std::string node_;
  bool is_enable_ = false;
  std::string authorization_;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Movement> pan_;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Movement> tilt_;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Movement> zoom_;
  int track_mode_ = 0;
  std::string reserved_;
};

PRAGMA_DB(object(Ptz) table("ptz") pointer(std::shared_ptr))

#endif
