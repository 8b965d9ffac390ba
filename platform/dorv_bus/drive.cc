// Who reads the connection's socket, and the reading.
#include <poll.h>
#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "connection.h"
#include "errors.h"
#include "process.h"

namespace dorv {
namespace {

timespec Until(TimePoint deadline) {
  const auto left = std::max(deadline - Clock::now(), Clock::duration::zero());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  timespec result{};
  result.tv_sec = seconds.count();
  result.tv_nsec = std::chrono::duration_cast<std::chrono::nanoseconds>(left - seconds).count();
  return result;
}

}  // namespace

int Connection::Await(std::unique_lock<std::mutex>& lock, Waiter& waiter) {
  while (!waiter.done && Clock::now() < waiter.deadline) {
    if (ready() && (!driven_ || waiter.leads)) {
      Drive(lock, waiter);
      continue;
    }
    Follow(waiter);
    waiter.wake.wait_until(lock, waiter.deadline);
    Unfollow(waiter);
    if (waiter.leads && !ready()) {
      HandOver(waiter);
    }
  }
  Leave(waiter);
  return waiter.done ? waiter.result : waiter.expiry_result;
}

void Connection::TakeOver(Waiter& waiter) {
  if (ready() && !driven_) {
    driven_ = true;
    waiter.leads = true;
    SetInterest(0);
  }
}

void Connection::Leave(Waiter& waiter) {
  if (waiter.leads) {
    HandOver(waiter);
  }
}

void Connection::Drive(std::unique_lock<std::mutex>& lock, Waiter& waiter) {
  const std::uint64_t session = session_;
  TakeOver(waiter);
  while (!waiter.done && session == session_ && Clock::now() < waiter.deadline) {
    const short events = mosquitto_want_write(mosquitto_) ? POLLIN | POLLOUT : POLLIN;
    pollfd polled[] = {{mosquitto_socket(mosquitto_), events, 0}, {wake_driver_.descriptor(), POLLIN, 0}};
    const timespec timeout = Until(waiter.deadline);
    lock.unlock();
    const int count = ppoll(polled, 2, &timeout, nullptr);
    lock.lock();
    if (count > 0 && polled[1].revents != 0) {
      wake_driver_.Clear();
    }
    if (count > 0 && polled[0].revents != 0 && session == session_) {
      Pump();
    }
  }
  HandOver(waiter);
}

// Followers in the order in which they came.
void Connection::Follow(Waiter& waiter) {
  Waiter** end = &followers_;
  while (*end != nullptr) {
    end = &(*end)->next_follower;
  }
  *end = &waiter;
}

void Connection::Unfollow(Waiter& waiter) {
  Waiter** link = &followers_;
  while (*link != &waiter) {
    link = &(*link)->next_follower;
  }
  *link = std::exchange(waiter.next_follower, nullptr);
}

// The waiter reads no more: a follower does, or the background thread.
void Connection::HandOver(Waiter& waiter) {
  waiter.leads = false;
  Waiter* next = followers_;
  while (next != nullptr && next->done) {
    next = next->next_follower;
  }
  if (ready() && next != nullptr) {
    next->leads = true;
    next->wake.notify_one();
    return;
  }
  driven_ = false;
  if (HasSocket()) {
    Arm();
  }
}

// Reads what has come and writes what could not be written before.
void Connection::Pump() {
  int result = mosquitto_loop_read(mosquitto_, 1);
  // Behind TLS a read may leave whole packets where poll cannot see them. One
  // quiet read may have been a keep-alive, two mean that nothing is left.
  for (int quiet = 0; target_->settings.tls && quiet < 2 && result == MOSQ_ERR_SUCCESS && failure_ == 0;
       ++quiet) {
    had_event_ = false;
    result = mosquitto_loop_read(mosquitto_, 1);
    quiet = had_event_ ? -1 : quiet;
  }
  if (restore_ && failure_ == 0) {
    Restore();
  }
  if (restored_ && failure_ == 0) {
    restored_ = false;
    failure_ = owner_->Restored();
  }
  if (result == MOSQ_ERR_SUCCESS && failure_ == 0 && mosquitto_want_write(mosquitto_)) {
    result = mosquitto_loop_write(mosquitto_, 1);
  }
  if (failure_ != 0) {
    Fail(failure_);
  } else if (result != MOSQ_ERR_SUCCESS) {
    Fail(ErrorFromMosquitto(result));
  } else if (disconnected_) {
    Fail(-ECONNRESET);
  }
}

void Connection::Arm() { SetInterest(mosquitto_want_write(mosquitto_) ? EPOLLIN | EPOLLOUT : EPOLLIN); }

void Connection::SetInterest(unsigned events) {
  if (events == interest_) {
    return;
  }
  epoll_event interest{};
  interest.events = events;
  interest.data.fd = mosquitto_socket(mosquitto_);
  epoll_ctl(epoll_, EPOLL_CTL_MOD, interest.data.fd, &interest);
  interest_ = events;
}

// Something that was published did not fit into the socket: whoever reads it
// goes on writing when there is room.
void Connection::KeepWriting() {
  if (!mosquitto_want_write(mosquitto_)) {
    return;
  }
  if (driven_) {
    wake_driver_.Set();
  } else {
    Arm();
  }
}

}  // namespace dorv
