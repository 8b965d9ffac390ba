#include "contract/tcp_broker.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace vptz_test {

int FreePort() {
  const Descriptor probe(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (bind(probe.get(), reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
      getsockname(probe.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "no free port");
  }
  return ntohs(address.sin_port);
}

TcpBroker::TcpBroker(const std::vector<std::string>& extra_configuration) {
  // Somebody else may take the port before the broker does.
  for (int attempts = 10; broker_ == nullptr; --attempts) {
    port_ = FreePort();
    std::vector<std::string> lines = {"set_tcp_nodelay true",
                                      "listener " + std::to_string(port_) + " 127.0.0.1"};
    lines.insert(lines.end(), extra_configuration.begin(), extra_configuration.end());
    try {
      broker_ = std::make_unique<Broker>(lines);
    } catch (const std::runtime_error&) {
      if (attempts == 0) throw;
    }
  }
}

}  // namespace vptz_test
