#include <algorithm>
#include <cstdio>

#include <unistd.h>

#include "command.h"
#include "parser.h"
#include "preset_import.h"
#include "prompt.h"
#include "session.h"

namespace vptzctl {
namespace {

Value ValueOf(const std::optional<double>& position) { return position ? Value(*position) : Value(); }

std::vector<Field> PositionFields(const AxisPositions& positions) {
  return {{"pan", ValueOf(positions[0]), "deg"},
          {"tilt", ValueOf(positions[1]), "deg"},
          {"zoom", ValueOf(positions[2]), "x"}};
}

List Exported(const VptzPtzData& profile) {
  List list = {"presets", {}};
  for (const VptzPresetData& preset : profile.presets) {
    std::vector<Field> row = {
        {"id", preset.preset_id, ""}, {"token", preset.token, ""}, {"name", preset.name, ""}};
    for (const Field& field : PositionFields(PositionsOf(preset))) row.push_back(field);
    list.rows.push_back(row);
  }
  return list;
}

std::uint32_t CountUnknown(const VptzPtzData& profile) {
  return static_cast<std::uint32_t>(
      std::count_if(profile.presets.begin(), profile.presets.end(),
                    [](const VptzPresetData& preset) { return !AreKnown(PositionsOf(preset)); }));
}

// What is printed with --json can be imported, too.
ExitCode Export(Session& session) {
  const VptzPtzData& profile = session.Ptz();
  const std::string document = PresetDocument(session.camera(), profile);
  const std::uint32_t unknown = CountUnknown(profile);
  if (unknown > 0) {
    std::fprintf(stderr, "vptzctl: presets without a known position, which no import can store: %u\n", unknown);
  }
  if (!session.Given("FILE") && !session.invocation().json) {
    session.output.Print(document);
    return ExitCode::kDone;
  }
  if (session.Given("FILE")) WriteNewFile(session.Text("FILE"), document, session.Flag("--replace"));
  session.result.answers = {{"format", std::string(kPresetFormat), ""},
                            {"version", std::uint32_t{kPresetVersion}, ""},
                            {"unknown_positions", unknown, ""}};
  session.result.lists = {Exported(profile)};
  return session.Finish(0);
}

List Planned(const std::vector<PlannedPreset>& plan) {
  List list = {"presets", {}};
  for (const PlannedPreset& planned : plan) {
    std::vector<Field> row = {{"token", planned.preset.token, ""},
                              {"name", planned.preset.name, ""},
                              {"action", planned.ActionText(), ""}};
    for (const Field& field : PositionFields(planned.preset.positions)) row.push_back(field);
    list.rows.push_back(row);
  }
  return list;
}

// Elsewhere than at a terminal nobody would answer.
void RequireConfirmation(Session& session, const std::vector<PlannedPreset>& plan) {
  const auto moves = std::count_if(plan.begin(), plan.end(),
                                   [](const PlannedPreset& planned) { return planned.IsToBeStored(); });
  if (moves == 0) return;
  const std::string what = "move to " + std::to_string(moves) + " positions";
  if (!session.Flag("--yes") && (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0)) {
    throw CommandError(
        {"not_confirmed",
         "the camera would " + what + "; nothing was done. --yes agrees to that, --check shows them",
         ExitCode::kUsage});
  }
  Confirm(session, "The camera will " + what + ", one after the other. Go on?");
}

ExitCode Import(Session& session) {
  const std::vector<PlannedPreset> plan = PlanImport(session.Text("FILE"), session.Ptz());
  if (session.Flag("--check")) {
    session.result.lists = {Planned(plan)};
    return session.Finish(0);
  }
  RequireConfirmation(session, plan);
  return RunImport(session, plan);
}

Argument Node() { return Profile("PTZ profile"); }

}  // namespace

std::vector<Command> PresetFileCommands() {
  return {{"preset",
           "export",
           "Writes the presets in the database as JSON: into a file, or to standard output. Needs no service.",
           {},
           {Camera(), File("FILE", "", "the file to write").Optional(),
            Flag("--replace", "replace an existing file"), Node()},
           {},
           Export,
           Needs::kDatabase},
          {"preset",
           "import",
           "Stores the presets of a file at a camera, which moves to each of them, then back to where it was.",
           {"AbsoluteMove", "QueryPtzProfiles", "SetPreset", "PtzStop"},
           {Camera(), File("FILE", "", "a file that an export has written"), YesArgument(),
            Flag("--check", "only show what the command would do"), Node()},
           {},
           Import}};
}

}  // namespace vptzctl
