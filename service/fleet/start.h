// What the fleet begins with: each camera its rows, and what was added at earlier
// starts.
#ifndef VPTZ_SERVICE_FLEET_START_H
#define VPTZ_SERVICE_FLEET_START_H

#include <cstddef>

#include "fleet/fleet.h"
#include "store/device_rows.h"

namespace vptzd {

// Gives each listed camera its rows: those that are there from an earlier start,
// whose presets, login, picture and tracking mode it takes on; new ones, all in
// one transaction, when it is to be known from the beginning and nobody has
// removed it. Throws what the database refuses; a lack of room is logged instead,
// unless no camera at all has rows then.
void StoreCameras(
    Fleet& fleet, const StoringTold& told = [](std::size_t, std::size_t) {});

// Brings back what was added: the cameras whose rows belong to no listed one, the
// couplings and the ports. A lack of room is logged. Where no camera is simulated no
// row is touched, and nothing commands the cameras that have rows.
void RestoreAdditions(Fleet& fleet);

}  // namespace vptzd

#endif
