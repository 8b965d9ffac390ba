#ifndef VPTZ_TESTS_CONTRACT_TCP_BROKER_H
#define VPTZ_TESTS_CONTRACT_TCP_BROKER_H

#include <memory>
#include <string>
#include <vector>

#include "support/broker.h"

namespace vptz_test {

// A port of the loopback interface on which nobody listens now.
int FreePort();

// A broker that listens on the loopback interface too.
class TcpBroker {
 public:
  // The lines belong to the TCP listener.
  explicit TcpBroker(const std::vector<std::string>& extra_configuration = {});

  int port() const { return port_; }
  std::string address() const { return "mqtt://127.0.0.1:" + std::to_string(port_); }

 private:
  int port_ = 0;
  std::unique_ptr<Broker> broker_;
};

}  // namespace vptz_test

#endif
