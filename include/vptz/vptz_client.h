// VptzClient: the one object through which an application drives cameras.
//
// Results. Every operation that sends a command returns an int:
//   0            done (for GetStatus and GetDevicesPowerStatus: the answer 0)
//   -1           the client never connected; nothing was sent
//   other < 0    the bus library's negative errno value when the call failed
//                (-ENOTCONN, -ETIMEDOUT, -ESRCH, -ECONNRESET ...), else the
//                service's refusal
//   > 0          a status of the service
// The service's status comes back unchanged; the reference service refuses with
// values of -1001 and below.
//
// Time-outs. The last argument of an operation is its time-out in seconds; 0,
// the default, or a negative value selects the configured one (2 s unless the
// configuration file says otherwise). No operation outlives it.
//
// Positions, speeds and velocities are passed to the service unchanged and
// unchecked. With the reference service pan and tilt are degrees (right and up
// are positive), zoom is the magnification factor, and speeds and velocities
// are these units per second. kVptzNotCommanded leaves an axis alone.
//
// Threads. A client is meant for one thread at a time and holds no lock. Clients
// share the process's configuration: make them one after the other.
// Callbacks run on a thread of the bus library, which tells what they may do.
// Nothing is thrown.
#ifndef VPTZ_VPTZ_CLIENT_H
#define VPTZ_VPTZ_CLIENT_H

#include <cstdint>
#include <string>

#include <vptz/export.h>
#include <vptz/vptz_data.h>

struct bus_client;

namespace vptz {
struct ClientAccess;
}

// Receives a signal, or the answer to CallAsync: the bus client, a pointer that
// is null, the signal's or method's name, the payload and its length (with
// CallAsync a negative errno value when the call failed). Pointers are valid
// until the callback returns.
using VptzCallback = void (*)(bus_client*, void* user_data, const char* name, const void* payload,
                              std::int32_t length);

class VPTZ_API VptzClient {
 public:
  // ---- lifecycle -----------------------------------------------------------

  // Prepares the bus library and reads the configuration file. Does not
  // connect. A configuration file that cannot be read is logged; the client
  // then works with a time-out of 2 s and without preset shift.
  VptzClient();

  // Leaves the bus. Calls that other threads wait in come back first.
  ~VptzClient();

  VptzClient(const VptzClient&) = delete;
  VptzClient& operator=(const VptzClient&) = delete;

  // The library's version, "0.1.0".
  const char* Version() const;

  // Connects to the bus as `name`. `address` is one of the bus library's
  // addresses; null selects its default. A second Connect keeps the first
  // name. 0, or -1 with the reason logged.
  int Connect(const std::string& name, const char* address);

  // Leaves the bus; a later Connect joins it again. 0, or -1 when the client
  // never connected or the bus library fails, which is logged.
  int Disconnect();

  // Disconnect whose result does not matter. Always 0.
  int Release();

  // Connects as "vptz_client" to the default address. Always 0; whether it
  // worked is told by the first command.
  int Init();

  // `timeout` when it is greater than 0, else the configured time-out; seconds.
  int GetVptzTimeout(int timeout) const;

  // ---- raw calls -----------------------------------------------------------

  // Sends `request_length` bytes under a method name to the service and waits.
  // On entry *reply_length is the capacity of `reply` in bytes, on return the
  // reply's length. The time-out goes to the bus library as it is. Returns the
  // bus library's result: 0 or more, or a negative errno value (-EINVAL for a
  // client that never connected).
  int CallSync(const char* method, const void* request, int request_length, void* reply, int* reply_length,
               int timeout = 0);

  // Sends a request and returns at once; the answer goes to `callback`.
  // Results as for CallSync.
  int CallAsync(const char* method, const void* request, int request_length, VptzCallback callback,
                int timeout = 0);

  // ---- signals -------------------------------------------------------------
  // Each returns the bus library's result: 0 or more, or a negative errno
  // value. Connect first.

  // Has `callback` called for each signal of that name.
  int SubscribeSignal(const char* signal, VptzCallback callback);

  // Has `callback` called for every signal of the service.
  int SubscribeAllSignal(VptzCallback callback);

  // SubscribeSignal for "finish/search_device": a search has ended.
  int SubscribeSearchDeviceFinishSignal(VptzCallback callback);

  // SubscribeSignal for "update_devices": rows of the database have changed.
  int SubscribeUpdateDevicesSignal(VptzCallback callback);

  // Ends the subscription of one signal.
  int UnsubscribeSignal(const char* signal);

  // End the subscriptions of the two signals above.
  int UnSubscribeSearchDeviceFinishSignal();
  int UnSubscribeUpdateDevicesSignal();

