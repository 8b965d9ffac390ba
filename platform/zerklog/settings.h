// The log's own settings, from the environment.
#ifndef ZERKLOG_SETTINGS_H
#define ZERKLOG_SETTINGS_H

#include <string>
#include <vector>

namespace zerk {

// The level's name; numbers outside the list count as the nearest level.
const char* LevelName(int level);

// The nearest level that there is.
int NearestLevel(int level);

enum class TargetKind { kStandardError, kSyslog, kFile };

struct Settings {
  int level;  // the least severe level that is written
  TargetKind target = TargetKind::kStandardError;
  std::string path;                     // of the file, when that is the target
  std::vector<std::string> complaints;  // values that could not be used
};

// Reads ZERK_LOG_LEVEL and ZERK_LOG_TARGET. A program that runs with more
// rights than its caller ignores both: the caller must not choose a file there.
Settings SettingsFromEnvironment();

}  // namespace zerk

#endif
