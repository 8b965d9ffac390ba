// VptzClient: the one object through which an application drives cameras.
//
// Results. Every operation that sends a command returns an int:
//   0            done (for GetStatus and GetDevicesPowerStatus: the answer 0)
//   -1           the client never connected, an argument cannot be sent, or the
//                database lacks the row that the operation needs: the command
//                was not sent. Also when memory runs out; while the reply is
//                read, that is after the service has executed the command
//   other < 0    the bus library's negative errno value when the call failed
//                (-ENOTCONN, -ETIMEDOUT, -ESRCH, -ECONNRESET ...), else the
//                service's refusal
//   > 0          a status of the service
// The service's status comes back unchanged; the reference service refuses with
// values of -1001 and below. A reply that cannot be read counts as 0: a service
// that sends rubbish in answer to a move seems to have done it. vptz/results.h
// gives results names and words.
//
// Time-outs. The last argument of an operation is its time-out in seconds; 0,
// the default, or a negative value selects the configured one (2 s unless the
// configuration file says otherwise). No call of the bus outlives it. An
// operation lasts longer than one call where it
//   - reads the database first: while another program locks the file, that takes
//     about 4 s more for each query (presets by id, imaging and focus, counts,
//     and whatever loads handles);
//   - makes several calls: EnableNAT, DisableNAT, SetSlaveDeviceById, and what loads
//     handles, as told there.
//
// Ids. Devices, PTZ nodes and media sources are rows of three tables, each with
// numbers of its own: device 3 may have the PTZ node 5 and the media sources 8 and
// 9. `device_id`, `ptz_id` and `media_id` tell which is meant; a handle
// (CVptzDevice) knows those of its profiles, so that its operations need none.
//
// Positions, speeds and velocities are passed to the service unchanged and
// unchecked. With the reference service pan and tilt are degrees (right and up
// are positive), zoom is the magnification factor, and speeds and velocities
// are these units per second. kVptzNotCommanded leaves an axis alone.
//
// Threads. A client is meant for one thread at a time and holds no lock. Clients
// may be made, used and destroyed side by side. They share the process's one
// database: one that is made opens it anew, which costs no other client anything;
// one that is destroyed closes it for all. Destroy clients last, or make another.
// Callbacks run on a thread of the bus library, which tells what they may do.
// Nothing is thrown.
#ifndef VPTZ_VPTZ_CLIENT_H
#define VPTZ_VPTZ_CLIENT_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/vptz_data.h>
#include <vptz/vptz_device.h>

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

// One connection to the bus, and what the database knows of the cameras. What
// the comment at the top of vptz_client.h says holds for all its operations.
class VPTZ_API VptzClient {
 public:
  // ---- lifecycle -----------------------------------------------------------

  // Prepares the bus library, reads the configuration file and opens the
  // database. Does not connect. A configuration file that cannot be read is
  // logged; the client then works with a time-out of 2 s, without preset shift
  // and without a database. A database that cannot be opened is logged, too.
  VptzClient();

  // Leaves the bus, closes the database (for every client of the process) and
  // destroys the device handles. Calls that other threads wait in come back
  // first. Lookups that run in other clients end as if nothing had happened; those
  // that begin afterwards find no database until a client is made. Waits for a
  // callback that runs, but at most one second: a callback that takes longer runs
  // on after the client's end, so what it touches must outlive it (docs/threads.md
  // shows how).
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

  // Disconnects, ignoring the result. Always 0.
  int Release();

  // Connects as "vptz_client" to the default address and loads the registry.
  // Always 0; whether it worked is told by the first command.
  int Init();

  // `timeout` when it is greater than 0, else the configured time-out; seconds.
  int GetVptzTimeout(int timeout) const;

  // ---- raw calls -----------------------------------------------------------

  // Sends `request_length` bytes under a method name to the service and waits.
  // On entry *reply_length is the capacity of `reply` in bytes, on return the
  // reply's length: set it before each call, for a capacity that is not set fails
  // with -EMSGSIZE or -EINVAL, or lets the reply run over the buffer. The time-out
  // goes to the bus library as it is; to the bundled one 0 and less mean 2 s,
  // whatever is configured (GetVptzTimeout gives the configured one). Returns the
  // bus library's result: 0 or more, or a negative errno value (-EINVAL for a
  // client that never connected).
  int CallSync(const char* method, const void* request, int request_length, void* reply, int* reply_length,
               int timeout);

  // Sends a request and returns at once; the answer goes to `callback`.
  // Results as for CallSync.
  int CallAsync(const char* method, const void* request, int request_length, VptzCallback callback,
                int timeout);

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

