// What the web page shows of the fleet.
#ifndef VPTZ_SERVICE_VIEW_FLEET_VIEW_H
#define VPTZ_SERVICE_VIEW_FLEET_VIEW_H

#include <vector>

#include "fleet/fleet.h"
#include "view/camera_view.h"

namespace vptzd {

// Of the cameras that are known by rows and simulated, in their order. Locks the fleet.
std::vector<CameraView> ViewOf(Fleet& fleet);

}  // namespace vptzd

#endif
