#include "store/kept.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include <vptz/model/setting.h>
#include <nlohmann/json.hpp>

#include "store/row_access.h"

namespace vptzd {
namespace {

using Json = nlohmann::json;

std::unique_ptr<Setting> Stored(const std::string& name) {
  return FoundRow<Setting>([&](Setting** row) { return Setting::Query(name, row); });
}

// Empty when there is none.
std::string TextOf(const std::string& name) {
  const auto row = Stored(name);
  return row == nullptr ? "" : row->value();
}

// An empty text is not written for the first time: most cameras have it.
void Store(const std::string& name, const std::string& text) {
  if (const auto row = Stored(name)) {
    if (row->value() == text) return;
    row->set_value(text);
    if (row->Save() < 0) throw StorageError("the database does not change its settings");
    return;
  }
  Setting row(name, text);
  if (!text.empty() && VptzModel::Add(&row) < 0) throw StorageError("the database takes no setting");
}

std::string HomeOf(std::uint32_t ptz) { return "vptzd/home/" + std::to_string(ptz); }

constexpr char kPorts[] = "vptzd/usb_tty_devices";

std::string RemovalOf(const std::string& service_uri) { return "vptzd/removed/" + service_uri; }

std::string FollowerOf(std::uint32_t device) { return "vptzd/follower/" + std::to_string(device); }

}  // namespace

bool WasRemoved(const std::string& service_uri) { return !TextOf(RemovalOf(service_uri)).empty(); }

void StoreRemoval(const std::string& service_uri, bool removed) {
  Store(RemovalOf(service_uri), removed ? "1" : "");
}

std::optional<PerAxis<double>> StoredHome(std::uint32_t ptz) {
  PerAxis<double> home{};
  const std::string text = TextOf(HomeOf(ptz));
  const int read = std::sscanf(text.c_str(), "%lf %lf %lf", &home[kPan], &home[kTilt], &home[kZoom]);
  return read == 3 ? std::optional<PerAxis<double>>(home) : std::nullopt;
}

void StoreHome(std::uint32_t ptz, const PerAxis<double>& home) {
  char text[128];
  std::snprintf(text, sizeof text, "%.17g %.17g %.17g", home[kPan], home[kTilt], home[kZoom]);
  Store(HomeOf(ptz), text);
}

void ForgetHome(std::uint32_t ptz) { Store(HomeOf(ptz), ""); }

std::vector<std::string> StoredPorts() {
  const Json list = Json::parse(TextOf(kPorts), nullptr, false);
  std::vector<std::string> ports;
  if (!list.is_array()) return ports;
  for (const Json& port : list) {
    if (port.is_string()) ports.push_back(port.get<std::string>());
  }
  return ports;
}

void StorePorts(const std::vector<std::string>& ports) {
  Store(kPorts, ports.empty() ? "" : Json(ports).dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::uint32_t StoredFollower(std::uint32_t device) {
  return static_cast<std::uint32_t>(std::strtoul(TextOf(FollowerOf(device)).c_str(), nullptr, 10));
}

void StoreFollower(std::uint32_t device, std::uint32_t follower) {
  Store(FollowerOf(device), follower == 0 ? "" : std::to_string(follower));
}

}  // namespace vptzd
