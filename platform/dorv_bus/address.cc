#include "address.h"

#include <sys/un.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace dorv {
namespace {

constexpr char kDefaultAddress[] = "unix:/run/dorv/bus.sock";
constexpr std::string_view kMqtt = "mqtt://";
constexpr std::string_view kUnix = "unix:";

std::string_view DefaultAddress() {
  const char* chosen = std::getenv("DORV_BUS_ADDRESS");
  return chosen != nullptr && *chosen != '\0' ? chosen : kDefaultAddress;
}

bool ParsePort(std::string_view text, int* port) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *port);
  return error == std::errc() && end == text.data() + text.size() && *port >= 1 && *port <= 65535;
}

std::optional<Address> ParseUnix(std::string_view path) {
  if (path.empty() || path[0] != '/' || path.size() >= sizeof(sockaddr_un::sun_path)) {
    return std::nullopt;
  }
  Address address;
  address.is_unix = true;
  address.host = path;
  return address;
}

bool IsHostCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-' ||
         c == '_' || c == ':' || c == '%';
}

std::optional<Address> ParseMqtt(std::string_view text) {
  Address address;
  std::string_view port;
  if (!text.empty() && text[0] == '[') {  // an IPv6 number
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) {
      return std::nullopt;
    }
    address.host = text.substr(1, end - 1);
    port = text.substr(end + 1);
  } else {
    const std::size_t colon = text.find(':');
    address.host = text.substr(0, colon);
    port = colon == std::string_view::npos ? std::string_view() : text.substr(colon);
  }
  for (const char c : address.host) {
    if (!IsHostCharacter(c)) {
      return std::nullopt;
    }
  }
  if (address.host.empty() || address.host.size() > 253) {
    return std::nullopt;
  }
  if (!port.empty() && (port[0] != ':' || !ParsePort(port.substr(1), &address.port))) {
    return std::nullopt;
  }
  return address;
}

}  // namespace

std::optional<Address> Address::Parse(const char* text) {
  const std::string_view view = text == nullptr ? DefaultAddress() : text;
  if (view.substr(0, kUnix.size()) == kUnix) {
    return ParseUnix(view.substr(kUnix.size()));
  }
  if (view.substr(0, kMqtt.size()) == kMqtt) {
    return ParseMqtt(view.substr(kMqtt.size()));
  }
  return std::nullopt;
}

std::string Address::Text() const {
  if (is_unix) {
    return std::string(kUnix) + host;
  }
  const bool is_ipv6 = host.find(':') != std::string::npos;
  std::string text = std::string(kMqtt) + (is_ipv6 ? "[" + host + "]" : host);
  return port == 0 ? text : text + ":" + std::to_string(port);
}

}  // namespace dorv
