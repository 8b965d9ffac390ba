#include "causes.h"

#include <algorithm>

#include "arguments.h"
#include "people.h"
#include "presets.h"
#include "printable.h"
#include "protocols.h"
#include "serial_line.h"
#include "service_limits.h"
#include "session.h"
#include "stored.h"

namespace vptzctl {
namespace {

bool Is(const Session& session, const std::string& command) { return session.result.command == command; }

std::string CameraName(Session& session) { return "camera " + std::to_string(session.camera().id); }

bool IsOutside(double value, const VptzRange& range) {
  return range.valid && (value < range.min || value > range.max);
}

std::string Limits(const VptzRange& range, const std::string& unit) {
  return FormatNumber(range.min) + " to " + FormatNumber(range.max) + (unit.empty() ? "" : " " + unit);
}

// ---- axes ----------------------------------------------------------------------

struct NamedAxis {
  const char* name;
  const char* unit;
  VptzAxisData VptzPtzData::*axis;
};

constexpr NamedAxis kAxes[] = {
    {"pan", "deg", &VptzPtzData::pan}, {"tilt", "deg", &VptzPtzData::tilt}, {"zoom", "x", &VptzPtzData::zoom}};

std::string BadVelocity(const NamedAxis& axis, double velocity, const VptzRange& speeds) {
  if (!speeds.valid || (velocity >= -speeds.max && velocity <= speeds.max)) return "";
  return std::string(axis.name) + " drives with up to " + FormatNumber(speeds.max) + " " + axis.unit + "/s";
}

std::string BadPosition(const NamedAxis& axis, double position, const VptzRange& positions) {
  if (!IsOutside(position, positions)) return "";
  return std::string(axis.name) + " goes from " + Limits(positions, axis.unit);
}

std::string BadSpeed(const NamedAxis& axis, double speed, const VptzRange& speeds) {
  if (!speeds.valid || (speed > 0 && speed <= speeds.max)) return "";
  return "the speed of " + std::string(axis.name) + " is above 0 and up to " + FormatNumber(speeds.max) + " " +
         axis.unit + "/s";
}

std::string BadNumberOf(Session& session, const NamedAxis& axis) {
  const VptzAxisData& data = session.Ptz().*axis.axis;
  const std::string option = std::string("--") + axis.name;
  std::string reason;
  if (session.HasNumber(option)) {
    const double number = session.Number(option);
    reason = Is(session, "ptz drive") ? BadVelocity(axis, number, data.speed_range)
                                      : BadPosition(axis, number, data.position_range);
  }
  const bool has_speed = reason.empty() && session.HasNumber(option + "-speed");
  return has_speed ? BadSpeed(axis, session.Number(option + "-speed"), data.speed_range) : reason;
}

std::string BadMotion(Session& session) {
  if (!session.HasCamera() || session.camera().ptz_list.empty() || !session.Has(kProfile)) return "";
  std::string reasons;
  for (const NamedAxis& axis : kAxes) {
    const std::string reason = BadNumberOf(session, axis);
    if (!reason.empty()) reasons += (reasons.empty() ? "" : "; ") + reason;
  }
  return reasons;
}

std::string MissingAxis(Session& session) {
  std::string missing;
  for (const NamedAxis& axis : kAxes) {
    const VptzAxisData& data = session.Ptz().*axis.axis;
    const bool has = Is(session, "ptz drive") ? data.have_continues_move : data.have_absolute_move;
    if (has || !session.HasNumber(std::string("--") + axis.name)) continue;
    missing += (missing.empty() ? "" : " and ") + std::string(axis.name);
  }
  return missing.empty() ? "" : CameraName(session) + " has no " + missing;
}

// ---- image ---------------------------------------------------------------------

std::string BadLevel(Session& session, const std::string& name, VptzRange VptzMediaData::*range) {
  if (!session.HasNumber("--" + name)) return "";
  for (const VptzMediaData& media : session.camera().media_list) {
    if (IsOutside(session.Number("--" + name), media.*range)) {
      return name + " goes from " + Limits(media.*range, "");
    }
  }
  return "";
}

std::string BadSwitch(Session& session, const std::string& option, const std::string& meaning) {
  if (!session.HasNumber(option)) return "";
  const double number = session.Number(option);
  return number == 0 || number == 1 ? "" : option + " is " + meaning;
}

std::string BadPicture(Session& session) {
  for (const std::string& reason : {BadLevel(session, "brightness", &VptzMediaData::brightness_range),
                                    BadLevel(session, "contrast", &VptzMediaData::contrast_range),
                                    BadLevel(session, "sharpness", &VptzMediaData::sharpness_range),
                                    BadSwitch(session, "--backlight", "0 (off) or 1 (on)"),
                                    BadSwitch(session, "--auto-focus", "0 (manual) or 1 (auto)")}) {
    if (!reason.empty()) return reason;
  }
  return "";
}

// ---- by status -----------------------------------------------------------------

std::string OutOfRange(Session& session) {
  if (Is(session, "image set")) return BadPicture(session);
  if (Is(session, "serial add")) return "the service keeps no more ports";
  if (Is(session, "preset set") && session.Ptz().presets.size() >= kMostPresets) {
    return CameraName(session) + " has " + std::to_string(session.Ptz().presets.size()) +
           " presets, and the service keeps no more";
  }
  return BadMotion(session);
}

std::string UnsupportedAxis(Session& session) { return session.Has(kProfile) ? MissingAxis(session) : ""; }

std::string UnknownId(Session& session) {
  if (session.Has("PROTOCOL") && SpelledProtocol(session.Text("PROTOCOL")).empty()) {
    return NoSuchProtocol(session.Text("PROTOCOL"));
  }
  if (Is(session, "serial remove")) return "no port " + DevicePath(session.Text("TTY")) + " has been added";
  if (Is(session, "device slave") && session.Has("--address")) {
    return "no camera is known at " + session.Text("--address");
  }
  if (session.Has("TOKEN")) return WhyNoPreset(session, session.Text("TOKEN"));
  if (!session.HasCamera()) return "";
  return "it does not know " + CameraName(session) +
         ", though the database does; do both use the same database?";
}

std::string NotLoggedIn(Session& session) {
  constexpr char kWrong[] = "wrong user or password: ";
  if (Is(session, "device add") || Is(session, "device add-onvif")) {
    return kWrong + ("the camera at " + session.Text("ADDRESS")) + " does not take them";
  }
  if (!session.HasCamera()) return "";
  if (Is(session, "device slave")) {
    const std::string slave =
        session.Has("--address") ? "at " + session.Text("--address") : session.Text("--slave");
    return kWrong + ("the slave " + slave) + " does not take them";
  }
  if (Is(session, "device login") || session.Has("--user")) {
    return kWrong + CameraName(session) + " does not take them";
  }
  const std::string id = std::to_string(session.camera().id);
  return "camera " + id + " wants a login first: 'vptzctl device login " + id + " USER'";
}

// "http://192.0.2.1:80/x" as "192.0.2.1".
std::string Host(std::string address) {
  const std::size_t scheme = address.find("://");
  if (scheme != std::string::npos) address.erase(0, scheme + 3);
  return address.substr(0, address.find_first_of(":/"));
}

std::string CameraAt(const std::string& address) {
  for (const StoredCamera& camera : StoredCameras()) {
    if (camera.address == Host(address)) return CameraInWords(camera.id, camera.name) + " is there already";
  }
  return "";
}

std::string Busy(Session& session) {
  if (Is(session, "search")) return "a search is under way already";
  if (Is(session, "serial add"))
    return "the port " + DevicePath(session.Text("TTY")) + " has been added already";
  if (Is(session, "device add-serial"))
    return "a camera is on that port with that line, baud rate and unit already";
  if (Is(session, "nat enable")) return "an outside port of a mapping is taken already";
  return session.Has("ADDRESS") ? CameraAt(session.Text("ADDRESS")) : "";
}

std::string PoweredOff(Session& session) {
  return session.HasCamera() ? CameraName(session) + " has no power; 'vptzctl power on' switches it on" : "";
}

std::string Offline(Session& session) {
  return session.HasCamera() ? "the camera does not answer at " + session.camera().address : "";
}

std::string TooLong(const Session& session) {
  for (const Field& field : session.result.arguments) {
    const auto* text = std::get_if<std::string>(&field.value);
    if (text && text->size() > kLongestText) {
      return field.name + " is longer than " + std::to_string(kLongestText) + " bytes";
    }
  }
  return "";
}

std::string StaysWhereItIs(Session& session) {
  const bool wants_line = EqualIgnoringCase(session.Text("PROTOCOL"), "RS232");
  if ((session.camera().protocol == "RS232") == wants_line) return "";
  const std::string way = session.camera().protocol == "RS232" ? "on a serial line" : "in the network";
  return CameraName(session) + " is " + way + " and stays there; " + session.Text("PROTOCOL") + " is not";
}

std::string FollowsItself(Session& session) {
  const std::string address = session.slave() ? session.slave()->address : Host(session.Text("--address"));
  return address == session.camera().address ? "a camera cannot follow itself" : "";
}

std::string UnknownMode(const std::string& mode) {
  const bool is_known = mode == "AUTO" || mode == "MANUAL" || mode == "DEFAULT";
  return is_known ? "" : Quoted(mode) + " is no mode of automatic focus; there are AUTO, MANUAL, DEFAULT";
}

std::string BadRequest(Session& session) {
  if (Is(session, "fault add")) return "";  // its answer tells the reason
  std::string too_long = TooLong(session);
  if (!too_long.empty()) return too_long;
  if (Is(session, "device protocol")) return StaysWhereItIs(session);
  if (Is(session, "device slave")) return FollowsItself(session);
  if (Is(session, "device add") && session.Text("PROTOCOL") == "RS232") {
    return "the address of a serial camera is rs232://PORT/LINE/BAUD_RATE/UNIT; see 'vptzctl device "
           "add-serial'";
  }
  if (session.Has("ADDRESS")) return Quoted(session.Text("ADDRESS")) + " is no address";
  return session.Has("--auto-focus-mode") ? UnknownMode(session.Text("--auto-focus-mode")) : "";
}

std::string UnknownMethod(Session& session) {
  const bool of_faults = session.result.command.rfind("fault ", 0) == 0;
  return of_faults ? "it has no simulated faults" : "";
}

struct Rule {
  int status;
  std::string (*cause)(Session&);
};

constexpr Rule kRules[] = {
    {-1001, UnknownMethod}, {-1002, BadRequest},  {-1004, UnknownId}, {-1005, UnsupportedAxis},
    {-1006, OutOfRange},    {-1007, NotLoggedIn}, {-1008, Busy},      {-1009, PoweredOff},
    {-1010, Offline},
};

// What was not sent at all.
std::string NotSent(const Session& session) {
  if (session.slave()) {
    const std::string id = std::to_string(session.slave()->id);
    return "the database holds no user and password for camera " + id + "; 'vptzctl device login " + id +
           " USER' stores them; nothing was sent";
  }
  const bool serial = Is(session, "device add-serial") || Is(session, "serial line");
  return serial ? "port and line are too long for the address of a serial camera; nothing was sent" : "";
}

}  // namespace

std::string CauseOf(Session& session, int status) {
  if (status == -1) return NotSent(session);
  const auto rule = std::find_if(std::begin(kRules), std::end(kRules),
                                 [status](const Rule& row) { return row.status == status; });
  if (rule == std::end(kRules)) return "";
  const std::string cause = rule->cause(session);
  return cause.empty() ? "" : "refused by the service: " + Printable(cause);
}

}  // namespace vptzctl
