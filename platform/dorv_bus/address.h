#ifndef DORV_BUS_ADDRESS_H
#define DORV_BUS_ADDRESS_H

#include <optional>
#include <string>

namespace dorv {

// Where the broker listens.
struct Address {
  bool is_unix = false;
  std::string host;  // host name, number, or the socket's path
  int port = 0;      // 0: the usual one

  // Reads "mqtt://host[:port]" or "unix:/path"; null stands for the default
  // address. Nothing when it is neither.
  static std::optional<Address> Parse(const char* text);

  // For messages: the address as it would be written.
  std::string Text() const;
};

}  // namespace dorv

#endif
