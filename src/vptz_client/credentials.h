// The stored credentials of a device.
#ifndef VPTZ_SRC_VPTZ_CLIENT_CREDENTIALS_H
#define VPTZ_SRC_VPTZ_CLIENT_CREDENTIALS_H

#include <optional>
#include <string>

namespace vptz {

struct Credentials {
  std::string account;
  std::string credentials;
};

// Out of a text that is one JSON object with both as texts; nothing for every
// other text.
std::optional<Credentials> ReadCredentials(const std::string& text);

}  // namespace vptz

#endif
