// What the background thread sleeps on: the socket, and a wake-up by another
// thread.
#ifndef DORV_BUS_SOCKET_WATCH_H
#define DORV_BUS_SOCKET_WATCH_H

#include <mutex>

#include "event.h"
#include "waiter.h"

namespace dorv {

class SocketWatch {
 public:
  SocketWatch();
  ~SocketWatch();
  SocketWatch(const SocketWatch&) = delete;
  SocketWatch& operator=(const SocketWatch&) = delete;

  bool valid() const { return epoll_ >= 0 && wake_.valid(); }

  // The following need the mutex of the socket's owner held.

  // Takes a fresh socket in, which is not watched yet.
  void Add(int socket);

  // The socket that was added is closed, or will be at once.
  void Remove() { removed_ = true; }

  // Sleep returns when the socket is ready for one of these epoll events; 0: the
  // socket is not watched.
  void SetEvents(int socket, unsigned events);

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
  int epoll_ = -1;
  unsigned events_ = 0;
  bool removed_ = false;
};

}  // namespace dorv

#endif
