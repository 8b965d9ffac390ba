// The handlers, one per method, by subject. Each is called with the world
// entered and a command whose method name has been checked.
#ifndef VPTZ_SERVICE_HANDLERS_H
#define VPTZ_SERVICE_HANDLERS_H

#include <vptz/vptz.pb.h>

#include "world.h"

namespace vptzd {

using Handler = tutorial::VptzResponse(World& world, const tutorial::VptzCommand& command);

// discovery.cc
Handler GetStatus;

// motion.cc
Handler AbsoluteMove;
Handler ContinuousMove;
Handler PtzStop;
Handler GotoHome;
Handler SetHome;
Handler SetTrackMode;

// power.cc
Handler AddUsbTtyDevice;
Handler RemoveUsbTtyDevice;
Handler FlushUsbTtyDevices;
Handler EnableReset2P0;
Handler DisableReset2P0;
Handler PowerOnDevices;
Handler PowerOffDevices;
Handler GetDevicesPowerStatus;

// profiles.cc
Handler GetPtzProfiles;
Handler GetMediaProfiles;

}  // namespace vptzd

#endif
