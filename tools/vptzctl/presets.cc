#include "presets.h"

#include <algorithm>

#include "arrival.h"
#include "command.h"
#include "mistakes.h"
#include "people.h"
#include "session.h"
#include "speeds.h"

namespace vptzctl {
namespace {

std::vector<Field> PresetRow(const VptzPresetData& preset) {
  return {{"id", preset.preset_id, ""}, {"token", preset.token, ""},  {"name", preset.name, ""},
          {"pan", preset.pan, "deg"},   {"tilt", preset.tilt, "deg"}, {"zoom", preset.zoom, "x"}};
}

ExitCode PresetList(Session& session) {
  const VptzPtzData& ptz = session.Ptz();
  List presets = {"presets", {}};
  for (const VptzPresetData& preset : ptz.presets) presets.rows.push_back(PresetRow(preset));
  const int count = session.client().QueryPresetCountByPtz(static_cast<int>(ptz.id));
  session.result.answers = {{"count", static_cast<std::uint32_t>(count), ""}};
  session.result.lists = {presets};
  return session.Finish(0);
}

// The number that the command line names, which the camera must know. Cameras
// of the protocol NDIHX may count from elsewhere; that is the library's to know.
std::uint32_t KnownId(Session& session) {
  const std::uint32_t id = session.Integer("--id");
  if (session.camera().protocol == "NDIHX") return id;
  for (const VptzPresetData& preset : session.Ptz().presets) {
    if (preset.preset_id == id) return id;
  }
  throw CommandError({"unknown_preset", "the database has no preset with this id", ExitCode::kDatabase});
}

// The preset that a verb is about, and that its result names.
std::string TokenOf(Session& session) {
  std::string token = PresetToken(session, session.Text("TOKEN"));
  session.result.SetArgument("token", token);
  return token;
}

const VptzPresetData* FindToken(const std::vector<VptzPresetData>& presets, const std::string& token) {
  const auto found = std::find_if(presets.begin(), presets.end(),
                                  [&token](const VptzPresetData& preset) { return preset.token == token; });
  return found == presets.end() ? nullptr : &*found;
}

// The name of a preset that gets neither token nor name.
std::string FreeName(const std::vector<VptzPresetData>& presets) {
  std::uint32_t number = 1;
  while (FindToken(presets, "preset" + std::to_string(number)) != nullptr) ++number;
  return "preset" + std::to_string(number);
}

// Puts into the result which preset was stored: the service has written its row
// before it answered.
ExitCode Stored(Session& session, const std::vector<VptzPresetData>& before) {
  session.ReloadCamera();
  const std::string token = session.Text("TOKEN");
  const VptzPresetData* stored = nullptr;
  for (const VptzPresetData& preset : session.Ptz().presets) {
    const bool is_new = FindToken(before, preset.token) == nullptr;
    const bool is_it = session.Given("--id") ? preset.preset_id == session.Integer("--id")
                       : token.empty()       ? is_new
                                             : preset.token == token;
    if (is_it) stored = &preset;
  }
  const bool is_news = token.empty() && !session.Given("--id");
  if (stored && is_news) session.result.SetArgument("token", stored->token);
  session.result.answers = {{"number", stored ? Value(stored->preset_id) : Value(), "", true, !is_news}};
  return session.Finish(0);
}

ExitCode PresetSet(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  const std::vector<VptzPresetData> before = session.Ptz().presets;
  if (session.Given("--id")) {
    const int status = camera.SetPresetById(KnownId(session), node, session.timeout);
    return status == 0 ? Stored(session, before) : session.Fail(status);
  }
  const std::string token = session.Text("TOKEN");
  const std::string name = session.Given("--name") ? session.Text("--name")
                           : token.empty()         ? FreeName(before)
                                                   : token;
  session.result.SetArgument("name", name);
  const int status = camera.SetPreset(name, token, node, session.timeout);
  return status == 0 ? Stored(session, before) : session.Fail(status);
}

ExitCode PresetGoto(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  const double pan = session.Number("--pan-speed");
  const double tilt = session.Number("--tilt-speed");
  const double zoom = session.Number("--zoom-speed");
  Arrival arrival(session);
  if (session.Given("--id")) {
    return arrival.Finish(camera.GotoPresetById(KnownId(session), pan, tilt, zoom, node, session.timeout));
  }
  return arrival.Finish(camera.GotoPreset(TokenOf(session), pan, tilt, zoom, node, session.timeout));
}

ExitCode PresetRemove(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  if (session.Given("--id")) {
    return session.Finish(camera.RemovePresetById(KnownId(session), node, session.timeout));
  }
  return session.Finish(camera.RemovePreset(TokenOf(session), node, session.timeout));
}

ExitCode PresetRefresh(Session& session) {
  if (!session.Given(kProfile)) return session.Finish(session.camera().UpdateDevicePresets(session.timeout));
  return session.Finish(session.camera().UpdatePresets(session.PtzIndex(), session.timeout));
}

Argument Node() { return Profile("PTZ profile"); }

Argument Token() {
  return Text("TOKEN", "", "the preset's token, or its name when only one has it").Optional();
}

Argument PresetId() {
  return Integer("--id", {0, kLargestInteger}, "the preset's number instead of its token")
      .Placeholder("N")
      .Excludes({"TOKEN"});
}

Command GotoRow() {
  return {"preset",
          "goto",
          "Moves to a stored position.",
          {"GotoPreset", "GotoPresetById"},
          {Camera(), Token(), PresetId(), PanSpeed(), TiltSpeed(), ZoomSpeed(), Node(), WaitArguments()[0],
           WaitArguments()[1]},
          {"TOKEN", "--id"},
          PresetGoto};
}

Command SetRow() {
  return {"preset",
          "set",
          "Stores the present position. A preset named by its number keeps its name; without TOKEN and --id "
          "the service makes a new one.",
          {"SetPreset", "SetPresetById"},
          {Camera(), Text("TOKEN", "", "the preset's name at the camera; without it a free one").Optional(),
           PresetId(), Text("--name", "NAME", "its name for people; without it the token").Excludes({"--id"}),
           Node()},
          {},
          PresetSet};
}

// "preset1 (Stage), preset2 (Lectern)"; not all of very many.
std::string Listed(const std::vector<VptzPresetData>& presets) {
  constexpr std::size_t kMost = 12;
  std::string list;
  for (std::size_t i = 0; i < presets.size() && i < kMost; ++i) {
    list += (i == 0 ? "" : ", ") + presets[i].token + " (" + presets[i].name + ")";
  }
  return list + (presets.size() > kMost ? ", ..." : "");
}

[[noreturn]] void FailAmbiguous(const std::string& text, const std::vector<VptzPresetData>& named) {
  throw CommandError({"ambiguous_preset",
                      "several presets are named \"" + text + "\": " + Listed(named) + "; give a token",
                      ExitCode::kDatabase});
}

}  // namespace

std::string PresetToken(Session& session, const std::string& text) {
  const std::vector<VptzPresetData>& presets = session.Ptz().presets;
  if (FindToken(presets, text) != nullptr) return text;
  std::vector<VptzPresetData> named;
  std::copy_if(presets.begin(), presets.end(), std::back_inserter(named),
               [&text](const VptzPresetData& preset) { return preset.name == text; });
  if (named.size() > 1) FailAmbiguous(text, named);
  return named.empty() ? text : named.front().token;
}

std::string WhyNoPreset(Session& session, const std::string& text) {
  const std::vector<VptzPresetData>& presets = session.Ptz().presets;
  const std::string camera = "camera " + std::to_string(session.camera().id);
  if (FindToken(presets, PresetToken(session, text)) != nullptr) {
    return camera + " has lost the preset " + Quoted(text) +
           ", which the database still has; 'vptzctl preset refresh " + std::to_string(session.camera().id) +
           "' brings both in step";
  }
  if (presets.empty()) return camera + " has no presets";
  std::vector<std::string> names;
  for (const VptzPresetData& preset : presets) {
    names.push_back(preset.token);
    names.push_back(preset.name);
  }
  return "no preset of " + camera + " has the token or the name " + Quoted(text) + Suggestion(text, names) +
         "; there are " + Listed(presets);
}

std::vector<Command> PresetCommands() {
  return {
      {"preset",
       "list",
       "Lists the stored positions in the database. Needs no service.",
       {"QueryPresetCountByPtz"},
       {Camera(), Node()},
       {},
       PresetList,
       Needs::kDatabase},
      GotoRow(),
      SetRow(),
      {"preset",
       "remove",
       "Removes a stored position.",
       {"RemovePreset", "RemovePresetById"},
       {Camera(), Token(), PresetId(), Node()},
       {"TOKEN", "--id"},
       PresetRemove},
      {"preset",
       "refresh",
       "Has the service read the presets from the camera: of one PTZ profile, or of all.",
       {"UpdatePresets", "UpdateDevicePresets"},
       {Camera(), Node().Else({})},
       {},
       PresetRefresh},
  };
}

}  // namespace vptzctl
