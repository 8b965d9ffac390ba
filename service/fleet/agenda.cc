#include "fleet/agenda.h"

#include <exception>

#include "log.h"

namespace vptzd {
namespace {

void Do(const Agenda::Task& task) {
  try {
    task();
  } catch (const std::exception& error) {
    VPTZD_LOG(LogLevel::kError, "work in the background failed: %s", error.what());
  }
}

}  // namespace

void Agenda::PostIn(std::chrono::nanoseconds delay, Task task) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (closed_) return;
  tasks_.emplace(Due(clock_.Now() + delay, posted_++), std::move(task));
  changed_.notify_one();
}

Agenda::Task Agenda::TakeDue() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (closed_ || tasks_.empty() || tasks_.begin()->first.first > clock_.Now()) return nullptr;
  Task task = std::move(tasks_.begin()->second);
  tasks_.erase(tasks_.begin());
  return task;
}

void Agenda::RunDue() {
  while (const Task task = TakeDue()) Do(task);
}

void Agenda::Wait() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (closed_) return;
  if (tasks_.empty()) {
    changed_.wait(lock);
    return;
  }
  const auto left = tasks_.begin()->first.first - clock_.Now();
  if (left > std::chrono::nanoseconds(0)) changed_.wait_for(lock, left);
}

void Agenda::Run() {
  const auto closed = [this] {
    const std::lock_guard<std::mutex> lock(mutex_);
    return closed_;
  };
  while (!closed()) {
    RunDue();
    Wait();
  }
}

void Agenda::Close() {
  std::map<Due, Task> dropped;  // destroyed without the lock
  const std::lock_guard<std::mutex> lock(mutex_);
  closed_ = true;
  dropped.swap(tasks_);
  changed_.notify_all();
}

}  // namespace vptzd
