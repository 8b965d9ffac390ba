// Presets of a file, stored at a camera one after the other. Over the bus a preset
// is the position at which the camera stands: it moves to each of them.
#ifndef VPTZCTL_PRESET_IMPORT_H
#define VPTZCTL_PRESET_IMPORT_H

#include <string>
#include <vector>

#include <vptz/vptz_data.h>

#include "failures.h"
#include "preset_document.h"

namespace vptzctl {

class Session;

struct PlannedPreset {
  FilePreset preset;
  enum class Action { kNew, kReplace, kSame, kUnknown } action;

  bool IsToBeStored() const { return action == Action::kNew || action == Action::kReplace; }
  std::string ActionText() const;
};

// What an import would do with each preset. Throws CommandError with file and line
// when the camera cannot go where one of them is.
std::vector<PlannedPreset> PlanImport(const std::string& path, const VptzPtzData& profile);

// Moves to each preset that is to be stored, stores it, and at the end has the camera
// move to where it was. On Ctrl-C, or when something fails, it stops the camera and
// tells which presets are stored.
ExitCode RunImport(Session& session, const std::vector<PlannedPreset>& plan);

}  // namespace vptzctl

#endif
