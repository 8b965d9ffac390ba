// The plain value records that the library hands to its callers.
//
// All are ordinary values: copying copies the texts and lists they hold. A
// fresh record holds empty texts, zeros and false. Whether a number means
// anything is told by its `valid` flag or by the `_ok` flag beside it.
#ifndef VPTZ_VPTZ_DATA_H
#define VPTZ_VPTZ_DATA_H

#include <cstdint>
#include <string>
#include <vector>

// Passed instead of a position, speed, velocity or image setting that is to
// stay as it is.
constexpr double kVptzNotCommanded = -9999999.0;

// Which mappings of a device a NAT operation is about. Other values are passed
// to the service as they are.
enum NATType : std::int32_t {
  NAT_ALL = 0,      // all of the following
  NAT_MEDIA = 1,    // addresses of the media streams
  NAT_SERVICE = 2,  // address of the device's service
  NAT_HTTP = 3      // address of the device's web page
};

// A number that may be unknown.
struct VptzValue {
  std::int32_t valid = 0;  // 1 when `value` is known, else 0
  double value = 0.0;      // in the unit of what it describes
};

// Limits, both included, that may be unknown. Those from the database are valid
// only when `max` is not below `min`. Those from the service (QueryPtzProfiles) are
// valid as soon as it tells a `min`; `max` is then as the service sent it, which
// may be below `min`, or kVptzNotCommanded where the service does not know it.
struct VptzRange {
  std::int32_t valid = 0;  // 1 when `min` is known, else 0
  double min = 0.0;        // in the unit of what they limit
  double max = 0.0;        // the same
};

// One device.
struct VptzDeviceData {
  std::uint32_t id = 0;             // row id, also the id in commands
  std::string device_type;          // name of its type
  std::string service_uri;          // address of its service
  std::string address;              // network or port address
  std::string http_uri;             // address of its web page
  std::string nat_service_uri;      // service_uri as reachable from outside
  std::string nat_http_uri;         // http_uri as reachable from outside
  std::string mac;                  // hardware address; of a serial device its port
  std::string uuid;                 // its own unique id
  std::string authorization;        // stored credentials, a JSON text; keep it out of logs
  bool authorized = false;          // whether the service is logged in to it
  bool is_alive = false;            // whether it answers
  std::string protocol;             // name of its control protocol, such as "ONVIF" or "RS232"
  std::string host_name;            // its name in the network
  std::string manufacture;          // who makes it (kept: the stored column is spelled so)
  std::string model_name;           // what it is
  std::string firmware_version;     // what it runs
  bool deletable = false;           // whether it may be removed
  bool is_setting_applied = false;  // whether its settings have been applied
  bool tracking = false;            // whether it tracks
};

// One stored position of a PTZ profile.
struct VptzPresetData {
  std::uint32_t preset_id = 0;  // its number at the camera
  std::string token;            // its name at the camera
  std::string name;             // its name for people
  double pan = 0.0;             // stored position, degrees
  double tilt = 0.0;            // stored position, degrees
  double zoom = 0.0;            // stored position, magnification factor
};

// What one axis of a PTZ profile can do, and where it is.
struct VptzAxisData {
  bool have_absolute_move = false;   // whether it moves to positions
  bool have_continues_move = false;  // whether it moves until stopped (kept: the stored column is spelled so)
  bool have_relative_move = false;   // whether it moves by distances
  VptzValue position;                // where it was when the service last told
  VptzValue speed;                   // how fast it moved then
  VptzRange position_range;          // where it can go
  VptzRange speed_range;             // how fast it can go
  VptzRange spare_range;             // the service's own; only QueryPtzProfiles fills it
};

// One PTZ profile of a device.
struct VptzPtzData {
  std::uint32_t id = 0;                 // row id of the PTZ node, also the id in commands
  std::string node;                     // the profile's token at the device
  bool is_enable = false;               // whether it is in use
  VptzAxisData pan;                     // degrees, degrees per second
  VptzAxisData tilt;                    // degrees, degrees per second
  VptzAxisData zoom;                    // magnification factor, factor per second
  std::int32_t preset_count = 0;        // number of stored presets
  std::int32_t track_mode = 0;          // its numbers are the service's
  std::vector<VptzPresetData> presets;  // as stored
};

// One media profile of a device.
struct VptzMediaData {
  std::uint32_t id = 0;        // row id of the media source, also the id in commands
  std::string node;            // the profile's token at the device
  std::string url;             // address of the stream
  std::string nat_url;         // url as reachable from outside
  VptzValue width;             // pixels
  VptzValue height;            // pixels
  VptzValue frame_rate;        // frames per second
  VptzValue bit_rate;          // kilobits per second
  VptzRange frame_rate_range;  // frames per second
  VptzRange bit_rate_range;    // kilobits per second

  // Known and consistent.
  bool width_ok = false;
  bool height_ok = false;
  bool frame_rate_ok = false;
  bool bit_rate_ok = false;

  // Image settings; their scale is the service's.
  VptzValue brightness;
  VptzValue contrast;
  VptzValue sharpness;
  VptzRange brightness_range;
  VptzRange contrast_range;
  VptzRange sharpness_range;

  // Known and consistent.
  bool brightness_ok = false;
  bool contrast_ok = false;
  bool sharpness_ok = false;

  VptzValue auto_focus;      // its numbers are the service's
  VptzValue backlight_mode;  // its numbers are the service's
  bool is_enable = false;    // whether it is in use
};

// One NAT mapping. The service gives the members their roles.
struct VptzNATData {
  // Sent in this order, also when empty.
  std::string text1;
  std::string text2;
  std::string text3;
  std::string text4;
  std::string text5;
  std::string text6;

  // Sent behind the texts, also when 0.
  std::int32_t number1 = 0;
  std::int32_t number2 = 0;
};

// What AddDevice(protocol, params) reads for a device in the network. `protocol`
// is not read.
struct VptzNetworkDeviceParams {
  std::string mac;       // hardware address
  std::string name;      // its name in the network
  std::string protocol;  // not read: the protocol is an argument of its own
  std::string address;   // host, as the service reaches it
  std::string user;      // who the service logs in as; empty: nobody
  std::string password;  // travels over the bus, is not logged
};

// What it reads for a serial device ("RS232").
struct VptzSerialDeviceParams {
  std::string name;   // its name for people
  std::string line;   // how the port is wired; the service's texts
  int baud_rate = 0;  // bits per second
  int unit = 0;       // the device's number on the line
  std::string port;   // serial port; stands where other devices have their mac
};

#endif
