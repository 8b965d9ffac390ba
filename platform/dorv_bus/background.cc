// The connection's background thread: connects, reads while no caller does,
// keeps the session alive and minds the deadlines.
#include <algorithm>
#include <cerrno>

#include "connection.h"

namespace dorv {
namespace {

thread_local const Connection* background_of = nullptr;

}  // namespace

bool Connection::OnBackgroundThread() const { return background_of == this; }

void Connection::Run() {
  background_of = this;
  std::unique_lock<std::mutex> lock(mutex_);
  while (!closing_) {
    socket_.ForgetClosed();
    if (MustDial() && Clock::now() >= retry_at_) {
      Dial(lock);
    } else {
      RunRound(lock);
    }
  }
  running_ = false;
  thread_ended_.notify_all();
}

// Sleeps until something is to be done, then does it.
void Connection::RunRound(std::unique_lock<std::mutex>& lock) {
  TimePoint until = std::min(owner_->EndOverdueCalls(Clock::now()), session_.next_duty());
  if (MustDial()) {
    until = std::min(until, retry_at_);
  }
  const bool socket_ready = socket_.Sleep(lock, until);
  const bool reads = socket_.IsLeftToBackground();
  if (reads && socket_ready) {
    session_.ReadAndWrite();
  }
  session_.KeepAlive(Clock::now());
  if (!reads) {
    return;
  }
  lock.unlock();
  owner_->HandleRequests();
  lock.lock();
  if (socket_.IsLeftToBackground()) {
    socket_.WatchInBackground();
  }
}

// One attempt to reach the broker. The mutex is free meanwhile: host names and
// sockets may take their time, and no other thread touches the session before it
// has begun.
void Connection::Dial(std::unique_lock<std::mutex>& lock) {
  const std::uint64_t attempt = attempt_;
  const std::shared_ptr<const Target> target = target_;
  int error = session_.Prepare(target);
  if (error == 0) {
    lock.unlock();
    error = session_.Dial(*target);
    lock.lock();
  }
  if (attempt != attempt_ || closing_) {
    // Connect or Disconnect was called meanwhile; close what was opened.
    session_.Discard();
  } else if (error == -ECANCELED) {
    socket_.ClearBackgroundWake();
  } else if (error != 0) {
    session_.Discard();
    SessionFailed(error);
  } else {
    session_.Begin();
  }
}

}  // namespace dorv
