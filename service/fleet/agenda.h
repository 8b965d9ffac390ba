// What is to be done later or must not be waited for: writing the database,
// replies that take their time, searches.
#ifndef VPTZ_SERVICE_FLEET_AGENDA_H
#define VPTZ_SERVICE_FLEET_AGENDA_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "drivers/simulated/clock.h"

namespace vptzd {

// Tasks run one after the other, in the order of their times, and of their
// posting where these are equal. Post and Close may be called from any thread.
class Agenda {
 public:
  using Task = std::function<void()>;

  // The clock outlives the agenda.
  explicit Agenda(const Clock& clock) : clock_(clock) {}

  // A task of a closed agenda is dropped.
  void Post(Task task) { PostIn(std::chrono::nanoseconds(0), std::move(task)); }
  void PostIn(std::chrono::nanoseconds delay, Task task);

  // Runs the tasks that are due, also those that these post. What a task throws
  // is logged.
  void RunDue();

  // Runs tasks as they become due, until Close.
  void Run();

  // Drops every task that has not begun.
  void Close();

 private:
  using Due = std::pair<std::chrono::nanoseconds, std::uint64_t>;  // when, and the number of its posting

  Task TakeDue();
  void Wait();

  const Clock& clock_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<Due, Task> tasks_;
  std::uint64_t posted_ = 0;
  bool closed_ = false;
};

// The one thread that runs an agenda; the destructor closes the agenda and
// waits for the task that runs.
class Worker {
 public:
  explicit Worker(Agenda& agenda) : agenda_(agenda), thread_([&agenda] { agenda.Run(); }) {}
  ~Worker() {
    agenda_.Close();
    thread_.join();
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

 private:
  Agenda& agenda_;
  std::thread thread_;
};

}  // namespace vptzd

#endif
