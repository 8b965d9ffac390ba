// Where lines go.
#ifndef ZERKLOG_TARGETS_H
#define ZERKLOG_TARGETS_H

#include <spdlog/sinks/base_sink.h>

#include <mutex>
#include <string>

namespace zerk {

// Takes a lock, but gives up after a quarter of a second; whether it has it.
bool LockSoon(std::mutex& mutex);

// Keeps the lock of a target free of half-done work while the process forks, so
// that the child can log too.
class Target : public spdlog::sinks::base_sink<std::mutex> {
 public:
  // False when a line is stuck; AfterFork is then not to be called.
  bool BeforeFork() { return LockSoon(mutex_); }
  void AfterFork() { mutex_.unlock(); }

 protected:
  void flush_() override {}  // nothing is held back
};

// Writes each line with one write() where the kernel takes it whole, so that
// lines of several processes don't mix in a file either.
class DescriptorTarget : public Target {
 public:
  // `name` is what complaints call it.
  DescriptorTarget(int descriptor, std::string name);

 private:
  void sink_it_(const spdlog::details::log_msg& message) override;
  bool Write(const char* text, std::size_t length);
  void ComplainOnce(int error);

  const int descriptor_;
  const std::string name_;
  bool torn_ = false;  // the last line was cut
  bool complained_ = false;
};

// Uses the process's connection to the system log as it finds it: what the
// application set with openlog() stays.
class SyslogTarget : public Target {
 private:
  void sink_it_(const spdlog::details::log_msg& message) override;
};

// Opens a file for appending and makes it when needed. Never waits, also when
// the path is that of a pipe that nobody reads. -1 with errno on failure.
int OpenLogFile(const std::string& path);

// Whether somebody can take system log lines.
bool HaveSyslog();

// Writes a line of the log's own to standard error, without memory of its own.
void Complain(const char* what, const char* why);

}  // namespace zerk

#endif
