#include "zerklog.h"

#include <pthread.h>
#include <spdlog/logger.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "call_guard.h"
#include "line.h"
#include "settings.h"
#include "targets.h"

namespace zerk {
namespace {

spdlog::level::level_enum LibraryLevel(int level) {
  switch (NearestLevel(level)) {
    case ZERK_LOG_ERROR:
      return spdlog::level::err;
    case ZERK_LOG_WARNING:
      return spdlog::level::warn;
    case ZERK_LOG_NOTICE:
      return spdlog::level::info;
    default:
      return spdlog::level::debug;
  }
}

std::shared_ptr<Target> StandardErrorTarget() {
  return std::make_shared<DescriptorTarget>(STDERR_FILENO, "standard error");
}

std::shared_ptr<Target> FileTarget(Settings& settings) {
  const int descriptor = OpenLogFile(settings.path);
  if (descriptor < 0) {
    settings.complaints.push_back("cannot open " + settings.path + " (" + std::strerror(errno) +
                                  "); using stderr");
    return StandardErrorTarget();
  }
  return std::make_shared<DescriptorTarget>(descriptor, "cannot write to " + settings.path);
}

std::shared_ptr<Target> OpenSyslogTarget(Settings& settings) {
  if (!HaveSyslog()) {
    settings.complaints.emplace_back("there is no system log; using stderr");
    return StandardErrorTarget();
  }
  return std::make_shared<SyslogTarget>();
}

// Opens what the settings name, or standard error with a complaint.
std::shared_ptr<Target> OpenTarget(Settings& settings) {
  switch (settings.target) {
    case TargetKind::kFile:
      return FileTarget(settings);
    case TargetKind::kSyslog:
      return OpenSyslogTarget(settings);
    case TargetKind::kStandardError:
      break;
  }
  return StandardErrorTarget();
}

class Log {
 public:
  explicit Log(Settings settings) : target_(OpenTarget(settings)), logger_("zerklog", target_) {
    target_->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z %v");
    logger_.set_level(LibraryLevel(settings.level));
    logger_.set_error_handler([](const std::string& why) { Complain("a line was lost", why.c_str()); });
    for (const std::string& complaint : settings.complaints) {
      Write(ZERK_LOG_ERROR, {0, "zerklog", 0, nullptr}, complaint);
    }
  }

  bool Passes(int level) const { return logger_.should_log(LibraryLevel(level)); }

  void Write(int level, const Origin& origin, const std::string& message) {
    const std::string line = Line(level, origin, message);
    logger_.log(LibraryLevel(level), spdlog::string_view_t(line));
  }

  Target& target() { return *target_; }

 private:
  const std::shared_ptr<Target> target_;
  spdlog::logger logger_;
};

// Opened by the first line and never destroyed, so that static objects can log
// from their constructors and destructors.
std::atomic<Log*> the_log = nullptr;
std::mutex opening;

Log& OpenLog() {
  const CallGuard guard;
  const std::lock_guard<std::mutex> lock(opening);
  if (the_log == nullptr) {
    the_log = new Log(SettingsFromEnvironment());
  }
  return *the_log;
}

Log& TheLog() {
  Log* log = the_log;
  return log != nullptr ? *log : OpenLog();
}

// What a thread that forks holds meanwhile. Threads may fork side by side.
struct HeldWhileForking {
  bool opening = false;
  Target* target = nullptr;
};
thread_local HeldWhileForking held;

// A process that forks keeps both locks free for its child. Where another thread
// is stuck in a write, to a full pipe for instance, the fork does not wait for it:
// the child then gets a log of its own.
void BeforeFork() {
  held.opening = LockSoon(opening);
  Log* const log = the_log;
  held.target = log != nullptr && log->target().BeforeFork() ? &log->target() : nullptr;
}

void AfterForkInParent() {
  if (held.target != nullptr) {
    held.target->AfterFork();
  }
  if (held.opening) {
    opening.unlock();
  }
}

// The threads that hold the other locks are not here. What they were in the middle
// of is neither used nor destroyed.
void AfterForkInChild() {
  if (held.target == nullptr) {
    the_log = nullptr;
  }
  if (!held.opening) {
    new (&opening) std::mutex;
    held.opening = opening.try_lock();
  }
  AfterForkInParent();
}

[[maybe_unused]] const int forks_are_watched = pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);

void WriteLine(int level, const Origin& origin, int callers_errno, const char* format,
               std::va_list arguments) noexcept {
  try {
    Log& log = TheLog();
    if (!log.Passes(level)) {
      return;
    }
    const CallGuard guard;
    errno = callers_errno;  // for formats with %m
    log.Write(level, origin, Message(format, arguments));
  } catch (const std::exception& failure) {
    Complain("a line was lost", failure.what());
  } catch (...) {
    Complain("a line was lost", "unknown failure");
  }
}

}  // namespace
}  // namespace zerk

void ZERK_LOG_write_newline(int module, int level, const char* file, int line, const char* function,
                            const char* format, ...) {
  const int callers_errno = errno;
  std::va_list arguments;
  va_start(arguments, format);
  zerk::WriteLine(level, {module, file, line, function}, callers_errno, format, arguments);
  va_end(arguments);
  errno = callers_errno;
}
