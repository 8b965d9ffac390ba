#include "preset_document.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "failures.h"
#include "service_limits.h"

namespace vptzctl {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kAxes[] = {"pan", "tilt", "zoom"};

[[noreturn]] void Fail(const std::string& name, const std::string& message) {
  throw CommandError({name, message, ExitCode::kUsage});
}

bool HoldsZero(const std::string& text) { return text.find('\0') != std::string::npos; }

// ---- writing -------------------------------------------------------------------

Json JsonOf(const VptzPresetData& preset) {
  Json object = {{"id", preset.preset_id}, {"token", preset.token}, {"name", preset.name}};
  const AxisPositions positions = PositionsOf(preset);
  for (std::size_t i = 0; i < std::size(kAxes); ++i) {
    object[kAxes[i]] = positions[i] ? Json(*positions[i]) : Json(nullptr);
  }
  return object;
}

[[noreturn]] void FailUnwritable(const std::string& what, const std::string& reason) {
  throw CommandError({"unusable_database", what + " " + reason, ExitCode::kDatabase});
}

// One line. No import takes a zero byte: a text ends there for much of the way.
std::string LineOf(const VptzPresetData& preset) {
  const std::string what = "preset " + std::to_string(preset.preset_id) + " (" + preset.token + ")";
  if (HoldsZero(preset.token) || HoldsZero(preset.name)) {
    FailUnwritable(what, "has a zero byte in its name or token, with which it cannot be stored again");
  }
  try {
    return JsonOf(preset).dump();
  } catch (const Json::type_error&) {
    FailUnwritable(what, "has a name or token that is no UTF-8, which JSON cannot hold");
  }
}

std::string Lines(const CVptzDevice& camera, const VptzPtzData& profile) {
  const Json about = {{"id", camera.id},
                      {"name", camera.host_name},
                      {"protocol", camera.protocol},
                      {"model", camera.model_name}};
  std::string presets;
  for (const VptzPresetData& preset : profile.presets) {
    presets += (presets.empty() ? "\n    " : ",\n    ") + LineOf(preset);
  }
  return "{\n  \"format\": " + Json(kPresetFormat).dump() +
         ",\n  \"version\": " + std::to_string(kPresetVersion) + ",\n  \"camera\": " + about.dump() +
         ",\n  \"profile\": " + Json(profile.node).dump() + ",\n  \"presets\": [" + presets + "\n  ]\n}\n";
}

class NewFile {
 public:
  explicit NewFile(const std::string& path) : path_(path), name_(path + ".XXXXXX") {
    descriptor_ = mkostemp(name_.data(), O_CLOEXEC);
    if (descriptor_ < 0) FailWith(errno);
  }
  ~NewFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!placed_) unlink(name_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void Write(const std::string& text) {
    for (std::size_t written = 0; written < text.size();) {
      const ssize_t step = write(descriptor_, text.data() + written, text.size() - written);
      if (step < 0) FailWith(errno);
      written += static_cast<std::size_t>(step);
    }
    constexpr mode_t kForAll = 0666;
    const mode_t mask = umask(0);
    umask(mask);
    if (fchmod(descriptor_, kForAll & ~mask) != 0 || fsync(descriptor_) != 0) FailWith(errno);
  }

  // A file that came meanwhile is left alone, too.
  void Place(bool replace) {
    const int result = replace ? rename(name_.c_str(), path_.c_str()) : link(name_.c_str(), path_.c_str());
    if (result != 0) FailWith(errno);
    placed_ = replace;
  }

 private:
  [[noreturn]] void FailWith(int error) const {
    if (error == EEXIST) Fail("file_exists", path_ + " is there already; --replace replaces it");
    Fail("unusable_file", path_ + " cannot be written: " + std::strerror(error));
  }

  const std::string path_;
  std::string name_;
  int descriptor_ = -1;
  bool placed_ = false;
};

// A pipe or a device, which renaming would replace by a file.
bool IsSpecial(const std::string& path) {
  std::error_code unknown;
  const auto status = std::filesystem::status(path, unknown);
  return std::filesystem::is_other(status);
}

// ---- reading -------------------------------------------------------------------

// Characters for the parser, which counts no lines itself.
struct CountingIterator {
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  reference operator*() const { return *at; }
  CountingIterator& operator++() {
    if (*at++ == '\n') ++*line;
    return *this;
  }
  CountingIterator operator++(int) {
    const CountingIterator before = *this;
    ++*this;
    return before;
  }
  bool operator==(const CountingIterator& other) const { return at == other.at; }
  bool operator!=(const CountingIterator& other) const { return at != other.at; }

  const char* at;
  int* line;
};

class Reader {
 public:
  explicit Reader(std::string path) : path_(std::move(path)) {}

  std::vector<FilePreset> Read() {
    const Json document = Parse(Text());
    RequireFormat(document);
    std::vector<FilePreset> presets;
    for (const Json& preset : document["presets"]) presets.push_back(PresetOf(preset, presets.size()));
    return presets;
  }

 private:
  [[noreturn]] void FailAt(int line, const std::string& reason) const {
    Fail("bad_file", path_ + ":" + std::to_string(line) + ": " + reason);
  }

