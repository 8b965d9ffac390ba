#include "contract/slow_line.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace vptz_test {
namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

void Check(int result) {
  if (result != 0) throw std::system_error(errno, std::generic_category(), "slow line");
}

int NewSocket() { return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0); }

}  // namespace

SlowLine::SlowLine(int to_port, std::chrono::milliseconds delay)
    : to_port_(to_port), delay_(delay), listener_(NewSocket()) {
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  Check(bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), size));
  Check(listen(listener_.get(), 8));
  Check(getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size));
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Accept(); });
}

SlowLine::~SlowLine() {
  shutdown(listener_.get(), SHUT_RDWR);
  thread_.join();
  for (Way& way : ways_) {
    shutdown(way.near.get(), SHUT_RDWR);
    shutdown(way.far.get(), SHUT_RDWR);
    way.there.join();
    way.back.join();
  }
}

void SlowLine::Accept() {
  for (;;) {
    const int near = accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC);
    if (near < 0) return;
    const int far = NewSocket();
    Way& way = ways_.emplace_back();
    way.near.Reset(near);
    way.far.Reset(far);
    const sockaddr_in address = Loopback(to_port_);
    if (connect(far, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      shutdown(near, SHUT_RDWR);
    }
    way.there = std::thread([this, near, far] { Carry(near, far); });
    way.back = std::thread([this, near, far] { Carry(far, near); });
  }
}

void SlowLine::Carry(int from, int to) const {
  char bytes[4096];
  ssize_t length = 0;
  while ((length = read(from, bytes, sizeof bytes)) > 0) {
    std::this_thread::sleep_for(delay_);
    if (send(to, bytes, static_cast<std::size_t>(length), MSG_NOSIGNAL) != length) break;
  }
  shutdown(to, SHUT_RDWR);
}

}  // namespace vptz_test
