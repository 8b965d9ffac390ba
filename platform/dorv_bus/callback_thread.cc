#include "callback_thread.h"

#include <chrono>
#include <utility>

#include "quiet_thread.h"

namespace dorv {

void CallbackThread::Start(std::shared_ptr<void> keep) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (running_ || closed_) {
    return;
  }
  thread_ = StartQuietThread([this, keep = std::move(keep)] { Run(); });
  running_ = true;
}

void CallbackThread::Post(Tasks tasks) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!closed_) {
    tasks_.splice(tasks_.end(), tasks);
    changed_.notify_all();
  }
}

bool CallbackThread::Offer(Task task) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (tasks_.size() >= kMostTasks) {
    return false;
  }
  if (!closed_) {
    tasks_.push_back(std::move(task));
    changed_.notify_all();
  }
  return true;
}

void CallbackThread::Close() {
  std::unique_lock<std::mutex> lock(mutex_);
  closed_ = true;
  tasks_.clear();
  changed_.notify_all();
  if (!thread_.joinable()) {
    return;
  }
  const bool inside = thread_.get_id() == std::this_thread::get_id();
  const bool ended = !inside && changed_.wait_for(lock, std::chrono::seconds(1), [this] { return !running_; });
  lock.unlock();
  if (ended) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void CallbackThread::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!closed_) {
    if (tasks_.empty()) {
      changed_.wait(lock);
      continue;
    }
    Task task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
  }
  running_ = false;
  changed_.notify_all();
}

}  // namespace dorv
