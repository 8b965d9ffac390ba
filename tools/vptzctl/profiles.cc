#include <chrono>

#include "command.h"
#include "interrupt.h"
#include "session.h"

namespace vptzctl {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

Value From(const VptzValue& value) { return value.valid ? Value(value.value) : Value(); }

Value From(const VptzRange& range) { return range.valid ? Value(Range{range.min, range.max}) : Value(); }

Row AxisRow(const std::string& name, const VptzAxisData& axis, const std::string& unit) {
  return {name,
          {{"position", From(axis.position), unit, false},
           {"speed", From(axis.speed), unit + "/s", false},
           {"position_range", From(axis.position_range), unit},
           {"speed_range", From(axis.speed_range), unit + "/s"}}};
}

int ReadPosition(Session& session, VptzPtzData* profile) {
  const int status = session.client.QueryPtzProfiles(session.Integer("DEVICE"), session.Text("--token"),
                                                     profile, session.timeout);
  session.result.answers = {{"track_mode", static_cast<std::uint32_t>(profile->track_mode), ""}};
  session.result.table = {AxisRow("pan", profile->pan, "deg"), AxisRow("tilt", profile->tilt, "deg"),
                          AxisRow("zoom", profile->zoom, "x")};
  return status;
}

// Where the speed is not known, an axis is still when it has not moved since
// the last reading.
bool IsStill(const VptzAxisData& before, const VptzAxisData& now) {
  if (now.speed.valid) return now.speed.value == 0;
  return before.position.valid && now.position.valid && before.position.value == now.position.value;
}

bool IsStill(const VptzPtzData& before, const VptzPtzData& now) {
  return IsStill(before.pan, now.pan) && IsStill(before.tilt, now.tilt) && IsStill(before.zoom, now.zoom);
}

ExitCode Interrupted(Session& session) {
  session.output.EndUpdates();
  return ExitCode::kDone;
}

ExitCode Watch(Session& session) {
  const std::chrono::duration<double> interval(session.Number("--interval"));
  const Interrupt interrupt;
  const SteadyTime begin = std::chrono::steady_clock::now();
  VptzPtzData before;
  while (true) {
    VptzPtzData now;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    const int status = ReadPosition(session, &now);
    if (interrupt.Arrived()) return Interrupted(session);
    if (status != 0) return session.Fail(status);
    session.result.answers.push_back({"elapsed", RoundedToThousandths(elapsed.count()), "s", false});
    session.output.Update(session.result, status);
    if (!session.output.Complete()) return ExitCode::kOther;
    if (session.Flag("--until-still") && IsStill(before, now)) return ExitCode::kDone;
    if (interrupt.WaitFor(interval)) return Interrupted(session);
    before = now;
  }
}

ExitCode Position(Session& session) {
  if (session.Flag("--watch")) return Watch(session);
  VptzPtzData profile;
  return session.Finish(ReadPosition(session, &profile));
}

ExitCode Media(Session& session) {
  VptzMediaData media;
  const int status = session.client.QueryMediaProfiles(session.Integer("DEVICE"), session.Text("--token"),
                                                       &media, session.timeout);
  session.result.answers = {
      {"width", From(media.width), "px"},
      {"height", From(media.height), "px"},
      {"frame_rate", From(media.frame_rate), "frames/s"},
      {"bit_rate", From(media.bit_rate), "kbit/s"},
      {"brightness", From(media.brightness), ""},
      {"contrast", From(media.contrast), ""},
      {"sharpness", From(media.sharpness), ""},
      {"auto_focus", From(media.auto_focus), ""},
      {"backlight_mode", From(media.backlight_mode), ""},
  };
  return session.Finish(status);
}

Argument Device() { return Id("DEVICE", "row id of the device"); }

Argument Token(const std::string& fallback) {
  return Text("--token", "TOKEN", "the profile's token at the device").Else(fallback);
}

}  // namespace

std::vector<Command> ProfileCommands() {
  return {
      {"",
       "position",
       "Shows where the axes are, how fast they move, and their ranges.",
       {"QueryPtzProfiles"},
       {Device(), Token("ptz0"), Flag("--watch", "read again and again, until Ctrl-C").Unreported(),
        NumberWithin("--interval", "S", "s", {0.01, 3600}, "seconds between two readings")
            .Else(0.5)
            .Needs("--watch")
            .Unreported(),
        Flag("--until-still", "end when no axis moves any more").Needs("--watch").Unreported()},
       {},
       Position},
      {"",
       "media",
       "Shows the video and image values of a media profile.",
       {"QueryMediaProfiles"},
       {Device(), Token("main")},
       {},
       Media},
  };
}

}  // namespace vptzctl
