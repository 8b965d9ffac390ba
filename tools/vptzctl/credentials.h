// The credentials that the database holds for a camera. Never shown.
#ifndef VPTZCTL_CREDENTIALS_H
#define VPTZCTL_CREDENTIALS_H

#include <optional>
#include <string>

namespace vptzctl {

struct StoredLogin {
  std::string account;
  std::string credentials;
};

// Reads VptzDeviceData::authorization; none when it is no JSON object with both
// texts, or when one of them holds a NUL, which no C text can.
std::optional<StoredLogin> ReadStoredLogin(const std::string& authorization);

}  // namespace vptzctl

#endif