  // Does nothing; lookups read the database anew by themselves. Always 0.
  int HandleUpdateSignal();

  // ---- discovery -----------------------------------------------------------

  // Asks the service for its state, which is the result itself; the reference
  // service answers 0.
  int GetStatus(int timeout = 0);

  // ---- motion --------------------------------------------------------------
  // `ptz_id` is the row id of the PTZ node. Each returns when the service has
  // accepted the command, not when the motion has ended.

  // Moves to a position and stops there.
  int AbsoluteMove(unsigned int ptz_id, double pan_position, double tilt_position, double zoom_position,
                   double pan_speed, double tilt_speed, double zoom_speed, int timeout = 0);

  // AbsoluteMove of some axes; the others are left alone.
  int AbsolutePanMove(unsigned int ptz_id, double pan_position, double pan_speed, int timeout = 0);
  int AbsoluteTiltMove(unsigned int ptz_id, double tilt_position, double tilt_speed, int timeout = 0);
  int AbsolutePanTiltMove(unsigned int ptz_id, double pan_position, double tilt_position, double pan_speed,
                          double tilt_speed, int timeout = 0);
  int AbsoluteZoomMove(unsigned int ptz_id, double zoom_position, double zoom_speed, int timeout = 0);

  // Moves until PtzStop or a limit. Three zeros are three zero velocities, not
  // a stop command.
  int ContinuousMove(unsigned int ptz_id, double pan_velocity, double tilt_velocity, double zoom_velocity,
                     int timeout = 0);

  // ContinuousMove of some axes; the others are left alone.
  int ContinuousPanMove(unsigned int ptz_id, double pan_velocity, int timeout = 0);
  int ContinuousTiltMove(unsigned int ptz_id, double tilt_velocity, int timeout = 0);
  int ContinuousPanTiltMove(unsigned int ptz_id, double pan_velocity, double tilt_velocity, int timeout = 0);
  int ContinuousZoomMove(unsigned int ptz_id, double zoom_velocity, int timeout = 0);

  // Stops the named axes, whatever moves them.
  int PtzStop(unsigned int ptz_id, bool stop_pan, bool stop_tilt, bool stop_zoom, int timeout = 0);

  // PtzStop of pan and tilt, and of zoom.
  int PanTiltStop(unsigned int ptz_id, int timeout = 0);
  int ZoomStop(unsigned int ptz_id, int timeout = 0);

  // Moves to the stored home position.
  int GotoHome(unsigned int ptz_id, double pan_speed, double tilt_speed, double zoom_speed, int timeout = 0);

  // Stores the present position as home.
  int SetHome(unsigned int ptz_id, int timeout = 0);

  // Sets the tracking mode; its numbers are the service's.
  int SetTrackMode(unsigned int ptz_id, unsigned int track_mode, int timeout = 0);

  // ---- serial, USB and power -----------------------------------------------

  // Has the service read its device configuration again.
  int ConfigDevices(int timeout = 0);

  // Add and remove a USB-serial port, named by its device path; the text is
  // sent as it is, also when empty.
  int AddUSBttyDevice(std::string tty_device, int timeout = 0);
  int RemoveUSBttyDevice(std::string tty_device, int timeout = 0);

  // Forgets all USB-serial ports. (Kept: the spelling is part of the interface.)
  int FlushUSBttydevices(int timeout = 0);

  // Switch the service's reset-2P0 behaviour on and off.
  int EnableReset2P0(int timeout = 0);
  int DisableReset2P0(int timeout = 0);

  // Switch the power of the controlled devices.
  int PowerOnDevices(int timeout = 0);
  int PowerOffDevices(int timeout = 0);

  // The power status is the result itself; the reference service answers 1 for
  // on and 0 for off.
  int GetDevicesPowerStatus(int timeout = 0);

  // ---- profile queries -----------------------------------------------------
  // Ask the service for the live state of one profile, named by its device's
  // row id and its token. The record is written only when the result is 0 or
  // positive, and must not be null. A value that the service does not know
  // becomes 0.0 with `valid` 0.

  // Writes track_mode and the axes' positions, speeds and ranges; leaves
  // everything else in the record alone.
  int QueryPtzProfiles(unsigned int device_id, const std::string& token, VptzPtzData* profile, int timeout = 0);

  // Writes the video and image values; leaves ranges, addresses and ids alone.
  // The `_ok` flags are set for known values and never cleared.
  int QueryMediaProfiles(unsigned int device_id, const std::string& token, VptzMediaData* profile,
                         int timeout = 0);

 private:
  friend struct vptz::ClientAccess;

  std::int32_t ndi_preset_shift_ = 0;
  bus_client* bus_client_ = nullptr;
  std::int32_t timeout_ = 2;
};

#endif
