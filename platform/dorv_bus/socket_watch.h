// What the background thread sleeps on: the socket, a wake-up by another thread,
// and the end of the moment for which the callers keep the socket.
#ifndef DORV_BUS_SOCKET_WATCH_H
#define DORV_BUS_SOCKET_WATCH_H

#include <chrono>
#include <mutex>

#include "descriptor.h"
#include "event.h"
#include "waiter.h"

namespace dorv {

class SocketWatch {
 public:
  // How long a socket that a caller has left may stay unwatched.
  static constexpr std::chrono::milliseconds kCallersMoment{1};

  SocketWatch();
  ~SocketWatch();
  SocketWatch(const SocketWatch&) = delete;
  SocketWatch& operator=(const SocketWatch&) = delete;

  bool valid() const { return epoll_ >= 0 && timer_.get() >= 0 && wake_.valid(); }

  // The following need the mutex of the socket's owner held.

  // Takes a fresh socket in, which is not watched yet.
  void Add(int socket);

  // The socket that was added is closed, or will be at once.
  void Remove() { removed_ = true; }

  // Sleep returns when the socket is ready for one of these epoll events; 0: the
  // socket is not watched.
  void SetEvents(int socket, unsigned events);

  // Sleep returns when the moment of the callers is over. The background thread
  // then has the socket watched again, unless a caller reads it.
  void WatchSoon(int socket, unsigned events);

  // The background thread sleeps until then, at most a minute. Returns whether the
  // socket is ready. Frees the mutex meanwhile.
  bool Sleep(std::unique_lock<std::mutex>& lock, TimePoint until);

  // A socket that is closed leaves the epoll instance by itself, unless a child
  // process has a copy of it: then it would be reported ready for ever. So the
  // background thread changes to a fresh instance.
  void ForgetRemoved();

  // For all threads, with the mutex or without: Sleep returns.
  void Wake() { wake_.Set(); }
  void ClearWake() { wake_.Clear(); }
  const Event& wake() const { return wake_; }

 private:
  int NewEpoll() const;

  Event wake_;
  const Descriptor timer_;
  int epoll_ = -1;
  unsigned events_ = 0;
  bool moment_runs_ = false;  // the timer is set and Sleep has not seen its end
  bool removed_ = false;
};

}  // namespace dorv

#endif
