#ifndef DORV_BUS_SETTINGS_H
#define DORV_BUS_SETTINGS_H

#include <optional>
#include <string>

namespace dorv {

// Credentials and TLS material. They come from a key file: the one that the
// environment variable DORV_BUS_SETTINGS names, else /etc/dorv/bus.conf if it
// exists. README.md explains the keys. None of them is ever logged.
struct Settings {
  std::string user;
  std::string password;
  bool tls = false;         // for mqtt:// addresses
  std::string ca_file;      // empty: the system's certificates
  std::string certificate;  // the client's own, empty for none
  std::string key;          // belongs to the certificate

  // Nothing, with the reason logged, when the file, or the password file that it
  // names, cannot be read, is no regular file or longer than 1 MiB.
  static std::optional<Settings> Load();
};

}  // namespace dorv

#endif
