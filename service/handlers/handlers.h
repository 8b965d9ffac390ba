// The handlers, one per method, by subject.
#ifndef VPTZ_SERVICE_HANDLERS_HANDLERS_H
#define VPTZ_SERVICE_HANDLERS_HANDLERS_H

#include <string>

#include <vptz/vptz.pb.h>

#include "fleet/fleet.h"
#include "handlers/context.h"

namespace vptzd {

// Called with the fleet entered and a command whose method name has been
// checked. Uses nothing that may keep it waiting.
using Handler = tutorial::VptzResponse(Fleet& fleet, const tutorial::VptzCommand& command);

// Called by the agenda, one at a time, without the fleet entered, so that it may
// wait for the database. What it throws as a StorageError is told as kNotStored.
// It alone makes cameras known or unknown: a member that it has looked up stays.
using StoringHandler = tutorial::VptzResponse(Context& context, const tutorial::VptzCommand& command);

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

// simulated_faults.cc

// The method that switches faults. Not one of the table: it belongs to the
// simulated cameras and to no other service, and no fault concerns it.
constexpr char kSimulateFaults[] = "simulate_faults";

// Puts the faults of the text {"faults": [...]} in force in the place of all
// others; an empty text, and {}, change nothing. The answer's nat_address holds
// the faults that are in force then, as TextOf writes them; with kBadRequest it
// holds line and reason, and nothing has changed. Without simulated cameras
// kUnknownMethod, and the reason in nat_address.
tutorial::VptzResponse SimulateFaults(Fleet& fleet, const std::string& text);

}  // namespace vptzd

#endif
