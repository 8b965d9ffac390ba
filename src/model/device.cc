#include <vptz/model/device-odb.hxx>

#include "log.h"
#include "model/stored_rows.h"

using vptz::LogLevel;
using vptz::log_source::kDeviceEntity;

namespace {

struct Origin {
  std::string scheme;
  std::string host;
};

std::string TextOrEmpty(const char* text) { return text == nullptr ? "" : text; }

// "http://host:80/path" gives "http" and "host"; false for what is no web
// address.
bool SplitOrigin(const std::string& uri, Origin* origin) {
  const std::size_t scheme_end = uri.find("://");
  if (scheme_end == std::string::npos) {
    return false;
  }
  origin->scheme = uri.substr(0, scheme_end);
  const std::string authority = uri.substr(scheme_end + 3, uri.find('/', scheme_end + 3) - (scheme_end + 3));
  origin->host = authority.substr(0, authority.find(':'));
  return (origin->scheme == "http" || origin->scheme == "https") && !origin->host.empty();
}

// Cameras whose web page is not the address's root.
struct KnownHomePage {
  const char* model_name;
  const char* path;
};
constexpr KnownHomePage kHomePages[] = {{"ConfIPCamera", "/pages/login.asp"}};

std::string HomePage(const std::string& model_name) {
  for (const KnownHomePage& known : kHomePages) {
    if (model_name == known.model_name) {
      return known.path;
    }
  }
  VPTZ_LOG_AS("update_http_uri", LogLevel::kNotice, kDeviceEntity, "Use default home page");
  return "";
}

}  // namespace

template class vptz::StoredRow<Device>;
template class vptz::UpdatableRow<Device>;

Device::Device(const char* service_uri, const char* address, DeviceType* device_type, Protocol* protocol,
               const char* http_uri, bool authorized, const char* mac, const char* uuid, bool is_alive,
               bool deletable, bool is_setting_applied, bool tracking)
    : device_type_(vptz::Borrow(device_type)),
      service_uri_(TextOrEmpty(service_uri)),
      address_(TextOrEmpty(address)),
      http_uri_(TextOrEmpty(http_uri)),
      mac_(TextOrEmpty(mac)),
      uuid_(TextOrEmpty(uuid)),
      authorized_(authorized),
      is_alive_(is_alive),
      protocol_(vptz::Borrow(protocol)),
      deletable_(deletable),
      is_setting_applied_(is_setting_applied),
      tracking_(tracking) {}

DeviceType* Device::device_type() const { return VptzModel::LoadLazyPtr(device_type_); }

void Device::set_device_type(DeviceType* value) { device_type_ = vptz::Borrow(value); }

Protocol* Device::protocol() const { return VptzModel::LoadLazyPtr(protocol_); }

void Device::set_protocol(Protocol* value) { protocol_ = vptz::Borrow(value); }

int Device::QueryCount() { return vptz::Count<Device>(odb::query<Device>()); }

// NOLINTNEXTLINE(performance-unnecessary-value-param): a text by value is part of the interface
int Device::QueryByServiceUri(Device** device, std::string service_uri) {
  return VptzModel::QueryObject<Device>(odb::query<Device>::service_uri == service_uri, device);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): a text by value is part of the interface
int Device::QueryByMac(std::vector<Device*>* devices, std::string mac, unsigned int, unsigned int) {
  return VptzModel::QueryObjects<Device>(odb::query<Device>::mac == mac, devices);
}

int Device::QueryByDeviceType(std::vector<Device*>* devices, unsigned int type_id, unsigned int, unsigned int) {
  return VptzModel::QueryObjects<Device>(odb::query<Device>::device_type == type_id, devices);
}

int Device::QueryByProtocol(std::vector<Device*>* devices, unsigned int protocol_id, unsigned int,
                            unsigned int) {
  return VptzModel::QueryObjects<Device>(odb::query<Device>::protocol == protocol_id, devices);
}

int Device::QueryByAuthorized(std::vector<Device*>* devices, bool authorized, unsigned int, unsigned int) {
  return VptzModel::QueryObjects<Device>(odb::query<Device>::authorized == authorized, devices);
}

void Device::update_http_uri() {
  const Protocol* control = protocol();
  const std::string name = control == nullptr ? "" : control->name();
  Origin origin;
  if ((name != "ONVIF" && name != "NDI" && model_name_ != "QX310") || !SplitOrigin(service_uri_, &origin)) {
    return;
  }
  http_uri_ = origin.scheme + "://" + origin.host + HomePage(model_name_);
  VPTZ_LOG(LogLevel::kNotice, kDeviceEntity, "home page %s", http_uri_.c_str());
}
