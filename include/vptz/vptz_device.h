// CVptzDevice: one known device, with its profiles, and the client's operations
// addressed to it.
//
// A handle is a record (VptzDeviceData) with two lists. Handles belong to the
// client's registry: a pointer to one is valid until the client's next lookup
// (QueryDeviceById, QueryDeviceAll, QueryDeviceByProtocol), Init, LoadDevices,
// ClearDevices, EnableNAT, DisableNAT or SetSlaveDeviceById. A copy is
// independent and stays usable as long as its client lives.
//
// Operations send what the operation of the same name of VptzClient sends and
// return its result; vptz_client.h tells results, units, time-outs and threads.
// `timeout`, in seconds, comes last; 0 selects the configured one. A handle
// without a client returns -1 and sends nothing. Operations on all media profiles
// (idx 0) and SetTrackMode make several calls with a time-out each; so do the
// loaders, with the configured one.
//
// Profiles are counted from 1: `idx` is the place in ptz_list (motion, presets)
// or in media_list (imaging, focus). An index that matches nothing is sent as
// the id 4294967295, which the service refuses; imaging and focus operations
// find no such media source and return -1 without sending.
#ifndef VPTZ_VPTZ_DEVICE_H
#define VPTZ_VPTZ_DEVICE_H

#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/vptz_data.h>

class VptzClient;

namespace vptz {
struct DeviceAccess;
}

// One known device: its record, its profiles, and the client's operations on it.
class VPTZ_API CVptzDevice : public VptzDeviceData {
 public:
  std::vector<VptzPtzData> ptz_list;      // PTZ profiles; the first has the index 1
  std::vector<VptzMediaData> media_list;  // media profiles; the first has the index 1

  // ---- handle --------------------------------------------------------------

  // Do nothing.
  void Init();
  void Deinit();

  // Sets the client that sends the handle's commands; not owned, may be null.
  void SetVptzClient(VptzClient* client);

  // The first profile with that row id, or null. Valid until the list changes.
  VptzPtzData* GetPtzById(int id);
  VptzMediaData* GetMediaById(int id);

  // ---- loading from the database -------------------------------------------

  // Reads the device's row into the record; when service_uri is a web address,
  // also asks the service for the two outside addresses ("query_nat_uri" for
  // NAT_SERVICE, then for NAT_HTTP), whose results do not matter. 0, or -1 when
  // there is no such row; the record is then as it was.
  int LoadDeviceInfo();

  // Brings ptz_list in step with the database: a profile that is in the list is
  // changed in place, another one is appended; none is removed. The stored
  // presets are appended to those that a profile holds already. Sends nothing.
  // The number of PTZ nodes of the device.
  int LoadPtzInfo();

  // Brings media_list in step with the database in the same way, and asks the
  // service for each stream's outside address ("query_nat_uri" for NAT_MEDIA).
  // The result of the last of these calls; 0 for a device without media.
  int LoadMediaInfo();

  // ---- live state ----------------------------------------------------------
  // Ask the service for the state of each profile that the database knows and
  // write it into the list's entry (QueryPtzProfiles, QueryMediaProfiles),
  // whose results do not matter. The number of profiles in the database, or -1
  // when one of them is not in the list.
  int LoadPtzProfiles();
  int LoadMediaProfiles();

  // ---- maintenance ---------------------------------------------------------

  // Have the service log in to the device and out of it.
  int Login(std::string user, std::string password, int timeout = 0);
  int Logout(int timeout = 0);

  // Couples a slave device, or ends the coupling with empty texts.
  int SetSlaveDevice(const std::string& address, const std::string& account, const std::string& credentials,
                     int timeout = 0);

  // Rebuilds the registry: a handle that lies in it is gone afterwards.
  int SetSlaveDeviceById(int slave_id, int timeout = 0);

  // Declares the device anew: VptzClient::AddDevice with the handle's protocol
  // and `params`, a VptzSerialDeviceParams when the protocol is "RS232", else a
  // VptzNetworkDeviceParams. First writes the handle's mac into the block, as
  // `port` or as `mac`. Afterwards loads the record anew. 0, or a negative
  // result; -1 when params is null.
  int UpdateDevice(void* params, int timeout = 0);

  // Sets the protocol by which the service controls the device. The record keeps
  // what it held until it is loaded again.
  int UpdateDeviceControlProtocol(std::string protocol, int timeout = 0);

  // Have the service read from the device, into the database: what it is and
  // how it is; the same in full; where its PTZ nodes stand; its presets; what it
  // can do. The record and the lists keep what they held.
  int UpdateDeviceInfo(int timeout = 0);
  int UpdateDeviceInfoFull(int timeout = 0);
  int UpdatePtzStatus(int timeout = 0);
  int UpdateDevicePresets(int timeout = 0);
  int UpdateCapabilities(int timeout = 0);

  // ---- NAT -----------------------------------------------------------------

  // Rebuild the registry: a handle that lies in it is gone afterwards.
  int EnableNAT(NATType type, std::vector<VptzNATData>* mappings, int timeout = 0);
  int DisableNAT(NATType type, int timeout = 0);

