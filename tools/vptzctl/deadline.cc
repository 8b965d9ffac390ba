#include "deadline.h"

#include <csignal>
#include <utility>

namespace vptzctl {
namespace {

// The program's signals are for the thread that does its work.
class WithoutSignals {
 public:
  WithoutSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~WithoutSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  WithoutSignals(const WithoutSignals&) = delete;
  WithoutSignals& operator=(const WithoutSignals&) = delete;

 private:
  sigset_t before_;
};

}  // namespace

Deadline::Deadline(Clock::duration time, std::function<void()> expired)
    : expired_function_(std::move(expired)), end_(Clock::now() + time) {
  const WithoutSignals inherited;
  thread_ = std::thread([this] { Run(); });
}

Deadline::~Deadline() {
  Meet();
  thread_.join();
}

void Deadline::Pause() {
  const std::lock_guard<std::mutex> lock(mutex_);
  paused_at_ = Clock::now();
  paused_ = true;
  changed_.notify_all();
}

void Deadline::Resume() {
  const std::lock_guard<std::mutex> lock(mutex_);
  end_ += Clock::now() - paused_at_;
  paused_ = false;
  changed_.notify_all();
}

void Deadline::Meet() {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [this] { return !expired_; });
  met_ = true;
  changed_.notify_all();
}

void Deadline::Run() {
  {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!met_ && (paused_ || Clock::now() < end_)) {
      if (paused_) {
        changed_.wait(lock);
      } else {
        changed_.wait_until(lock, end_);
      }
    }
    if (met_) return;
    expired_ = true;
  }
  expired_function_();
}

}  // namespace vptzctl