  std::string Text() const {
    std::ifstream file(path_);
    std::ostringstream text;
    // Copying nothing would count as a failure; an empty file is none.
    if (file.peek() != std::ifstream::traits_type::eof()) text << file.rdbuf();
    if (!file.is_open() || file.bad() || !text)
      Fail("unusable_file", path_ + " cannot be read: " + std::strerror(errno));
    return text.str();
  }

  Json Parse(const std::string& text) {
    int line = 1;
    // The document is at depth 0, its members at 1, what a list of them holds at 2.
    std::vector<std::set<std::string>> members;  // of the objects that are open
    const auto note = [&](int depth, Json::parse_event_t event, Json& value) {
      using Event = Json::parse_event_t;
      if (event == Event::object_start && depth == 2) lines_.push_back(line);
      if (event == Event::object_start) members.emplace_back();
      if (event == Event::object_end) members.pop_back();
      if (event == Event::key && !members.back().insert(value.get<std::string>()).second) {
        FailAt(line, Json(value).dump() + " is there twice in one object");
      }
      return true;
    };
    try {
      return Json::parse(CountingIterator{text.data(), &line},
                         CountingIterator{text.data() + text.size(), &line}, note);
    } catch (const Json::parse_error&) {
      FailAt(line, "this is not JSON");
    } catch (const Json::out_of_range&) {
      FailAt(line, "a number is too large");
    }
  }

  void RequireFormat(const Json& document) const {
    if (!document.is_object() || document.value("format", Json()) != kPresetFormat) {
      FailAt(1, std::string("not a file of presets: \"format\" is not \"") + kPresetFormat + "\"");
    }
    if (document.value("version", Json()) != kPresetVersion) FailAt(1, "\"version\" is not 1");
    if (!document.value("presets", Json()).is_array()) FailAt(1, "\"presets\" is not a list");
    for (const Json& preset : document["presets"]) {
      if (!preset.is_object()) FailAt(1, "a member of \"presets\" is no object");
    }
  }

  // Objects of this depth elsewhere in the document would shift the lines: there
  // are none in what an export writes.
  int LineOf(std::size_t number) const { return number < lines_.size() ? lines_[number] : 1; }

  FilePreset PresetOf(const Json& object, std::size_t number) {
    FilePreset preset;
    preset.line = LineOf(number);
    preset.token = TextOf(object, "token", preset.line);
    if (preset.token.empty()) FailAt(preset.line, "the preset's \"token\" is missing or empty");
    if (!tokens_.insert(preset.token).second) {
      FailAt(preset.line, "the token \"" + preset.token + "\" is there twice");
    }
    const bool named = object.contains("name") && !object["name"].is_null();
    preset.name = named ? TextOf(object, "name", preset.line) : preset.token;
    for (std::size_t i = 0; i < std::size(kAxes); ++i) {
      preset.positions[i] = PositionOf(object, kAxes[i], preset);
    }
    return preset;
  }

  std::string TextOf(const Json& object, const char* key, int line) const {
    const Json value = object.value(key, Json());
    if (value.is_null()) return "";
    if (!value.is_string()) FailAt(line, std::string("\"") + key + "\" is no text");
    std::string text = value.get<std::string>();
    if (HoldsZero(text)) {
      FailAt(line, std::string("\"") + key + "\" holds a control character that cannot be stored: \\u0000");
    }
    if (text.size() > kLongestText) {
      FailAt(line, std::string("\"") + key + "\" is longer than " + std::to_string(kLongestText) + " bytes");
    }
    return text;
  }

  std::optional<double> PositionOf(const Json& object, const char* axis, const FilePreset& preset) const {
    const Json value = object.value(axis, Json());
    if (value.is_null()) return std::nullopt;
    if (!value.is_number())
      FailAt(preset.line, "\"" + std::string(axis) + "\" of \"" + preset.token + "\" is no number");
    const double position = value.get<double>();
    if (position != kVptzNotCommanded) return position;
    FailAt(preset.line, "\"" + std::string(axis) + "\" of \"" + preset.token +
                            "\" is reserved for axes that are left alone");
  }

  const std::string path_;
  std::vector<int> lines_;
  std::set<std::string> tokens_;
};

std::optional<double> Known(double position) {
  const bool known = std::isfinite(position) && position != kVptzNotCommanded;
  return known ? std::optional<double>(position) : std::nullopt;
}

}  // namespace

AxisPositions PositionsOf(const VptzPresetData& preset) {
  return {Known(preset.pan), Known(preset.tilt), Known(preset.zoom)};
}

bool AreKnown(const AxisPositions& positions) {
  return std::all_of(positions.begin(), positions.end(),
                     [](const auto& position) { return position.has_value(); });
}

std::string PresetDocument(const CVptzDevice& camera, const VptzPtzData& profile) {
  try {
    return Lines(camera, profile);
  } catch (const Json::type_error&) {
    FailUnwritable("the camera", "has a text in the database that is no UTF-8, which JSON cannot hold");
  }
}

std::vector<FilePreset> ReadPresetDocument(const std::string& path) { return Reader(path).Read(); }

void WriteNewFile(const std::string& path, const std::string& text, bool replace) {
  if (replace && IsSpecial(path)) {
    Fail("unusable_file", path + " is no file of its own; without FILE the presets go to standard output");
  }
  NewFile file(path);
  file.Write(text);
  file.Place(replace);
}

}  // namespace vptzctl
