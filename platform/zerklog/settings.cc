#include "settings.h"

#include <strings.h>
#include <zerklog.h>

#include <algorithm>
#include <cstdlib>

namespace zerk {
namespace {

constexpr const char* kLevelNames[] = {"error", "warning", "notice", "detail"};

// The variable's value; empty when it is unset.
std::string Variable(const char* name) {
  const char* value = secure_getenv(name);
  return value != nullptr ? value : "";
}

// The level that a number or a name stands for; -1 when none does.
int LevelFromText(const std::string& text) {
  for (int level = ZERK_LOG_ERROR; level <= ZERK_LOG_DETAIL; ++level) {
    if (text == std::to_string(level) || strcasecmp(text.c_str(), LevelName(level)) == 0) {
      return level;
    }
  }
  return -1;
}

void ReadLevel(Settings& settings) {
  const std::string text = Variable("ZERK_LOG_LEVEL");
  if (text.empty()) {
    return;
  }
  const int level = LevelFromText(text);
  if (level >= 0) {
    settings.level = level;
  } else {
    settings.complaints.push_back("ZERK_LOG_LEVEL is \"" + text +
                                  "\"; it must be 0 to 3, error, warning, notice or detail; using warning");
  }
}

void ReadTarget(Settings& settings) {
  static const std::string kFilePrefix = "file:";
  const std::string text = Variable("ZERK_LOG_TARGET");
  if (text.empty() || text == "stderr") {
    return;
  }
  if (text == "syslog") {
    settings.target = TargetKind::kSyslog;
  } else if (text.size() > kFilePrefix.size() && text.compare(0, kFilePrefix.size(), kFilePrefix) == 0) {
    settings.target = TargetKind::kFile;
    settings.path = text.substr(kFilePrefix.size());
  } else {
    settings.complaints.push_back("ZERK_LOG_TARGET is \"" + text +
                                  "\"; it must be stderr, syslog or file:PATH; using stderr");
  }
}

}  // namespace

int NearestLevel(int level) { return std::clamp<int>(level, ZERK_LOG_ERROR, ZERK_LOG_DETAIL); }

const char* LevelName(int level) { return kLevelNames[static_cast<std::size_t>(NearestLevel(level))]; }

Settings SettingsFromEnvironment() {
  Settings settings{ZERK_LOG_WARNING, TargetKind::kStandardError, {}, {}};
  ReadLevel(settings);
  ReadTarget(settings);
  return settings;
}

}  // namespace zerk