  // Starts a search for cameras of the protocols in a list such as
  // "ONVIF,NDI"; an empty list means "ONVIF,QX310,NDI". `scope` tells the
  // service where to look; its texts are the service's. The signal
  // "finish/search_device" tells the end; what was found is in the database.
  int SearchDevice(std::string scope, std::string protocols, int timeout = 0);

  // Has the service add a camera. It writes the rows; a lookup shows them.
  int AddDevice(const std::string& mac, const std::string& name, const std::string& protocol,
                const std::string& address, const std::string& user, const std::string& password,
                int timeout = 0);

  // The same with the texts in a block: for the protocol "RS232" `params` is a
  // VptzSerialDeviceParams and the device is added as by AddRS232Device(port,
  // name, line, baud_rate, unit), for any other one a VptzNetworkDeviceParams.
  // Such a device is declared as "VISCA_OVER_IP" whatever protocol is named. -1
  // when params is null, or with "AddDevice exception" logged when memory runs
  // out.
  int AddDevice(const std::string& protocol, void* params, int timeout = 0);

  // Adds a serial device: AddDevice(port, name, "RS232",
  // "rs232://PORT/LINE/BAUD_RATE/UNIT", "", ""). -1 when that address is longer
  // than 127 bytes.
  int AddRS232Device(std::string port, const std::string& name, std::string line, int baud_rate, int unit,
                     int timeout = 0);

  // Adds an ONVIF camera that no search finds, by its service address.
  int AddOnvifDeviceManually(const std::string& address, const std::string& user, const std::string& password,
                             int timeout = 0);

  // Has the service forget a device.
  int RemoveDevice(unsigned int device_id, int timeout = 0);

  // ---- registry ------------------------------------------------------------
  // Handles of the devices in the database, in the order of their rows. They
  // need no connection; with one, the service is asked for the outside
  // addresses of each device's web pages and streams ("query_nat_uri"), one call
  // after the other. All of them together wait for the configured time-out, and
  // for less than a second more. A call that is answered within a tenth of the
  // time-out, and within a second, costs nothing of it: over a slow line the
  // registry becomes complete, and takes at most that much longer for each
  // address. When the time is over the log says so once; the addresses that are
  // left are not asked for and stay the stored ones, like one whose query fails.
  // The three lookups build the registry anew, so that it shows what is stored now;
  // every pointer that an earlier lookup gave is invalid afterwards.

  // Appends a handle for each stored device, loaded with LoadDeviceInfo,
  // LoadPtzInfo and LoadMediaInfo. Does not empty the registry first. 0, or -1
  // when memory ran out, which is logged; nothing is then appended.
  int LoadDevices();

  // Destroys all handles. Always 0.
  int ClearDevices();

  // The handle of that device; null when there is none.
  CVptzDevice* QueryDeviceById(int id);

  // All handles, in the client's own array.
  std::vector<CVptzDevice>* QueryDeviceAll();

  // The handles whose protocol has exactly that name; the list is the caller's,
  // the handles are not.
  std::vector<CVptzDevice*> QueryDeviceByProtocol(const std::string& protocol);

  // Numbers of rows in the database; 0 also when it cannot be read, which is
  // logged.
  int QueryDeviceCount();
  int QueryPtzCountByDevice(int device_id);
  int QueryMediaCountByDevice(int device_id);
  int QueryPresetCountByPtz(int ptz_id);

  // ---- maintenance ---------------------------------------------------------

  // Sets the protocol by which the service controls a device.
  int UpdateDeviceControlProtocol(unsigned int device_id, std::string protocol, int timeout = 0);

  // Have the service log in to a device and out of it. The credentials travel
  // over the bus; they are not logged.
  int Login(unsigned int device_id, std::string user, std::string password, int timeout = 0);
  int Logout(unsigned int device_id, int timeout = 0);

  // Have the service read from the device, into the database: what it is and
  // how it is; the same in full; where its PTZ nodes stand; its presets.
  int UpdateDeviceInfo(unsigned int device_id, int timeout = 0);
  int UpdateDeviceInfoFull(unsigned int device_id, int timeout = 0);
  int UpdatePtzStatus(unsigned int device_id, int timeout = 0);
  int UpdateDevicePresets(unsigned int device_id, int timeout = 0);

  // Couples a slave device to a device: its address and the account and
  // credentials by which it is reached. Empty texts end the coupling.
  int SetSlaveDevice(int device_id, const std::string& address, const std::string& account,
                     const std::string& credentials, int timeout = 0);

  // SetSlaveDevice with the stored address of the device `slave_id`, and with
  // "account" and "credentials" of its stored credentials, a JSON text; 0 ends
  // the coupling. With a slave it rebuilds the registry first, which asks the
  // service for outside addresses ("query_nat_uri"). The configured time-out is
  // used whatever `timeout` is. -1 and the command not sent when there is no such
  // device or its credentials are no JSON object with these two texts.
  int SetSlaveDeviceById(int device_id, int slave_id, int timeout = 0);

