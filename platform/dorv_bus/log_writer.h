// Log lines that come up while a mutex is held.
#ifndef DORV_BUS_LOG_WRITER_H
#define DORV_BUS_LOG_WRITER_H

#include <memory>
#include <thread>

#include "log.h"

#include "waiter.h"

namespace dorv {

// Writes lines on a thread of its own, which lives only while there are some: a
// log that is stuck must not hold up a thread that holds a mutex or has a time-out
// to keep.
class LogWriter {
 public:
  LogWriter();
  ~LogWriter();
  LogWriter(const LogWriter&) = delete;
  LogWriter& operator=(const LogWriter&) = delete;

  // Takes a line and returns. While 256 lines wait, or without memory or a thread
  // for it, the line is left out; another one in its place tells how many are missing.
  // Not for two threads at once.
  __attribute__((format(printf, 6, 7))) void Add(int level, const char* file, int line, const char* function,
                                                 const char* format, ...);

  // Waits until all lines are written, but no longer than that.
  void Wait(TimePoint until) const;

  // Wait for at most a second, and the end of the thread. Where the log is stuck
  // for longer the thread ends later.
  void Close();

 private:
  struct Line;
  struct State;

  static void Run(State& state);

  const std::shared_ptr<State> state_;  // outlives this object where the log is stuck
  std::thread thread_;
};

}  // namespace dorv

// As DORV_LOG, but written later.
#define DORV_LOG_LATER(writer, level, ...) (writer).Add(level, __FILE_NAME__, __LINE__, __func__, __VA_ARGS__)

#endif
