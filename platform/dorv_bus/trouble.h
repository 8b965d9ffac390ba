#ifndef DORV_BUS_TROUBLE_H
#define DORV_BUS_TROUBLE_H

#include <chrono>
#include <string>

#include "log_writer.h"
#include "waiter.h"

namespace dorv {

// Reports why there is no connection: each new reason at once, the same one at
// most once a minute, and once when it is over.
class Trouble {
 public:
  // Whether Report would write a line.
  bool IsNew(int error, TimePoint now) const;
  void Report(int error, const std::string& address, TimePoint now, LogWriter& log);
  void Over(const std::string& address, LogWriter& log);

 private:
  int error_ = 0;
  TimePoint reported_at_{};
};

}  // namespace dorv

#endif