  // Sets the line of all serial devices: sends "rs232://PORT/BAUD_RATE/UNIT/FLAGS".
  // -1 when that is longer than 127 bytes.
  int UpdateAllRS232Devices(std::string port, int baud_rate, int unit, int flags, int timeout = 0);

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

  // ---- presets -------------------------------------------------------------
  // Stored positions of one PTZ node, known by a token. The service keeps them
  // and writes their rows. The ...ById forms take the token (to store: and the
  // name) of the row with that node and preset id, and return -1 without sending
  // when the database has none.

  // Has the service read the node's presets from the camera.
  int UpdatePresets(unsigned int ptz_id, int timeout = 0);

  // Stores the present position.
  int SetPreset(unsigned int ptz_id, std::string name, std::string token, int timeout = 0);
  int SetPresetById(unsigned int ptz_id, unsigned int preset_id, int timeout = 0);

  // Moves to a stored position; kVptzNotCommanded leaves a speed to the service.
  int GotoPreset(unsigned int ptz_id, std::string token, double pan_speed, double tilt_speed, double zoom_speed,
                 int timeout = 0);
  int GotoPresetById(unsigned int ptz_id, unsigned int preset_id, double pan_speed, double tilt_speed,
                     double zoom_speed, int timeout = 0);

  // Removes a stored position; the row goes when the service removes it.
  int RemovePreset(unsigned int ptz_id, std::string token, int timeout = 0);
  int RemovePresetById(unsigned int ptz_id, unsigned int preset_id, int timeout = 0);

  // ---- imaging and focus ---------------------------------------------------
  // `media_id` is the row id of the media source. All but UpdateCapabilities
  // return -1 without sending when the database has no such row.

  // Has the service read what a device can do.
  int UpdateCapabilities(unsigned int device_id, int timeout = 0);

  // Sets the image. kVptzNotCommanded leaves a value alone, the text "DEFAULT"
  // the auto-focus mode. Scales and mode numbers are the service's.
  int SetImagingSettings(unsigned int media_id, double brightness, double contrast, double sharpness,
                         double backlight_mode, double auto_focus, std::string auto_focus_mode,
                         int timeout = 0);

  // SetImagingSettings of one value; the others are left alone.
  int SetBrightness(unsigned int media_id, double brightness, int timeout = 0);
  int SetContrast(unsigned int media_id, double contrast, int timeout = 0);
  int SetSharpness(unsigned int media_id, double sharpness, int timeout = 0);
  int SetBacklightMode(unsigned int media_id, double backlight_mode, int timeout = 0);
  int SetAutoFocusMode(unsigned int media_id, double auto_focus, int timeout = 0);

  // Switches between automatic and manual focus.
  int SwitchFocusMode(unsigned int media_id, int timeout = 0);

  // Drive the focus until FocusStop. `drive` tells how; its texts are the
  // service's.
  int FocusFar(unsigned int media_id, std::string drive, int timeout = 0);
  int FocusNear(unsigned int media_id, std::string drive, int timeout = 0);
  int FocusStop(unsigned int media_id, std::string drive, int timeout = 0);

  // ---- NAT -----------------------------------------------------------------
  // Addresses as they are reachable from outside. EnableNAT and DisableNAT
  // rebuild the registry once the service has answered, whatever it answered,
  // and then ask it for the outside addresses of that device ("query_nat_uri"):
  // NAT_MEDIA those of its streams, NAT_SERVICE and NAT_HTTP those of its service
  // and its web page, NAT_ALL all of them in this order, and waits for them
  // together for `timeout`, as a lookup does. How these queries end does not change
  // the result.

  // Opens mappings. The vector is only read; null is logged and sent as no
  // mappings.
  int EnableNAT(unsigned int device_id, NATType type, std::vector<VptzNATData>* mappings, int timeout = 0);

  // Closes them.
  int DisableNAT(unsigned int device_id, NATType type, int timeout = 0);

  // Replaces an address by the service's answer, also when that is a refusal or
  // empty; leaves it alone when the call fails.
  int QueryNATuri(unsigned int device_id, NATType type, std::string& uri, int timeout = 0);

  // Sets each media profile's nat_url to its url and then QueryNATuri's answer
  // to it; waits for the answers together for `timeout`, as a lookup does. Always
  // 0; -1 when the handle is null.
  int SetMediaInfoNAT(CVptzDevice* device, int device_id, NATType type, int timeout = 0);

  // Closes all mappings of all devices, and empties the outside addresses in the
  // registry once the service has answered, whatever it answered.
  int ClearNAT(int timeout = 0);

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
  std::vector<CVptzDevice> devices_;
};

#endif
