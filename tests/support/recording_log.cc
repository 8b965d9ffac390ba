#include "support/recording_log.h"

#include <zerklog.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "support/records.h"

namespace vptz_test {
namespace {

RecordingLog* current = nullptr;

std::string Text(const char* text) { return text != nullptr ? text : "(null)"; }

std::string Expand(const char* format, va_list arguments) {
  char* expanded = nullptr;
  if (vasprintf(&expanded, format, arguments) < 0) std::abort();
  const std::unique_ptr<char, decltype(&std::free)> owner(expanded, &std::free);
  return expanded;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << line.module << ' ' << line.level << ' ' << line.file << ':' << line.line << ' ' << line.function
             << ": " << line.message;
}

RecordingLog::RecordingLog() {
  if (current != nullptr) std::abort();
  current = this;
}

RecordingLog::~RecordingLog() { current = nullptr; }

}  // namespace vptz_test

void ZERK_LOG_write_newline(int module, int level, const char* file, int line, const char* function,
                            const char* format, ...) {
  using namespace vptz_test;
  va_list arguments;
  va_start(arguments, format);
  const std::string message = Expand(format, arguments);
  va_end(arguments);
  Record(message);
  if (current != nullptr) current->lines.push_back({module, level, Text(file), line, Text(function), message});
}
