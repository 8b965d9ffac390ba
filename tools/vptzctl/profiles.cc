#include <chrono>
#include <optional>

#include <vptz/wait.h>

#include "command.h"
#include "describe.h"
#include "interrupt.h"
#include "session.h"

namespace vptzctl {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

Row PositionRow(const std::string& name, const VptzAxisData& axis, const std::string& unit) {
  return {name,
          {{"position", From(axis.position), unit, false}, {"speed", From(axis.speed), unit + "/s", false}}};
}

Row AbilityRow(const std::string& name, const VptzAxisData& axis, const std::string& unit) {
  return {name,
          {{"moves_to", axis.have_absolute_move, ""},
           {"drives", axis.have_continues_move, ""},
           {"moves_by", axis.have_relative_move, ""},
           {"position_range", From(axis.position_range), unit},
           {"speed_range", From(axis.speed_range), unit + "/s"},
           {"spare_range", From(axis.spare_range), ""}}};
}

int ReadPtz(Session& session, VptzPtzData* profile) {
  return session.client().QueryPtzProfiles(session.camera().id, session.Ptz().node, profile, session.timeout);
}

int ReadPosition(Session& session, VptzPtzData* profile) {
  const int status = ReadPtz(session, profile);
  session.result.answers = {{"track_mode", static_cast<std::uint32_t>(profile->track_mode), ""}};
  session.result.table = {PositionRow("pan", profile->pan, "deg"), PositionRow("tilt", profile->tilt, "deg"),
                          PositionRow("zoom", profile->zoom, "x")};
  return status;
}

ExitCode Interrupted(Session& session) {
  session.output.EndUpdates();
  return ExitCode::kDone;
}

ExitCode Watch(Session& session) {
  session.TakesItsTime();
  const std::chrono::duration<double> interval(session.Number("--interval"));
  const Interrupt interrupt;
  const SteadyTime begin = std::chrono::steady_clock::now();
  std::optional<VptzPtzData> before;
  while (true) {
    VptzPtzData now;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    const int status = ReadPosition(session, &now);
    if (interrupt.Arrived()) return Interrupted(session);
    if (status != 0) return session.Fail(status);
    session.result.answers.push_back({"elapsed", RoundedToThousandths(elapsed.count()), "s", false});
    session.output.Update(session.result, status);
    if (!session.output.Complete()) return ExitCode::kOther;
    if (session.Flag("--until-still") && before && VptzIsStill(*before, now)) return ExitCode::kDone;
    if (interrupt.WaitFor(interval)) return Interrupted(session);
    before = now;
  }
}

ExitCode Position(Session& session) {
  VptzPtzData profile;
  return session.Finish(ReadPosition(session, &profile));
}

// Ranges as they are now; what else the profile can do comes from the database.
ExitCode PtzProfile(Session& session) {
  VptzPtzData& profile = session.Ptz();
  const int status = ReadPtz(session, &profile);
  session.result.answers = {
      {"id", profile.id, ""},
      {"token", profile.node, ""},
      {"enabled", profile.is_enable, ""},
      {"track_mode", static_cast<std::uint32_t>(profile.track_mode), ""},
      {"presets", static_cast<std::uint32_t>(profile.presets.size()), ""},
  };
  session.result.table = {AbilityRow("pan", profile.pan, "deg"), AbilityRow("tilt", profile.tilt, "deg"),
                          AbilityRow("zoom", profile.zoom, "x")};
  return session.Finish(status);
}

ExitCode MediaProfile(Session& session) {
  VptzMediaData& media = session.Media();
  const int status =
      session.client().QueryMediaProfiles(session.camera().id, media.node, &media, session.timeout);
  session.result.answers = {
      {"id", media.id, ""},
      {"token", media.node, ""},
      {"enabled", media.is_enable, ""},
      {"url", Known(media.url), ""},
      {"width", From(media.width), "px"},
      {"height", From(media.height), "px"},
      {"frame_rate", From(media.frame_rate), "frames/s"},
      {"frame_rate_range", From(media.frame_rate_range), "frames/s"},
      {"bit_rate", From(media.bit_rate), "kbit/s"},
      {"bit_rate_range", From(media.bit_rate_range), "kbit/s"},
  };
  return session.Finish(status);
}

Argument Node() { return Profile("PTZ profile"); }

Command WatchRow() {
  return {"ptz",
          "watch",
          "Shows where the axes are, repeatedly, until Ctrl-C.",
          {"QueryPtzProfiles"},
          {Camera(), Node(),
           NumberWithin("--interval", "S", "s", {0.01, 3600}, "seconds between two readings")
               .Else(0.5)
               .Unreported(),
           Flag("--until-still", "end when no axis moves any more").Unreported()},
          {},
          Watch};
}

}  // namespace

std::vector<Command> ProfileCommands() {
  return {
      {"ptz",
       "position",
       "Shows where the axes are and how fast they move.",
       {"QueryPtzProfiles"},
       {Camera(), Node()},
       {},
       Position},
      WatchRow(),
      {"profile",
       "ptz",
       "Shows what a PTZ profile can do.",
       {"QueryPtzProfiles"},
       {Camera(), Node()},
       {},
       PtzProfile},
      {"profile",
       "media",
       "Shows the video of a media profile.",
       {"QueryMediaProfiles"},
       {Camera(), Profile("media profile")},
       {},
       MediaProfile},
  };
}

}  // namespace vptzctl
