#include "known_values.h"

#include <algorithm>

#include "command.h"
#include "protocols.h"

namespace vptzctl {
namespace {

using Candidates = std::vector<Candidate>;

bool HaveName(const std::vector<CVptzDevice>& devices, const std::string& name) {
  return std::count_if(devices.begin(), devices.end(),
                       [&](const CVptzDevice& device) { return device.host_name == name; }) == 1;
}

// Names that say which camera, and all ids.
Candidates Cameras(const LineSoFar&, const Library& library) {
  const std::vector<CVptzDevice>& devices = *library().QueryDeviceAll();
  Candidates names;
  Candidates ids;
  for (const CVptzDevice& device : devices) {
    const std::string id = std::to_string(device.id);
    ids.push_back({id, device.host_name});
    if (HaveName(devices, device.host_name)) names.push_back({device.host_name, id + ", " + device.protocol});
  }
  names.insert(names.end(), ids.begin(), ids.end());
  return names;
}

std::string Given(const LineSoFar& line, const std::string& name) {
  const auto found = line.given.find(name);
  return found == line.given.end() ? "" : found->second;
}

// Null when the command line names no camera that is known.
const CVptzDevice* TheCamera(const LineSoFar& line, const Library& library) {
  const std::string named = Given(line, kCamera);
  if (named.empty()) return nullptr;
  const std::vector<CVptzDevice>& devices = *library().QueryDeviceAll();
  const auto found = std::find_if(devices.begin(), devices.end(), [&](const CVptzDevice& device) {
    return device.host_name == named || std::to_string(device.id) == named;
  });
  return found == devices.end() ? nullptr : &*found;
}

// Those of the profile that the command line names, else of the first.
std::vector<VptzPresetData> Presets(const LineSoFar& line, const Library& library) {
  const CVptzDevice* camera = TheCamera(line, library);
  const std::string profile = Given(line, kProfile);
  const std::size_t index = profile.empty() ? 0 : std::strtoul(profile.c_str(), nullptr, 10) - 1;
  const bool known = camera != nullptr && index < camera->ptz_list.size();
  return known ? camera->ptz_list[index].presets : std::vector<VptzPresetData>();
}

Candidates PresetTokens(const LineSoFar& line, const Library& library) {
  Candidates tokens;
  const std::vector<VptzPresetData> presets = Presets(line, library);
  for (const VptzPresetData& preset : presets) tokens.push_back({preset.token, preset.name});
  for (const VptzPresetData& preset : presets) {
    const auto has_name = [&](const VptzPresetData& other) { return other.name == preset.name; };
    const bool one = std::count_if(presets.begin(), presets.end(), has_name) == 1;
    if (one && preset.name != preset.token) tokens.push_back({preset.name, preset.token});
  }
  return tokens;
}

Candidates PresetNumbers(const LineSoFar& line, const Library& library) {
  Candidates numbers;
  for (const VptzPresetData& preset : Presets(line, library)) {
    numbers.push_back({std::to_string(preset.preset_id), preset.name});
  }
  return numbers;
}

template <class Profile>
Candidates Numbered(const std::vector<Profile>& profiles) {
  Candidates numbers;
  for (const Profile& profile : profiles) {
    numbers.push_back({std::to_string(numbers.size() + 1), profile.node});
  }
  return numbers;
}

Candidates Profiles(const LineSoFar& line, const Library& library) {
  const CVptzDevice* camera = TheCamera(line, library);
  if (camera == nullptr) return {};
  const bool media = line.wanted->help == Profile("media profile").help;
  return media ? Numbered(camera->media_list) : Numbered(camera->ptz_list);
}

Candidates Protocols(const LineSoFar&, const Library& library) {
  library();
  Candidates names;
  for (const std::string& name : AllProtocols()) names.push_back({name, ""});
  return names;
}

// A list between commas: what is there stays, and is not offered again.
Candidates ProtocolLists(const LineSoFar& line, const Library& library) {
  const std::string before = line.typed.substr(0, line.typed.rfind(',') + 1);
  Candidates lists;
  for (const Candidate& protocol : Protocols(line, library)) {
    const bool named = ("," + before).find("," + protocol.text + ",") != std::string::npos;
    if (!named) lists.push_back({before + protocol.text, ""});
  }
  return lists;
}

Candidates Signals(const LineSoFar&, const Library&) {
  return {{"update_devices", "rows of the database have changed"},
          {"finish/search_device", "a search has ended"}};
}

struct Source {
  const char* group;  // of the command; null: any
  const char* argument;
  Candidates (*values)(const LineSoFar&, const Library&);
};

constexpr Source kSources[] = {
    {nullptr, kCamera, Cameras},        {nullptr, "--slave", Cameras},
    {nullptr, kProfile, Profiles},      {nullptr, "PROTOCOL", Protocols},
    {nullptr, "--protocol", Protocols}, {nullptr, "--protocols", ProtocolLists},
    {nullptr, "--signal", Signals},     {"preset", "TOKEN", PresetTokens},
    {"preset", "--id", PresetNumbers},
};

}  // namespace

std::vector<Candidate> KnownValues(const LineSoFar& line, const Library& library) {
  for (const Source& source : kSources) {
    const bool here = source.group == nullptr || line.command->group == source.group;
    if (here && line.wanted->name == source.argument) return source.values(line, library);
  }
  return {};
}

bool ToldByTheTool(const Argument& argument) {
  if (argument.name == kCommandWords) return true;
  return std::any_of(std::begin(kSources), std::end(kSources),
                     [&](const Source& source) { return argument.name == source.argument; });
}

}  // namespace vptzctl
