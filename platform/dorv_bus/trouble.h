#ifndef DORV_BUS_TROUBLE_H
#define DORV_BUS_TROUBLE_H

#include <chrono>
#include <string>

#include "waiter.h"

namespace dorv {

// Reports why there is no connection: at once, then at
// most once a minute, and once when it is over.
class Trouble {
 public:
  void Report(int error, const std::string& address, TimePoint now);
  void Over(const std::string& address);

 private:
  int error_ = 0;
  TimePoint reported_at_{};
};

}  // namespace dorv

#endif
