#include "broker.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace vptzctl {
namespace {

constexpr std::string_view kUnix = "unix:";
constexpr std::string_view kMqtt = "mqtt://";

// An attempt that lasted this long has met no answer.
constexpr std::chrono::milliseconds kLong(900);
constexpr int kPatienceMs = 300;

class Socket {
 public:
  explicit Socket(int family) : descriptor_(socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {}
  ~Socket() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  // 0, or the errno value of the failure.
  int Connect(const sockaddr* address, socklen_t length) const {
    if (connect(descriptor_, address, length) == 0) return 0;
    return errno == EINPROGRESS ? Outcome() : errno;
  }

 private:
  int Outcome() const {
    pollfd wanted = {descriptor_, POLLOUT, 0};
    if (poll(&wanted, 1, kPatienceMs) != 1) return ETIMEDOUT;
    int error = 0;
    socklen_t length = sizeof error;
    return getsockopt(descriptor_, SOL_SOCKET, SO_ERROR, &error, &length) == 0 ? error : errno;
  }

  int descriptor_;
};

int TryPath(std::string_view path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::copy(path.begin(), path.end(), address.sun_path);
  return Socket(AF_UNIX).Connect(reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

struct FreeAddresses {
  void operator()(addrinfo* list) const { freeaddrinfo(list); }
};

// Why the bus takes no such address; empty when it does.
std::string BadPath(std::string_view path) {
  constexpr std::size_t kLongest = sizeof(sockaddr_un::sun_path) - 1;
  if (path.empty() || path.front() != '/') return "a path begins with /";
  if (path.size() <= kLongest) return "";
  return "the path has " + std::to_string(path.size()) + " bytes, and a socket's has " +
         std::to_string(kLongest) + " at most";
}

std::string BadPort(std::string_view port) {
  constexpr int kLargest = 65535;
  int number = 0;
  const auto [rest, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  const bool whole = error == std::errc() && rest == port.data() + port.size();
  if (whole && number >= 1 && number <= kLargest) return "";
  return "the port \"" + std::string(port) + "\" is no number from 1 to " + std::to_string(kLargest);
}

// The reason why none of the host's addresses takes a connection; empty when one
// does.
std::string TryHost(const std::string& host, const std::string& port) {
  addrinfo wanted = {};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int failure = getaddrinfo(host.c_str(), port.c_str(), &wanted, &found);
  if (failure != 0) return gai_strerror(failure);
  const std::unique_ptr<addrinfo, FreeAddresses> addresses(found);
  int error = 0;
  for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
    error = Socket(each->ai_family).Connect(each->ai_addr, each->ai_addrlen);
    if (error == 0) return "";
  }
  return strerrordesc_np(error);
}

struct Server {
  std::string host;
  std::optional<std::string> port;
};

Server Split(std::string server) {
  Server parts;
  const std::size_t colon = server.rfind(':');
  if (colon != std::string::npos && server.find(']', colon) == std::string::npos) {
    parts.port = server.substr(colon + 1);
    server.resize(colon);
  }
  if (server.size() > 2 && server.front() == '[') server = server.substr(1, server.size() - 2);
  parts.host = server;
  return parts;
}

// Without a port the bus takes that of MQTT, or of MQTT over TLS.
std::string TryServer(const Server& server) {
  if (server.port) return TryHost(server.host, *server.port);
  const std::string reason = TryHost(server.host, "1883");
  return reason.empty() || TryHost(server.host, "8883").empty() ? "" : reason;
}

bool BeginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

std::string BadAddress(const std::string& address) {
  if (BeginsWith(address, kUnix)) return BadPath(std::string_view(address).substr(kUnix.size()));
  if (!BeginsWith(address, kMqtt)) return "an address is mqtt://host[:port] or unix:/path";
  const Server server = Split(address.substr(kMqtt.size()));
  return server.port ? BadPort(*server.port) : "";
}

// Empty when something takes connections there.
std::string Refusal(const std::string& address) {
  if (BeginsWith(address, kMqtt)) return TryServer(Split(address.substr(kMqtt.size())));
  const int error = TryPath(std::string_view(address).substr(kUnix.size()));
  return error == 0 ? "" : strerrordesc_np(error);
}

}  // namespace

std::string WhyNotConnected(const std::string& address, std::chrono::duration<double> waited) {
  std::string bad = BadAddress(address);
  if (!bad.empty()) return bad;
  if (waited >= kLong) return "no answer in time; is the broker running?";
  const std::string reason = Refusal(address);
  if (!reason.empty()) return reason + "; is the broker running?";
  return "the broker is there but does not let this program in; with -v the log tells why";
}

}  // namespace vptzctl
