#include "preset_import.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

#include <vptz/wait.h>

#include "arguments.h"
#include "interrupt.h"
#include "people.h"
#include "printable.h"
#include "service_limits.h"
#include "session.h"

namespace vptzctl {
namespace {

using Axis = VptzAxisData VptzPtzData::*;
constexpr Axis kAxes[] = {&VptzPtzData::pan, &VptzPtzData::tilt, &VptzPtzData::zoom};
constexpr const char* kNames[] = {"pan", "tilt", "zoom"};

// How near a camera must come, in degrees and in parts of the magnification factor:
// mechanics and protocols round.
constexpr double kNear[] = {0.1, 0.1, 0.05};

constexpr std::chrono::milliseconds kPause(100);
constexpr std::chrono::minutes kLongestMove(5);

// Readings of a camera that stands still elsewhere until it is not expected to move
// any more; it may begin to move late.
constexpr int kReadingsElsewhere = 20;

bool IsNear(const AxisPositions& one, const AxisPositions& other) {
  for (std::size_t i = 0; i < one.size(); ++i) {
    if (one[i] && (!other[i] || std::abs(*one[i] - *other[i]) > kNear[i])) return false;
  }
  return true;
}

AxisPositions Whereabouts(const VptzPtzData& profile) {
  AxisPositions positions;
  for (std::size_t i = 0; i < std::size(kAxes); ++i) {
    const VptzValue& position = (profile.*kAxes[i]).position;
    if (position.valid != 0) positions[i] = position.value;
  }
  return positions;
}

// ---- the plan ------------------------------------------------------------------

void RequireReachable(const std::string& path, const FilePreset& preset, const VptzPtzData& profile) {
  for (std::size_t i = 0; i < std::size(kAxes); ++i) {
    if (!preset.positions[i]) continue;
    const double position = *preset.positions[i];
    const VptzAxisData& axis = profile.*kAxes[i];
    const VptzRange& range = axis.position_range;
    const bool outside = range.valid != 0 && (position < range.min || position > range.max);
    if (axis.have_absolute_move && !outside) continue;
    std::string message = path + ":" + std::to_string(preset.line) + ": ";
    message.append(kNames[i]).append(" of \"").append(preset.token).append("\": ");
    message += outside ? FormatNumber(position) + " is outside " + FormatNumber(range.min) + " to " +
                             FormatNumber(range.max) + ", where the camera can go"
                       : "the camera does not move this axis to positions";
    throw CommandError({"bad_file", message, ExitCode::kUsage});
  }
}

PlannedPreset::Action ActionFor(const FilePreset& preset, const VptzPtzData& profile) {
  using Action = PlannedPreset::Action;
  if (!AreKnown(preset.positions)) return Action::kUnknown;
  for (const VptzPresetData& stored : profile.presets) {
    if (stored.token != preset.token) continue;
    const bool same = stored.name == preset.name && IsNear(preset.positions, PositionsOf(stored));
    return same ? Action::kSame : Action::kReplace;
  }
  return Action::kNew;
}

// Before anything is sent: else the camera would move about until it is full.
void RequireRoom(const std::string& path, const std::vector<PlannedPreset>& plan, const VptzPtzData& profile) {
  std::size_t count = profile.presets.size();
  for (const PlannedPreset& planned : plan) {
    if (planned.action != PlannedPreset::Action::kNew || ++count <= kMostPresets) continue;
    throw CommandError({"bad_file",
                        path + ":" + std::to_string(planned.preset.line) + ": with \"" + planned.preset.token +
                            "\" the camera would have more than " + std::to_string(kMostPresets) +
                            " presets; it has " + std::to_string(profile.presets.size()),
                        ExitCode::kUsage});
  }
}

// ---- the way -------------------------------------------------------------------

std::string Tokens(const std::vector<std::string>& tokens) {
  return tokens.empty() ? "none" : Joined(tokens, ", ");
}

class Import {
 public:
  Import(Session& session, const std::vector<PlannedPreset>& plan) : session_(session), plan_(plan) {
    session.TakesItsTime();
  }

  ExitCode Run() {
    const int status = Look();
    if (status != 0) return session_.Fail(status);
    const AxisPositions start = Whereabouts(now_);
    if (!AreKnown(start)) {
      throw CommandError({"unknown_position", "the camera does not tell where it is", ExitCode::kOther});
    }
    for (const PlannedPreset& planned : plan_) {
      if (planned.IsToBeStored()) Store(planned.preset);
    }
    const bool returns = stored_.empty() || MoveTo(start) == 0;
    session_.result.answers = {{"stored", static_cast<std::uint32_t>(stored_.size()), ""},
                               {"unchanged", Count(PlannedPreset::Action::kSame), ""},
                               {"left_out", Count(PlannedPreset::Action::kUnknown), ""},
                               {"returns", returns, ""}};
    return session_.Finish(0);
  }

