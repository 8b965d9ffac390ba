#include "shared_socket.h"

#include <poll.h>
#include <sys/epoll.h>

#include <algorithm>
#include <ctime>
#include <utility>

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

void SharedSocket::Open() {
  open_ = true;
  watch_.Add(stream_->descriptor());
  // A reader of the socket before may not have left yet; when it does, it has the
  // new one watched.
  if (!taken_) {
    WatchInBackground();
  }
}

void SharedSocket::Close() {
  open_ = false;
  callers_admitted_ = false;
  ++closed_;
  watch_.Remove();
  if (taken_) {
    wake_reader_.Set();
  }
}

void SharedSocket::ForgetClosed() {
  if (!open_) {
    watch_.ForgetRemoved();
  }
}

int SharedSocket::Await(std::unique_lock<std::mutex>& lock, Waiter& waiter) {
  while (!waiter.done && Clock::now() < waiter.deadline) {
    if (callers_admitted_ && (!taken_ || waiter.has_turn)) {
      ReadUntilDone(lock, waiter);
      continue;
    }
    Enqueue(waiter);
    waiter.wake.wait_until(lock, waiter.deadline);
    Dequeue(waiter);
    if (!callers_admitted_) {
      LeaveTurn(waiter);
    }
  }
  LeaveTurn(waiter);
  return waiter.done ? waiter.result : waiter.expiry_result;
}

void SharedSocket::TakeTurn(Waiter& waiter) {
  if (callers_admitted_ && !taken_) {
    taken_ = true;
    waiter.has_turn = true;
    watch_.SetEvents(stream_->descriptor(), 0);
  }
}

void SharedSocket::ReadUntilDone(std::unique_lock<std::mutex>& lock, Waiter& waiter) {
  const std::uint64_t closed = closed_;
  TakeTurn(waiter);
  while (!waiter.done && closed == closed_ && Clock::now() < waiter.deadline) {
    const short events = stream_->WantsToWrite() ? POLLIN | POLLOUT : POLLIN;
    pollfd polled[] = {{stream_->descriptor(), events, 0}, {wake_reader_.descriptor(), POLLIN, 0}};
    const timespec timeout = Until(waiter.deadline);
    lock.unlock();
    const int count = ppoll(polled, 2, &timeout, nullptr);
    lock.lock();
    if (count > 0 && polled[1].revents != 0) {
      wake_reader_.Clear();
    }
    if (count > 0 && polled[0].revents != 0 && closed == closed_) {
      stream_->ReadAndWrite();
    }
  }
  LeaveTurn(waiter);
}

void SharedSocket::LeaveTurn(Waiter& waiter) {
  if (!std::exchange(waiter.has_turn, false)) {
    return;
  }
  Waiter* next = queue_;
  while (next != nullptr && next->done) {
    next = next->next_in_queue;
  }
  if (callers_admitted_ && next != nullptr) {
    next->has_turn = true;
    next->wake.notify_one();
    return;
  }
  taken_ = false;
  if (callers_admitted_ && !stream_->WantsToWrite()) {
    watch_.WatchSoon(stream_->descriptor(), WantedEvents());
  } else if (open_) {
    WatchInBackground();
  }
}

// In the order in which they came.
void SharedSocket::Enqueue(Waiter& waiter) {
  Waiter** end = &queue_;
  while (*end != nullptr) {
    end = &(*end)->next_in_queue;
  }
  *end = &waiter;
}

void SharedSocket::Dequeue(Waiter& waiter) {
  Waiter** link = &queue_;
  while (*link != &waiter) {
    link = &(*link)->next_in_queue;
  }
  *link = std::exchange(waiter.next_in_queue, nullptr);
}

void SharedSocket::KeepWriting() {
  if (!stream_->WantsToWrite()) {
    return;
  }
  if (taken_) {
    wake_reader_.Set();
  } else {
    WatchInBackground();
  }
}

unsigned SharedSocket::WantedEvents() const { return stream_->WantsToWrite() ? EPOLLIN | EPOLLOUT : EPOLLIN; }

void SharedSocket::WatchInBackground() { watch_.SetEvents(stream_->descriptor(), WantedEvents()); }

}  // namespace dorv
