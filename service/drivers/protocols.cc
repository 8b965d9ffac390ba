#include "drivers/protocols.h"

#include <algorithm>

namespace vptzd {
namespace {

constexpr ControlProtocol kUnknown = {"", false, false, 0, "http", 0, ""};

constexpr std::array<ControlProtocol, 6> kProtocols = {{
    // name, serial, searched unnamed, preset shift, scheme, port, path
    {"ONVIF", false, true, 0, "http", 0, "/onvif/device_service"},
    {"RS232", true, false, 0, "rs232", 0, ""},
    {"QX310", false, true, 0, "http", 0, "/qx310"},
    {"NDI", false, true, 0, "http", 0, "/ndi"},
    {"VISCA_OVER_IP", false, false, 0, "visca", 52381, ""},
    {"NDIHX", false, false, 10, "http", 0, "/ndihx"},
}};

}  // namespace

std::string ControlProtocol::ServiceUri(const std::string& address) const {
  return std::string(scheme) + "://" + address + (port == 0 ? "" : ":" + std::to_string(port)) + path;
}

const std::array<ControlProtocol, 6>& Protocols() { return kProtocols; }

const ControlProtocol& ProtocolNamed(std::string_view name) {
  const auto found = std::find_if(kProtocols.begin(), kProtocols.end(),
                                  [&](const ControlProtocol& protocol) { return protocol.name == name; });
  return found == kProtocols.end() ? kUnknown : *found;
}

bool HasProtocol(std::string_view name) { return &ProtocolNamed(name) != &kUnknown; }

std::string ProtocolNames() {
  std::string names = kProtocols.front().name;
  for (std::size_t i = 1; i < kProtocols.size(); ++i) {
    names += std::string(i + 1 == kProtocols.size() ? " or " : ", ") + kProtocols[i].name;
  }
  return names;
}

}  // namespace vptzd
