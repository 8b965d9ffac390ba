#ifndef DORV_BUS_CONNECT_SETTINGS_H
#define DORV_BUS_CONNECT_SETTINGS_H

#include <chrono>
#include <optional>
#include <string>

#include "dorv_bus.h"

namespace dorv {

// Credentials, TLS material and the time for connecting. They come from a key
// file: the one that the environment variable DORV_BUS_SETTINGS names, else
// /etc/dorv/bus.conf if it exists. README.md explains the keys. No credentials are
// ever logged.
struct ConnectSettings {
  std::string user;
  std::string password;
  bool tls = false;         // for mqtt:// addresses
  std::string ca_file;      // empty: the system's certificates
  std::string certificate;  // the client's own, empty for none
  std::string key;          // belongs to the certificate

  // How long bus_connect waits. The environment variable DORV_BUS_CONNECT_TIMEOUT
  // comes before the file.
  std::chrono::seconds connect_timeout{BUS_DEFAULT_TIMEOUT};

  // Nothing, with the reason logged, when the file, or the password file that it
  // names, cannot be read, is no regular file or longer than 1 MiB, and when the
  // time for connecting is not 1 to 3600 whole seconds. A log that is stuck delays
  // that for a second at most.
  static std::optional<ConnectSettings> Load();
};

}  // namespace dorv

#endif
