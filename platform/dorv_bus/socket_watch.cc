#include "socket_watch.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace dorv {
namespace {

bool AddTo(int epoll, int descriptor, unsigned events) {
  epoll_event interest{};
  interest.events = events;
  interest.data.fd = descriptor;
  return epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &interest) == 0;
}

}  // namespace

SocketWatch::SocketWatch() : epoll_(NewEpoll()) {}

SocketWatch::~SocketWatch() {
  if (epoll_ >= 0) {
    close(epoll_);
  }
}

int SocketWatch::NewEpoll() const {
  const int epoll = epoll_create1(EPOLL_CLOEXEC);
  if (epoll >= 0 && !AddTo(epoll, wake_.descriptor(), EPOLLIN)) {
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

bool SocketWatch::Sleep(std::unique_lock<std::mutex>& lock, TimePoint until) {
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
  const auto timeout = std::clamp(left, milliseconds(0), milliseconds(60000));
  lock.unlock();
  epoll_event events[2];
  const int count = epoll_wait(epoll_, events, 2, static_cast<int>(timeout.count()));
  lock.lock();
  bool socket_ready = false;
  for (int i = 0; i < count; ++i) {
    if (events[i].data.fd == wake_.descriptor()) {
      wake_.Clear();
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
