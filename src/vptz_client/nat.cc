#include <vptz/method_names.h>
#include "log.h"
#include "time_budget.h"
#include "vptz_client/exchange.h"

namespace method = vptz::method;
using tutorial::NATCommand;
using tutorial::VptzResponse;
using vptz::LogLevel;
using vptz::TimeBudget;
using vptz::log_source::kClient;

namespace {

// `fill` gets the tutorial::NATCommand that holds device and type already.
template <class Fill, class Read>
int ExchangeNAT(VptzClient& client, const char* method, unsigned int device_id, NATType type, int timeout,
                Fill&& fill, Read&& read) {
  return vptz::Exchange(
      client, method, timeout,
      [&](tutorial::VptzCommand& command) {
        NATCommand& nat = *command.mutable_nat_command();
        nat.set_device_id(device_id);
        nat.set_nat_type(type);
        fill(nat);
      },
      read);
}

void AddMapping(const VptzNATData& mapping, NATCommand& nat) {
  tutorial::NATParams& params = *nat.add_params();
  params.set_text1(mapping.text1);
  params.set_text2(mapping.text2);
  params.set_text3(mapping.text3);
  params.set_text4(mapping.text4);
  params.set_text5(mapping.text5);
  params.set_text6(mapping.text6);
  params.set_number1(mapping.number1);
  params.set_number2(mapping.number2);
}

void AddMappings(const std::vector<VptzNATData>* mappings, NATCommand& nat) {
  if (mappings == nullptr) {
    VPTZ_LOG_AS("EnableNAT", LogLevel::kNotice, kClient, "EnableNAT parameter results is NULL");
    return;
  }
  for (const VptzNATData& mapping : *mappings) AddMapping(mapping, nat);
}

void RefreshMedia(VptzClient& client, CVptzDevice& device, unsigned int id, NATType type, TimeBudget& budget) {
  for (VptzMediaData& media : device.media_list) {
    media.nat_url = media.url;
    budget.Spend([&](int timeout) { return client.QueryNATuri(id, type, media.nat_url, timeout); });
  }
}

void RefreshServiceUri(VptzClient& client, CVptzDevice& device, TimeBudget& budget) {
  device.nat_service_uri = device.service_uri;
  budget.Spend(
      [&](int timeout) { return client.QueryNATuri(device.id, NAT_SERVICE, device.nat_service_uri, timeout); });
}

void RefreshHttpUri(VptzClient& client, CVptzDevice& device, TimeBudget& budget) {
  device.nat_http_uri = device.http_uri;
  budget.Spend(
      [&](int timeout) { return client.QueryNATuri(device.id, NAT_HTTP, device.nat_http_uri, timeout); });
}

void RefreshAll(VptzClient& client, CVptzDevice& device, TimeBudget& budget) {
  RefreshMedia(client, device, device.id, NAT_MEDIA, budget);
  RefreshServiceUri(client, device, budget);
  RefreshHttpUri(client, device, budget);
}

// What EnableNAT and DisableNAT do once the service has answered. Kept: also
// after a refusal, so that the registry shows what the service says now.
void Refresh(VptzClient& client, const char* operation, unsigned int device_id, NATType type, int timeout) {
  CVptzDevice* const device = client.QueryDeviceById(static_cast<int>(device_id));
  if (device == nullptr) return;
  TimeBudget budget(client.GetVptzTimeout(timeout));
  switch (type) {
    case NAT_ALL:
      return RefreshAll(client, *device, budget);
    case NAT_MEDIA:
      return RefreshMedia(client, *device, device_id, NAT_MEDIA, budget);
    case NAT_SERVICE:
      return RefreshServiceUri(client, *device, budget);
    case NAT_HTTP:
      return RefreshHttpUri(client, *device, budget);
  }
  // Kept: the spelling of the message.
  VPTZ_LOG_AS(operation, LogLevel::kNotice, kClient, "Unknow nat_type : %d", static_cast<int>(type));
}

template <class Fill>
int Change(VptzClient& client, const char* operation, const char* method, unsigned int device_id, NATType type,
           int timeout, Fill&& fill) {
  bool answered = false;
  const int status = ExchangeNAT(client, method, device_id, type, timeout, fill,
                                 [&](const VptzResponse&) { answered = true; });
  if (answered) {
    // The service has done it, whatever becomes of the registry.
    vptz::NoThrow(-1, [&] { return Refresh(client, operation, device_id, type, timeout), 0; });
  }
  return status;
}

void ClearOutsideAddresses(CVptzDevice& device) {
  for (VptzMediaData& media : device.media_list) media.nat_url.clear();
  device.nat_service_uri.clear();
  device.nat_http_uri.clear();
}

}  // namespace

int VptzClient::EnableNAT(unsigned int device_id, NATType type, std::vector<VptzNATData>* mappings,
                          int timeout) {
  return Change(*this, "EnableNAT", method::kEnableNAT, device_id, type, timeout,
                [&](NATCommand& nat) { AddMappings(mappings, nat); });
}

int VptzClient::DisableNAT(unsigned int device_id, NATType type, int timeout) {
  return Change(*this, "DisableNAT", method::kDisableNAT, device_id, type, timeout, [](NATCommand&) {});
}

// Kept: a refusal's text, mostly an empty one, replaces the address, too.
int VptzClient::QueryNATuri(unsigned int device_id, NATType type, std::string& uri, int timeout) {
  return ExchangeNAT(
      *this, method::kQueryNATuri, device_id, type, timeout, [&](NATCommand& nat) { nat.set_address(uri); },
      [&](const VptzResponse& response) { uri = response.nat_address(); });
}

int VptzClient::SetMediaInfoNAT(CVptzDevice* device, int device_id, NATType type, int timeout) {
  if (device == nullptr) return -1;
  return vptz::NoThrow(-1, [&] {
    TimeBudget budget(GetVptzTimeout(timeout));
    RefreshMedia(*this, *device, static_cast<unsigned int>(device_id), type, budget);
    return 0;
  });
}

int VptzClient::ClearNAT(int timeout) {
  return vptz::Exchange(
      *this, method::kClearNAT, timeout, [](tutorial::VptzCommand&) {},
      [&](const VptzResponse&) {
        for (CVptzDevice& device : devices_) ClearOutsideAddresses(device);
      });
}
