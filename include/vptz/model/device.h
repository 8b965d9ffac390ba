#ifndef VPTZ_MODEL_DEVICE_H
#define VPTZ_MODEL_DEVICE_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/device_type.h>
#include <vptz/model/odb.h>
#include <vptz/model/protocol.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// A known device. One row of the table "device"; not safe for use from several
// threads at once.
//
// A reference is loaded from the database when it is asked for and belongs to
// this object; the getter gives null when there is none or it cannot be loaded.
// A setter's object stays the caller's and must live as long as this one uses it.
class VPTZ_API Device : public vptz::UpdatableRow<Device> {
 public:
  // A row that is not stored yet. Null texts count as empty.
  Device() = default;
  Device(const char* service_uri, const char* address, DeviceType* device_type, Protocol* protocol,
         const char* http_uri, bool authorized, const char* mac, const char* uuid, bool is_alive,
         bool deletable, bool is_setting_applied, bool tracking);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // Its kind.
  DeviceType* device_type() const;
  void set_device_type(DeviceType* value);

  // Address of its service.
  const std::string& service_uri() const { return service_uri_; }
  void set_service_uri(const std::string& value) { service_uri_ = value; }

  // Network or port address.
  const std::string& address() const { return address_; }
  void set_address(const std::string& value) { address_ = value; }

  // Address of its web page.
  const std::string& http_uri() const { return http_uri_; }
  void set_http_uri(const std::string& value) { http_uri_ = value; }

  // Hardware address; of a serial device its port.
  const std::string& mac() const { return mac_; }
  void set_mac(const std::string& value) { mac_ = value; }

  // Its own unique id.
  const std::string& uuid() const { return uuid_; }
  void set_uuid(const std::string& value) { uuid_ = value; }

  // Stored credentials, a JSON text; keep it out of logs.
  const std::string& authorization() const { return authorization_; }
  void set_authorization(const std::string& value) { authorization_ = value; }

  // Whether the service is logged in to it.
  bool authorized() const { return authorized_; }
  void set_authorized(bool value) { authorized_ = value; }

  // Whether it answers.
  bool is_alive() const { return is_alive_; }
  void set_is_alive(bool value) { is_alive_ = value; }

  // Its control protocol.
  Protocol* protocol() const;
  void set_protocol(Protocol* value);

  // Its name in the network.
  const std::string& host_name() const { return host_name_; }
  void set_host_name(const std::string& value) { host_name_ = value; }

  // Who makes it (kept: the column is spelled so).
  const std::string& manufacture() const { return manufacture_; }
  void set_manufacture(const std::string& value) { manufacture_ = value; }

  // What it is.
  const std::string& model_name() const { return model_name_; }
  void set_model_name(const std::string& value) { model_name_ = value; }

  // What it runs.
  const std::string& firmware_version() const { return firmware_version_; }
  void set_firmware_version(const std::string& value) { firmware_version_ = value; }

  // Whether it may be removed.
  bool deletable() const { return deletable_; }
  void set_deletable(bool value) { deletable_ = value; }

  // Whether its settings have been applied.
  bool is_setting_applied() const { return is_setting_applied_; }
  void set_is_setting_applied(bool value) { is_setting_applied_ = value; }

  // Whether it tracks.
  bool tracking() const { return tracking_; }
  void set_tracking(bool value) { tracking_ = value; }

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

  // Number of devices.
  static int QueryCount();

  // The device with that service address.
  static int QueryByServiceUri(Device** device, std::string service_uri);

  // Lists; the last two arguments are accepted and ignored.
  static int QueryByMac(std::vector<Device*>* devices, std::string mac, unsigned int first, unsigned int count);
  static int QueryByDeviceType(std::vector<Device*>* devices, unsigned int type_id, unsigned int first,
                               unsigned int count);
  static int QueryByProtocol(std::vector<Device*>* devices, unsigned int protocol_id, unsigned int first,
                             unsigned int count);
  static int QueryByAuthorized(std::vector<Device*>* devices, bool authorized, unsigned int first,
                               unsigned int count);

  // Derives http_uri from service_uri for the protocols "ONVIF" and "NDI" and
  // the model "QX310", when service_uri is an http or https address; leaves it
  // alone otherwise. Loads the protocol if need be. Stores nothing.
  void update_http_uri();

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<DeviceType> device_type_;
  std::string service_uri_;
  std::string address_;
  std::string http_uri_;
  std::string mac_;
  std::string uuid_;
  std::string authorization_;
  bool authorized_ = false;
  bool is_alive_ = false;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Protocol> protocol_;
  std::string host_name_;
  std::string manufacture_;
  std::string model_name_;
  std::string firmware_version_;
  bool deletable_ = false;
  bool is_setting_applied_ = false;
  bool tracking_ = false;
  std::string reserved_;
};

PRAGMA_DB(object(Device) table("device") pointer(std::shared_ptr))

#endif
