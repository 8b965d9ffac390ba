#ifndef VPTZ_MODEL_MEDIA_H
#define VPTZ_MODEL_MEDIA_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/device.h>
#include <vptz/model/odb.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// A media source of a device. One row of the table "media"; not safe for use from several
// threads at once.
//
// A reference is loaded from the database when it is asked for and belongs to
// this object; the getter gives null when there is none or it cannot be loaded.
// A setter's object stays the caller's and must live as long as this one uses it.
class VPTZ_API Media : public vptz::UpdatableRow<Media> {
 public:
  // A row that is not stored yet.
  Media() = default;
  Media(Device* device, const std::string& node, const std::string& url, const std::string& authorization,
        bool is_enable);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Whose it is.
  Device* device() const;
  void set_device(Device* value);

  // The profile's token at the device.
  const std::string& node() const { return node_; }
  void set_node(const std::string& value) { node_ = value; }

  // Address of the stream.
  const std::string& url() const { return url_; }
  void set_url(const std::string& value) { url_ = value; }

  // Stored credentials; keep it out of logs.
  const std::string& authorization() const { return authorization_; }
  void set_authorization(const std::string& value) { authorization_ = value; }

  // Whether it is in use.
  bool is_enable() const { return is_enable_; }
  void set_is_enable(bool value) { is_enable_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

  // The media sources of a device; the last two arguments are accepted and ignored.
  static int QueryByDevice(std::vector<Media*>* media, unsigned int device_id, unsigned int first,
                           unsigned int count);

  // The media source of a device with that token.
  static int QueryByNode(Media** media, unsigned int device_id, const std::string& node);

  // Number of media sources of a device.
  static int QueryCountByDevice(unsigned int device_id);

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Device> device_;
  std::string node_;
  std::string url_;
  std::string authorization_;
  bool is_enable_ = false;
  std::string reserved_;
};

PRAGMA_DB(object(Media) table("media") pointer(std::shared_ptr))

#endif
