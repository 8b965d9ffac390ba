// The USB-serial ports that callers have named.
#ifndef VPTZ_SERVICE_FLEET_PORTS_H
#define VPTZ_SERVICE_FLEET_PORTS_H

#include <cstddef>
#include <string>
#include <vector>

#include "drivers/status.h"

namespace vptzd {

class Ports {
 public:
  // What a caller can make the service remember is limited: this many ports,
  // named by texts of at most this many bytes.
  static constexpr std::size_t kMax = 64;
  static constexpr std::size_t kMaxNameLength = 255;

  // kBadRequest for an empty or too long text, kBusy for a port that is there
  // already, kOutOfRange when no more fit.
  Status Add(const std::string& port);

  // kUnknownId for a port that is not there. Either way of naming a port does.
  Status Remove(const std::string& port);

  void Clear() { ports_.clear(); }
  const std::vector<std::string>& all() const { return ports_; }

 private:
  std::vector<std::string>::iterator Find(const std::string& port);

  std::vector<std::string> ports_;  // as they were given
};

}  // namespace vptzd

#endif
