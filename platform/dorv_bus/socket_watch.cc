#include "socket_watch.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>

namespace dorv {
namespace {

bool AddTo(int epoll, int descriptor, unsigned events) {
  epoll_event interest{};
  interest.events = events;
  interest.data.fd = descriptor;
  return epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &interest) == 0;
}

}  // namespace

SocketWatch::SocketWatch() : timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
  epoll_ = NewEpoll();
}

SocketWatch::~SocketWatch() {
  if (epoll_ >= 0) {
    close(epoll_);
  }
}

int SocketWatch::NewEpoll() const {
  const int epoll = epoll_create1(EPOLL_CLOEXEC);
  if (epoll >= 0 && !(AddTo(epoll, wake_.descriptor(), EPOLLIN) && AddTo(epoll, timer_.get(), EPOLLIN))) {
    close(epoll);
    return -1;
  }
  return epoll;
}

void SocketWatch::Add(int socket) {
  AddTo(epoll_, socket, 0);
  events_ = 0;
}

void SocketWatch::SetEvents(int socket, unsigned events) {
  if (events == events_) {
    return;
  }
  epoll_event interest{};
  interest.events = events;
  interest.data.fd = socket;
  epoll_ctl(epoll_, EPOLL_CTL_MOD, socket, &interest);
  events_ = events;
}

void SocketWatch::WatchSoon(int socket, unsigned events) {
  if (moment_runs_) {
    return;
  }
  itimerspec end{};
  end.it_value.tv_nsec = std::chrono::nanoseconds(kCallersMoment).count();
  moment_runs_ = timerfd_settime(timer_.get(), 0, &end, nullptr) == 0;
  if (!moment_runs_) {
    SetEvents(socket, events);
  }
}

bool SocketWatch::Sleep(std::unique_lock<std::mutex>& lock, TimePoint until) {
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
  const auto timeout = std::clamp(left, milliseconds(0), milliseconds(60000));
  lock.unlock();
  epoll_event events[3];
  const int count = epoll_wait(epoll_, events, 3, static_cast<int>(timeout.count()));
  lock.lock();
  bool socket_ready = false;
  for (int i = 0; i < count; ++i) {
    if (events[i].data.fd == wake_.descriptor()) {
      wake_.Clear();
    } else if (events[i].data.fd == timer_.get()) {
      std::uint64_t expirations;
      [[maybe_unused]] const ssize_t taken = read(timer_.get(), &expirations, sizeof expirations);
      moment_runs_ = false;
    } else {
      socket_ready = true;
    }
  }
  return socket_ready;
}

void SocketWatch::ForgetRemoved() {
  if (!removed_) {
    return;
  }
  const int fresh = NewEpoll();
  if (fresh >= 0) {
    close(epoll_);
    epoll_ = fresh;
    removed_ = false;
  }
}

}  // namespace dorv
