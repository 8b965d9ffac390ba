#ifndef VPTZ_TESTS_CONTRACT_SLOW_LINE_H
#define VPTZ_TESTS_CONTRACT_SLOW_LINE_H

#include <chrono>
#include <list>
#include <string>
#include <thread>

#include "support/process.h"

namespace vptz_test {

// A way to a port of this machine on which bytes take their time, in each
// direction.
class SlowLine {
 public:
  SlowLine(int to_port, std::chrono::milliseconds delay);
  ~SlowLine();
  SlowLine(const SlowLine&) = delete;
  SlowLine& operator=(const SlowLine&) = delete;

  std::string address() const { return "mqtt://127.0.0.1:" + std::to_string(port_); }

 private:
  struct Way {
    Descriptor near;
    Descriptor far;
    std::thread there;
    std::thread back;
  };

  void Accept();
  void Carry(int from, int to) const;

  const int to_port_;
  const std::chrono::milliseconds delay_;
  Descriptor listener_;
  int port_ = 0;
  std::list<Way> ways_;
  std::thread thread_;
};

}  // namespace vptz_test

#endif
