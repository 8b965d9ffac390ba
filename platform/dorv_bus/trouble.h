#ifndef DORV_BUS_TROUBLE_H
#define DORV_BUS_TROUBLE_H

#include <array>
#include <chrono>
#include <string>

#include "log_writer.h"
#include "waiter.h"

namespace dorv {

// Reports why there is no connection: each new reason at once, the same one at
// most once a minute, also when several take turns, and once when it is over.
class Trouble {
 public:
  // Whether Report would write a line.
  bool IsNew(int error, TimePoint now) const;
  void Report(int error, const std::string& address, TimePoint now, LogWriter& log);
  void ReportEnd(const std::string& address, LogWriter& log);

 private:
  struct Reported {
    int error = 0;  // 0 is none
    TimePoint at{};
  };

  void Note(int error, TimePoint now);

  std::array<Reported, 8> reported_;  // more reasons than one address can have in a minute
};

}  // namespace dorv

#endif
