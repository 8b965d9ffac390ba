// What the web page shows of the world.
#ifndef VPTZ_SERVICE_WORLD_VIEW_H
#define VPTZ_SERVICE_WORLD_VIEW_H

#include <vector>

#include "view/camera_view.h"
#include "world.h"

namespace vptzd {

// Of the cameras that are known by rows, in their order. Locks the world.
std::vector<CameraView> ViewOf(World& world);

}  // namespace vptzd

#endif
