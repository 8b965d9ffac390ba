#include <vptz/model/device-odb.hxx>

#include "log.h"
#include "model/stored_rows.h"

using vptz::LogLevel;
using vptz::log_source::kDeviceEntity;

namespace {

using Query = odb::query<Device>;

Query ServiceUriIs(const std::string& service_uri) { return Query::service_uri == Query::_ref(service_uri); }
constexpr vptz::PreparedQuery kByServiceUri("Device::QueryByServiceUri", ServiceUriIs);

Query MacIs(const std::string& mac) { return Query::mac == Query::_ref(mac); }
constexpr vptz::PreparedQuery kByMac("Device::QueryByMac", MacIs);

Query DeviceTypeIs(const unsigned int& device_type) { return Query::device_type == Query::_ref(device_type); }
constexpr vptz::PreparedQuery kByDeviceType("Device::QueryByDeviceType", DeviceTypeIs);

Query ProtocolIs(const unsigned int& protocol) { return Query::protocol == Query::_ref(protocol); }
constexpr vptz::PreparedQuery kByProtocol("Device::QueryByProtocol", ProtocolIs);

Query AuthorizedIs(const bool& authorized) { return Query::authorized == Query::_ref(authorized); }
constexpr vptz::PreparedQuery kByAuthorized("Device::QueryByAuthorized", AuthorizedIs);

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

int Device::QueryCount() { return vptz::EveryRow<Device>().Count(); }

// NOLINTNEXTLINE(performance-unnecessary-value-param): a text by value is part of the interface
int Device::QueryByServiceUri(Device** device, std::string service_uri) {
  return kByServiceUri.One(device, service_uri);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): a text by value is part of the interface
int Device::QueryByMac(std::vector<Device*>* devices, std::string mac, unsigned int, unsigned int) {
  return kByMac.All(devices, mac);
}

int Device::QueryByDeviceType(std::vector<Device*>* devices, unsigned int type_id, unsigned int, unsigned int) {
  return kByDeviceType.All(devices, type_id);
}

int Device::QueryByProtocol(std::vector<Device*>* devices, unsigned int protocol_id, unsigned int,
                            unsigned int) {
  return kByProtocol.All(devices, protocol_id);
}

int Device::QueryByAuthorized(std::vector<Device*>* devices, bool authorized, unsigned int, unsigned int) {
  return kByAuthorized.All(devices, authorized);
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