 private:
  std::uint32_t Count(PlannedPreset::Action action) const {
    return static_cast<std::uint32_t>(std::count_if(
        plan_.begin(), plan_.end(), [&](const PlannedPreset& planned) { return planned.action == action; }));
  }

  // Reads where the camera is.
  int Look() {
    return session_.client().QueryPtzProfiles(session_.camera().id, session_.Ptz().node, &now_,
                                              session_.timeout);
  }

  int MoveTo(const AxisPositions& to) {
    return session_.camera().AbsoluteMove(*to[0], *to[1], *to[2], kVptzNotCommanded, kVptzNotCommanded,
                                          kVptzNotCommanded, session_.PtzIndex(), session_.timeout);
  }

  void Store(const FilePreset& preset) {
    session_.output.Progress("moving to " + Printable(preset.token));
    RequireDone(MoveTo(preset.positions));
    WaitUntilThere(preset);
    RequireDone(session_.camera().SetPreset(preset.name, preset.token, session_.PtzIndex(), session_.timeout));
    stored_.push_back(preset.token);
    session_.result.answers = {{"token", preset.token, ""}, {"name", preset.name, ""}, {"stored", true, ""}};
    session_.output.Event(session_.result);
    session_.result.answers.clear();
  }

  void WaitUntilThere(const FilePreset& preset) {
    int status = 0;
    int elsewhere = 0;
    bool there = false;
    // None at first: the readings before the command tell nothing of this move.
    std::optional<VptzPtzData> before;
    const auto look = [&] {
      status = Look();
      const bool still = before && VptzIsStill(*before, now_);
      before = now_;
      there = still && IsNear(preset.positions, Whereabouts(now_));
      elsewhere = still && !there ? elsewhere + 1 : 0;
      return there || status != 0 || interrupt_.Arrived() || elsewhere == kReadingsElsewhere;
    };
    VptzWaitUntil(look, kLongestMove, kPause);
    if (interrupt_.Arrived()) Abandon({"interrupted", "interrupted", ExitCode::kOther});
    RequireDone(status);
    if (!there) {
      Abandon({"not_reached", "the camera does not come to \"" + preset.token + "\"; it may be moved by others",
               ExitCode::kOther});
    }
  }

  void RequireDone(int status) {
    if (interrupt_.Arrived()) Abandon({"interrupted", "interrupted", ExitCode::kOther});
    if (status != 0) Abandon(Explain(status));
  }

  // Where the camera stands then it stays: a second failure must not set it moving.
  [[noreturn]] void Abandon(Failure failure) {
    const int stopped = session_.camera().PtzStop(session_.PtzIndex(), true, true, true, session_.timeout);
    std::vector<std::string> left;
    for (const PlannedPreset& planned : plan_) {
      const bool stored = std::count(stored_.begin(), stored_.end(), planned.preset.token) > 0;
      if (planned.IsToBeStored() && !stored) left.push_back(planned.preset.token);
    }
    failure.message += stopped == 0 ? "; the camera has been stopped" : "; the camera could not be stopped";
    failure.message += "; stored: " + Tokens(stored_) + "; not stored: " + Tokens(left);
    throw CommandError(std::move(failure));
  }

  Session& session_;
  const std::vector<PlannedPreset>& plan_;
  const Interrupt interrupt_;
  VptzPtzData now_;
  std::vector<std::string> stored_;
};

}  // namespace

std::string PlannedPreset::ActionText() const {
  switch (action) {
    case Action::kNew:
      return "new";
    case Action::kReplace:
      return "replaces";
    case Action::kSame:
      return "unchanged";
    case Action::kUnknown:
      break;
  }
  return "left out: no position";
}

std::vector<PlannedPreset> PlanImport(const std::string& path, const VptzPtzData& profile) {
  std::vector<PlannedPreset> plan;
  for (FilePreset& preset : ReadPresetDocument(path)) {
    RequireReachable(path, preset, profile);
    const PlannedPreset::Action action = ActionFor(preset, profile);
    plan.push_back({std::move(preset), action});
  }
  RequireRoom(path, plan, profile);
  return plan;
}

ExitCode RunImport(Session& session, const std::vector<PlannedPreset>& plan) {
  return Import(session, plan).Run();
}

}  // namespace vptzctl
