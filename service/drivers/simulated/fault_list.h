// Faults as JSON: in a fleet file, and in calls that switch them while the
// simulated cameras run.
#ifndef VPTZ_SERVICE_DRIVERS_SIMULATED_FAULT_LIST_H
#define VPTZ_SERVICE_DRIVERS_SIMULATED_FAULT_LIST_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "drivers/simulated/document.h"
#include "drivers/simulated/faults.h"

namespace vptzd {

// What one call may bring: so many bytes, so many faults.
constexpr std::size_t kMaxFaultText = 32768;
constexpr std::size_t kMaxFaults = 256;

// The faults of a JSON list, whose cameras have the numbers 1 to `cameras`. Throws
// DocumentError.
std::vector<Fault> ReadFaults(const Value& list, std::size_t cameras);

// {"faults": [...]}, as ReadFaults takes it.
std::string TextOf(const std::vector<Fault>& faults);

// The faults of a text {"faults": [...]} that are to be put in force in the place
// of all others; none for an empty text and for {}, which only ask what is in
// force. Throws DocumentError.
std::optional<std::vector<Fault>> ReadFaultSwitch(const std::string& text, std::size_t cameras);

}  // namespace vptzd

#endif
