// The status codes of the service: what the field status_code of an answer
// holds. Refusals lie below the range of the bus library's negative errno
// values, so that a caller can tell them apart. A refused command has changed
// nothing.
#ifndef VPTZ_SERVICE_DRIVERS_STATUS_H
#define VPTZ_SERVICE_DRIVERS_STATUS_H

namespace vptzd {

enum class Status : int {
  kDone = 0,               // done, or accepted: motion and search go on by themselves
  kUnknownMethod = -1001,  // the service has no such method
  kBadRequest = -1002,     // unreadable message, wrong method name, missing part, unusable text
  // -1003 told of a method that could not do anything yet; it is not used again.
  kUnknownId = -1004,        // no such device, PTZ node, media source, profile, preset, protocol or port
  kUnsupportedAxis = -1005,  // the camera does not have that axis
  kOutOfRange = -1006,       // a number that is not finite or outside its range; more than is kept
  kNotLoggedIn = -1007,      // the device wants a login first, or another one than this
  kBusy = -1008,             // taken or under way already
  kPoweredOff = -1009,       // the camera has no power
  kOffline = -1010,          // the camera does not answer
  kNotStored = -1011,        // the database does not take it; the log tells why
  kNotRemovable = -1012,     // the device may not be removed
  kUnsupported = -1013,      // the camera, or what drives it, cannot do that
  kRefusedByCamera = -1014   // the camera refused; the log has its own words
};

// What get_devices_power_status answers in the place of a status.
enum class PowerStatus : int { kOff = 0, kOn = 1 };

}  // namespace vptzd

#endif
