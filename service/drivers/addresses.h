// Reading and making the addresses by which cameras are reached.
#ifndef VPTZ_SERVICE_DRIVERS_ADDRESSES_H
#define VPTZ_SERVICE_DRIVERS_ADDRESSES_H

#include <optional>
#include <string>

namespace vptzd {

// SCHEME://HOST[:PORT][/PATH], of which the scheme may be missing.
struct NetworkAddress {
  std::string scheme;
  std::string host;
  std::string port;  // as written; empty: none
  std::string path;  // with its slash; empty: none
};

// None for an address without a host.
std::optional<NetworkAddress> ReadAddress(const std::string& text);

// rs232://PORT/LINE/BAUD_RATE/UNIT, where PORT may hold slashes.
struct SerialAddress {
  std::string port;
  std::string line;
  int baud_rate = 0;
  int unit = 0;
};

// "ttyS0" and "/dev/ttyS0" are one port: the text by which ports are compared. What
// is stored stays as it was given.
std::string PortPath(const std::string& port);

// Whether serial lines know that rate; 0 is a port's own.
bool IsBaudRate(int rate);

// None for an address that does not have these parts, or numbers of which one
// is less than 0.
std::optional<SerialAddress> ReadSerialAddress(const std::string& text);
std::string SerialUri(const SerialAddress& address);

// Whether two service addresses reach the same camera: their texts are the same,
// or differ in how they name a serial port.
bool IsSamePlace(const std::string& service_uri, const std::string& other);

}  // namespace vptzd

#endif
