// The thread on which a client's callbacks run, one after the other.
#ifndef DORV_BUS_CALLBACK_THREAD_H
#define DORV_BUS_CALLBACK_THREAD_H

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace dorv {

class CallbackThread {
 public:
  using Task = std::function<void()>;
  using Tasks = std::list<Task>;

  // Begins the thread unless it runs already; `keep` keeps the owner alive for
  // as long as it does. Nothing happens after Close.
  void Start(std::shared_ptr<void> keep);

  // Queues tasks for the thread; drops them after Close. Needs no memory.
  void Post(Tasks tasks);

  // Like Post, but drops the task and returns false when kMostTasks wait already:
  // then the application has evidently stopped taking them.
  bool Offer(Task task);

  // Drops what has not begun and ends the thread. Waits for a running task, but
  // at most one second; not at all when called from a task.
  void Close();

 private:
  static constexpr std::size_t kMostTasks = 65536;

  void Run();

  std::mutex mutex_;
  std::condition_variable changed_;
  Tasks tasks_;
  std::thread thread_;
  bool running_ = false;
  bool closed_ = false;
};

}  // namespace dorv

#endif
