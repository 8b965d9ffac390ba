// The handlers, one per method, by subject.
#ifndef VPTZ_SERVICE_HANDLERS_H
#define VPTZ_SERVICE_HANDLERS_H

#include <vptz/vptz.pb.h>

#include "service.h"
#include "world.h"

namespace vptzd {

// Called with the world entered and a command whose method name has been
// checked. Uses nothing that may keep it waiting.
using Handler = tutorial::VptzResponse(World& world, const tutorial::VptzCommand& command);

// Called by the agenda, one at a time, without the world entered, so that it may
// wait for the database. What it throws as a StorageError is told as kNotStored.
// It alone makes cameras known or unknown: a member that it has looked up stays.
using StoringHandler = tutorial::VptzResponse(Service& service, const tutorial::VptzCommand& command);

// discovery.cc
Handler GetStatus;
StoringHandler SearchDevice;
StoringHandler AddDevice;
StoringHandler AddOnvifDeviceManually;
StoringHandler RemoveDevice;

// maintenance.cc
StoringHandler UpdateDeviceControlProtocol;
StoringHandler Login;
StoringHandler Logout;
StoringHandler UpdateDeviceInfo;
StoringHandler UpdateDeviceInfoFull;
StoringHandler SetSlaveDevice;
StoringHandler UpdatePtzStatus;
StoringHandler UpdateDevicePresets;
StoringHandler UpdateAllRs232Devices;

// motion.cc
Handler AbsoluteMove;
Handler ContinuousMove;
Handler PtzStop;
Handler GotoHome;
Handler SetHome;
StoringHandler SetTrackMode;

// presets.cc
StoringHandler UpdatePresets;
StoringHandler SetPreset;
Handler GotoPreset;
StoringHandler RemovePreset;

// imaging.cc
StoringHandler GetCapabilities;
StoringHandler SetImagingSettings;
StoringHandler SwitchFocusMode;
Handler FocusFar;
Handler FocusNear;
StoringHandler StoreFocusMode;  // of a focus drive that has begun
Handler FocusStop;

// nat.cc
Handler ClearNat;
Handler QueryNatUri;
Handler EnableNat;
Handler DisableNat;

// power.cc
StoringHandler ConfigDevices;
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
