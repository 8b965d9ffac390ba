// Presets as people name them.
#ifndef VPTZCTL_PRESETS_H
#define VPTZCTL_PRESETS_H

#include <string>

namespace vptzctl {

class Session;

// The token of the preset of the session's camera that a text names: the token
// itself, or a name that one preset alone has. A text that names none comes back
// as it is, for the camera may know it. Throws CommandError when several presets
// have that name.
std::string PresetToken(Session& session, const std::string& text);

// Why the camera does not know a preset by that text.
std::string WhyNoPreset(Session& session, const std::string& text);

}  // namespace vptzctl

#endif
