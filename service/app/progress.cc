#include "app/progress.h"

namespace vptzd {

StartProgress::StartProgress(std::ostream& out, std::chrono::milliseconds period)
    : out_(out), period_(period), thread_([this] { Run(); }) {}

StartProgress::~StartProgress() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
  }
  ended_changed_.notify_one();
  thread_.join();
}

void StartProgress::Reached(std::size_t camera, std::size_t of) {
  const std::lock_guard<std::mutex> lock(mutex_);
  camera_ = camera;
  of_ = of;
}

void StartProgress::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!ended_changed_.wait_for(lock, period_, [this] { return ended_; })) {
    if (camera_ == 0) {
      out_ << "vptzd: opening the database ..." << std::endl;
    } else {
      out_ << "vptzd: storing camera " << camera_ << " of " << of_ << " ..." << std::endl;
    }
  }
}

}  // namespace vptzd
