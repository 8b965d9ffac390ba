// A camera's presets as a file, from which they can be stored again.
#ifndef VPTZCTL_PRESET_DOCUMENT_H
#define VPTZCTL_PRESET_DOCUMENT_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include <vptz/vptz_device.h>

namespace vptzctl {

constexpr char kPresetFormat[] = "vptz-presets";
constexpr unsigned kPresetVersion = 1;

// Pan, tilt (degrees) and zoom (magnification factor), as far as they are known.
using AxisPositions = std::array<std::optional<double>, 3>;

// What the database holds of a preset's position.
AxisPositions PositionsOf(const VptzPresetData& preset);
bool AreKnown(const AxisPositions& positions);

struct FilePreset {
  int line = 0;  // of the file, counted from 1
  std::string token;
  std::string name;
  AxisPositions positions;
};

// JSON, one preset a line. Throws CommandError when a text is no UTF-8.
std::string PresetDocument(const CVptzDevice& camera, const VptzPtzData& profile);

// Reads such a file. Throws CommandError with file, line and reason.
std::vector<FilePreset> ReadPresetDocument(const std::string& path);

// Writes a file at once or not at all. Throws CommandError; when it is there
// already, unless it may be replaced.
void WriteNewFile(const std::string& path, const std::string& text, bool replace);

}  // namespace vptzctl

#endif
