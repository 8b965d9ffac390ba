#include "dial.h"

#include <mosquitto.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>

#include "descriptor.h"
#include "errors.h"

namespace dorv {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kQueuePause{10};
constexpr int kNoPermission = -EPERM;  // told apart from what the broker does not allow

int Pending(int descriptor) {
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) < 0 ? -errno : -error;
}

int WaitForConnection(int descriptor, milliseconds timeout, const Event& stop) {
  pollfd polled[] = {{descriptor, POLLOUT, 0}, {stop.descriptor(), POLLIN, 0}};
  const int count = poll(polled, 2, static_cast<int>(timeout.count()));
  if (count < 0) {
    return -errno;
  }
  if (polled[1].revents != 0) {
    return -ECANCELED;
  }
  return count == 0 ? -ETIMEDOUT : Pending(descriptor);
}

int Try(const sockaddr* address, socklen_t size, milliseconds timeout, const Event& stop) {
  const Descriptor probe(socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (probe.get() < 0 || connect(probe.get(), address, size) == 0) {
    return probe.get() < 0 ? -errno : 0;
  }
  if (errno == EINPROGRESS) {
    return WaitForConnection(probe.get(), timeout, stop);
  }
  return errno == EACCES ? kNoPermission : -errno;
}

// Whether it was told to stop before the time was over.
bool Pause(milliseconds time, const Event& stop) {
  pollfd polled{stop.descriptor(), POLLIN, 0};
  return poll(&polled, 1, static_cast<int>(time.count())) > 0;
}

// libmosquitto says at once how it went. The broker's queue of new sockets is
// short: many clients that connect at once fill it. While it is full the broker is
// there and gets time to take some.
int ConnectUnix(mosquitto* instance, const std::string& path, int keep_alive_seconds, milliseconds timeout,
                const Event& stop) {
  const auto end = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    const int result = mosquitto_connect(instance, path.c_str(), 0, keep_alive_seconds);
    if (result != MOSQ_ERR_ERRNO || errno != EAGAIN) {
      return result == MOSQ_ERR_ERRNO && errno == EACCES ? kNoPermission : ErrorFromMosquitto(result);
    }
    if (std::chrono::steady_clock::now() >= end) {
      return -ETIMEDOUT;
    }
    if (Pause(kQueuePause, stop)) {
      return -ECANCELED;
    }
  }
}

int ErrorFromLookup(int result) {
  if (result == EAI_SYSTEM) {
    return -errno;
  }
  return result == EAI_MEMORY ? -ENOMEM : -ENOENT;
}

// Whether a broker listens there, and why not: libmosquitto connects to hosts
// without a time-out and keeps the reason to itself.
int TryHost(const std::string& host, int port, milliseconds timeout, const Event& stop) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int result = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
  if (result != 0) {
    return ErrorFromLookup(result);
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, freeaddrinfo);
  int error = -ENOENT;
  for (const addrinfo* one = found; one != nullptr && error != 0 && error != -ECANCELED; one = one->ai_next) {
    error = Try(one->ai_addr, one->ai_addrlen, timeout, stop);
  }
  return error;
}

}  // namespace

int ConnectInstance(mosquitto* instance, const Address& address, int port, int keep_alive_seconds,
                    milliseconds timeout, const Event& stop) {
  if (address.is_unix) {
    return ConnectUnix(instance, address.host, keep_alive_seconds, timeout, stop);
  }
  const int error = TryHost(address.host, port, timeout, stop);
  return error != 0
             ? error
             : ErrorFromMosquitto(mosquitto_connect(instance, address.host.c_str(), port, keep_alive_seconds));
}

}  // namespace dorv
