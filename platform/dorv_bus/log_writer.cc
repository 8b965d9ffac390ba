#include "log_writer.h"

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

#include "quiet_thread.h"

namespace dorv {

struct LogWriter::Line {
  int level;
  const char* file;
  int line;
  const char* function;
  char text[640];  // an address and a reason, or a method's name, have room

  static void WriteMissing(int count) {
    if (count > 0) {
      DORV_LOG(ZERK_LOG_WARNING, "%d lines are missing here", count);
    }
  }
  void Write() const { ZERK_LOG_write_newline(kLogModule, level, file, line, function, "%s", text); }
};

struct LogWriter::State {
  std::mutex mutex;
  std::condition_variable written;
  std::vector<Line> lines;
  int missing_before = 0;  // lines that were left out before the first of them
  int missing_after = 0;   // and after the last
  bool running = false;    // the thread has lines to write
};

LogWriter::LogWriter() : state_(std::make_shared<State>()) {}

LogWriter::~LogWriter() { Close(); }

void LogWriter::Add(int level, const char* file, int line, const char* function, const char* format, ...) {
  constexpr std::size_t kMostLines = 256;
  Line added{level, file, line, function, {}};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(added.text, sizeof added.text, format, arguments);
  va_end(arguments);

  const std::lock_guard<std::mutex> lock(state_->mutex);
  if (state_->lines.size() >= kMostLines) {
    ++state_->missing_after;
    return;
  }
  try {
    state_->lines.push_back(added);
    if (!state_->running) {
      if (thread_.joinable()) {
        thread_.join();  // it has left its last line behind
      }
      thread_ = StartQuietThread([state = state_] { Run(*state); });
      state_->running = true;
    }
  } catch (const std::exception&) {  // no memory, no thread
    if (!state_->running) {
      state_->lines.clear();
    }
    ++(state_->lines.empty() ? state_->missing_before : state_->missing_after);
  }
}

void LogWriter::Run(State& state) {
  std::unique_lock<std::mutex> lock(state.mutex);
  while (!state.lines.empty()) {
    const std::vector<Line> lines = std::exchange(state.lines, {});
    const int before = std::exchange(state.missing_before, 0);
    const int after = std::exchange(state.missing_after, 0);
    lock.unlock();
    Line::WriteMissing(before);
    for (const Line& line : lines) {
      line.Write();
    }
    Line::WriteMissing(after);
    lock.lock();
  }
  state.running = false;
  state.written.notify_all();
}

void LogWriter::Wait(TimePoint until) const {
  std::unique_lock<std::mutex> lock(state_->mutex);
  state_->written.wait_until(lock, until, [this] { return !state_->running; });
}

void LogWriter::Close() {
  if (!thread_.joinable()) {
    return;
  }
  Wait(Clock::now() + std::chrono::seconds(1));
  std::unique_lock<std::mutex> lock(state_->mutex);
  const bool running = state_->running;
  lock.unlock();
  if (running) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

}  // namespace dorv
