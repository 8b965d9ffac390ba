// Faults as JSON: in a fleet file, and in calls that switch them while the
// simulated cameras run.
#ifndef VPTZ_SERVICE_FAULT_LIST_H
#define VPTZ_SERVICE_FAULT_LIST_H

#include <cstddef>
#include <string>
#include <vector>

#include <vptz/vptz.pb.h>

#include "document.h"
#include "faults.h"
#include "world.h"

namespace vptzd {

// The method that switches faults. Not one of the table: it belongs to the
// simulated cameras and to no other service, and no fault concerns it.
constexpr char kSimulateFaults[] = "simulate_faults";

// What one call may bring: so many bytes, so many faults.
constexpr std::size_t kMaxFaultText = 32768;
constexpr std::size_t kMaxFaults = 256;

// The faults of a JSON list, whose cameras have the numbers 1 to `cameras`. Throws
// DocumentError.
std::vector<Fault> ReadFaults(const Value& list, std::size_t cameras);

// {"faults": [...]}, as ReadFaults takes it.
std::string TextOf(const std::vector<Fault>& faults);

// Puts the faults of the text {"faults": [...]} in force in the place of all
// others; an empty text, and {}, change nothing. The answer's nat_address holds
// the faults that are in force then, as TextOf writes them; with kBadRequest it
// holds line and reason, and nothing has changed.
tutorial::VptzResponse SimulateFaults(World& world, const std::string& text);

}  // namespace vptzd

#endif
