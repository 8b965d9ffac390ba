// Stands in for the platform's log in unit tests: keeps every line.
#ifndef VPTZ_TESTS_SUPPORT_RECORDING_LOG_H
#define VPTZ_TESTS_SUPPORT_RECORDING_LOG_H

#include <ostream>
#include <string>
#include <vector>

namespace vptz_test {

struct LogLine {
  int module;
  int level;
  std::string file;
  int line;
  std::string function;
  std::string message;  // with the arguments in it
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

// Keeps the lines that are written while it lives. One at a time; lines that
// are written when there is none are dropped.
class RecordingLog {
 public:
  RecordingLog();
  ~RecordingLog();
  RecordingLog(const RecordingLog&) = delete;
  RecordingLog& operator=(const RecordingLog&) = delete;

  std::vector<LogLine> lines;
};

}  // namespace vptz_test

#endif
