#include "fleet/watchdog.h"

#include <algorithm>

namespace vptzd {

using std::chrono::nanoseconds;

void Watchdog::Drive::Renew() {
  if (driver.grace > nanoseconds(0)) left = driver.grace;
}

void Watchdog::GiveSignOfLife(std::uint64_t caller) {
  for (auto& drive : drives_) {
    if (drive && drive->driver.caller == caller) drive->Renew();
  }
}

Watchdog::PerDrive<bool> Watchdog::Driven() const {
  PerDrive<bool> driven{};
  for (std::size_t i = 0; i < drives_.size(); ++i) driven[i] = drives_[i].has_value();
  return driven;
}

nanoseconds Watchdog::UntilNextEnd(nanoseconds limit) const {
  for (const auto& drive : drives_) {
    if (drive && drive->left) limit = std::min(limit, *drive->left);
  }
  return limit;
}

Watchdog::PerDrive<bool> Watchdog::Advance(nanoseconds elapsed) {
  PerDrive<bool> ended{};
  for (std::size_t i = 0; i < drives_.size(); ++i) {
    auto& drive = drives_[i];
    if (!drive || !drive->left) continue;
    *drive->left -= elapsed;
    ended[i] = *drive->left <= nanoseconds(0);
    if (ended[i]) drive.reset();
  }
  return ended;
}

}  // namespace vptzd
