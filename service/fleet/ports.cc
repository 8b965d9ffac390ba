#include "fleet/ports.h"

#include <algorithm>

#include "drivers/addresses.h"

namespace vptzd {

std::vector<std::string>::iterator Ports::Find(const std::string& port) {
  return std::find_if(ports_.begin(), ports_.end(),
                      [&](const std::string& other) { return PortPath(other) == PortPath(port); });
}

Status Ports::Add(const std::string& port) {
  if (port.empty() || port.size() > kMaxNameLength) return Status::kBadRequest;
  if (Find(port) != ports_.end()) return Status::kBusy;
  if (ports_.size() == kMax) return Status::kOutOfRange;
  ports_.push_back(port);
  return Status::kDone;
}

Status Ports::Remove(const std::string& port) {
  const auto found = Find(port);
  if (found == ports_.end()) return Status::kUnknownId;
  ports_.erase(found);
  return Status::kDone;
}

}  // namespace vptzd