  // Replaces an address by the service's answer; leaves it alone when the call
  // fails.
  int QueryNATuri(NATType type, std::string& uri, int timeout = 0);

  // ---- motion --------------------------------------------------------------

  // Move to a position and stop there: all axes, or some and the others are left
  // alone. Degrees, the zoom as magnification factor, and these per second.
  int AbsoluteMove(double pan_position, double tilt_position, double zoom_position, double pan_speed,
                   double tilt_speed, double zoom_speed, unsigned int idx, int timeout = 0);
  int AbsolutePanMove(double pan_position, double pan_speed, unsigned int idx, int timeout = 0);
  int AbsoluteTiltMove(double tilt_position, double tilt_speed, unsigned int idx, int timeout = 0);
  int AbsolutePanTiltMove(double pan_position, double tilt_position, double pan_speed, double tilt_speed,
                          unsigned int idx, int timeout = 0);
  int AbsoluteZoomMove(double zoom_position, double zoom_speed, unsigned int idx, int timeout = 0);

  // Moves until PtzStop or a limit; degrees and magnification factor per second.
  // Logs service_uri.
  int ContinuousMove(double pan_velocity, double tilt_velocity, double zoom_velocity, unsigned int idx,
                     int timeout = 0);

  // The same for some axes; the others are left alone. Log nothing.
  int ContinuousPanMove(double pan_velocity, unsigned int idx, int timeout = 0);
  int ContinuousTiltMove(double tilt_velocity, unsigned int idx, int timeout = 0);
  int ContinuousPanTiltMove(double pan_velocity, double tilt_velocity, unsigned int idx, int timeout = 0);
  int ContinuousZoomMove(double zoom_velocity, unsigned int idx, int timeout = 0);

  // Stops the named axes. The index comes first here.
  int PtzStop(unsigned int idx, bool stop_pan, bool stop_tilt, bool stop_zoom, int timeout = 0);

  // PtzStop of pan and tilt, and of zoom.
  int PanTiltStop(unsigned int idx, int timeout = 0);
  int ZoomStop(unsigned int idx, int timeout = 0);

  // Moves to the stored home position.
  int GotoHome(double pan_speed, double tilt_speed, double zoom_speed, unsigned int idx, int timeout = 0);

  // Stores the present position as home.
  int SetHome(unsigned int idx, int timeout = 0);

  // Sets the tracking mode, and calls LoadPtzProfiles when the service has accepted the mode.
  int SetTrackMode(unsigned int track_mode, unsigned int idx, int timeout = 0);

  // ---- presets -------------------------------------------------------------
  // Devices of the protocol "NDIHX" count their presets from another number:
  // the configured "ndi_preset_shift" is added where preset ids are stored and
  // recalled, not where they are removed.

  // Has the service read the profile's presets from the camera. The list keeps
  // what it held.
  int UpdatePresets(unsigned int idx, int timeout = 0);

  // Store the present position; by id: under the token and the name that the
  // database holds for it.
  int SetPreset(std::string name, std::string token, unsigned int idx, int timeout = 0);
  int SetPresetById(unsigned int preset_id, unsigned int idx, int timeout = 0);

  // Moves to a stored position; kVptzNotCommanded leaves a speed to the service.
  int GotoPreset(std::string token, double pan_speed, double tilt_speed, double zoom_speed, unsigned int idx,
                 int timeout = 0);

  // The same with the token that the database holds for that id. A negative shift
  // that would lead below 0 is left out.
  int GotoPresetById(unsigned int preset_id, double pan_speed, double tilt_speed, double zoom_speed,
                     unsigned int idx, int timeout = 0);

  // Remove a stored position.
  int RemovePreset(std::string token, unsigned int idx, int timeout = 0);
  int RemovePresetById(unsigned int preset_id, unsigned int idx, int timeout = 0);

  // ---- imaging and focus ---------------------------------------------------

  // With idx 0 every media profile is set, one after the other: 0, or -1 when
  // the service or the bus refused one of them; 0 without media profiles.
  int SetImagingSettings(double brightness, double contrast, double sharpness, double backlight_mode,
                         double auto_focus, std::string auto_focus_mode, unsigned int idx, int timeout = 0);

  // SetImagingSettings of one value; idx 0 means every profile here, too.
  int SetBrightness(double brightness, unsigned int idx, int timeout = 0);
  int SetContrast(double contrast, unsigned int idx, int timeout = 0);
  int SetSharpness(double sharpness, unsigned int idx, int timeout = 0);
  int SetBacklightMode(double backlight_mode, unsigned int idx, int timeout = 0);
  int SetAutoFocusMode(double auto_focus, std::string auto_focus_mode, unsigned int idx, int timeout = 0);

  // Switches between automatic and manual focus.
  int SwitchFocusMode(unsigned int idx, int timeout = 0);

  // Drive the focus until FocusStop. `drive` tells how; its texts are the
  // service's.
  int FocusFar(std::string drive, unsigned int idx, int timeout = 0);
  int FocusNear(std::string drive, unsigned int idx, int timeout = 0);
  int FocusStop(std::string drive, unsigned int idx, int timeout = 0);

 private:
  friend struct vptz::DeviceAccess;

  VptzClient* client_ = nullptr;
};

#endif
