#include "command.h"
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

ExitCode PresetSet(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  if (session.Given("--id"))
    return session.Finish(camera.SetPresetById(KnownId(session), node, session.timeout));
  const std::string token = session.Text("TOKEN");
  const std::string name = session.Given("--name") ? session.Text("--name") : token;
  session.result.SetArgument("name", name);
  return session.Finish(camera.SetPreset(name, token, node, session.timeout));
}

ExitCode PresetGoto(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  const double pan = session.Number("--pan-speed");
  const double tilt = session.Number("--tilt-speed");
  const double zoom = session.Number("--zoom-speed");
  if (session.Given("--id")) {
    return session.Finish(camera.GotoPresetById(KnownId(session), pan, tilt, zoom, node, session.timeout));
  }
  return session.Finish(camera.GotoPreset(session.Text("TOKEN"), pan, tilt, zoom, node, session.timeout));
}

ExitCode PresetRemove(Session& session) {
  CVptzDevice& camera = session.camera();
  const unsigned int node = session.PtzIndex();
  if (session.Given("--id")) {
    return session.Finish(camera.RemovePresetById(KnownId(session), node, session.timeout));
  }
  return session.Finish(camera.RemovePreset(session.Text("TOKEN"), node, session.timeout));
}

ExitCode PresetRefresh(Session& session) {
  if (!session.Given(kProfile)) return session.Finish(session.camera().UpdateDevicePresets(session.timeout));
  return session.Finish(session.camera().UpdatePresets(session.PtzIndex(), session.timeout));
}

Argument Node() { return Profile("PTZ profile"); }

Argument Token() { return Text("TOKEN", "", "the preset's name at the camera").Optional(); }

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
          {Camera(), Token(), PresetId(), PanSpeed(), TiltSpeed(), ZoomSpeed(), Node()},
          {"TOKEN", "--id"},
          PresetGoto};
}

Command SetRow() {
  return {"preset",
          "set",
          "Stores the present position. A preset that is named by its number keeps its name.",
          {"SetPreset", "SetPresetById"},
          {Camera(), Token(), PresetId(),
           Text("--name", "NAME", "its name for people; without it the token").Excludes({"--id"}), Node()},
          {"TOKEN", "--id"},
          PresetSet};
}

}  // namespace

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
