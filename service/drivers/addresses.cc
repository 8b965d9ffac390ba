#include "drivers/addresses.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace vptzd {
namespace {

constexpr char kSerialScheme[] = "rs232://";

// Cuts off and returns what follows the last slash; none without a slash.
std::optional<std::string> CutLast(std::string* text) {
  const std::size_t slash = text->rfind('/');
  if (slash == std::string::npos) return std::nullopt;
  const std::string last = text->substr(slash + 1);
  text->resize(slash);
  return last;
}

std::optional<int> ReadCount(const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  int number = 0;
  const char* end = text->data() + text->size();
  const auto [rest, error] = std::from_chars(text->data(), end, number);
  return error == std::errc() && rest == end && number >= 0 ? std::optional<int>(number) : std::nullopt;
}

}  // namespace

std::optional<NetworkAddress> ReadAddress(const std::string& text) {
  NetworkAddress address;
  std::string rest = text;
  if (const std::size_t scheme = rest.find("://"); scheme != std::string::npos) {
    address.scheme = rest.substr(0, scheme);
    rest.erase(0, scheme + 3);
  }
  if (const std::size_t path = rest.find('/'); path != std::string::npos) {
    address.path = rest.substr(path);
    rest.resize(path);
  }
  if (const std::size_t port = rest.rfind(':'); port != std::string::npos && rest.back() != ']') {
    address.port = rest.substr(port + 1);
    rest.resize(port);
  }
  address.host = rest;
  return rest.empty() ? std::nullopt : std::optional<NetworkAddress>(address);
}

std::string PortPath(const std::string& port) {
  return port.find('/') == std::string::npos ? "/dev/" + port : port;
}

bool IsBaudRate(int rate) {
  static constexpr int kRates[] = {
      0,      50,      75,      110,     134,     150,     200,     300,     600,    1200,   1800,   2400,
      4800,   7200,    9600,    14400,   19200,   28800,   31250,   38400,   56000,  57600,  76800,  115200,
      128000, 153600,  230400,  250000,  256000,  307200,  460800,  500000,  512000, 576000, 614400, 750000,
      921600, 1000000, 1152000, 1500000, 2000000, 2500000, 3000000, 3500000, 4000000};
  return std::find(std::begin(kRates), std::end(kRates), rate) != std::end(kRates);
}

bool IsSamePlace(const std::string& service_uri, const std::string& other) {
  if (service_uri == other) return true;
  auto a = ReadSerialAddress(service_uri);
  auto b = ReadSerialAddress(other);
  if (!a || !b) return false;
  a->port = PortPath(a->port);
  b->port = PortPath(b->port);
  return SerialUri(*a) == SerialUri(*b);
}

std::optional<SerialAddress> ReadSerialAddress(const std::string& text) {
  if (text.rfind(kSerialScheme, 0) != 0) return std::nullopt;
  std::string rest = text.substr(sizeof kSerialScheme - 1);
  const auto unit = ReadCount(CutLast(&rest));
  const auto baud_rate = ReadCount(CutLast(&rest));
  const auto line = CutLast(&rest);
  if (!unit || !baud_rate || !line || rest.empty()) return std::nullopt;
  return SerialAddress{rest, *line, *baud_rate, *unit};
}

std::string SerialUri(const SerialAddress& address) {
  return kSerialScheme + address.port + "/" + address.line + "/" + std::to_string(address.baud_rate) + "/" +
         std::to_string(address.unit);
}

}  // namespace vptzd
