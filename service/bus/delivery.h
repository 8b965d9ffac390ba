// How an answer reaches its caller, or does not.
#ifndef VPTZ_SERVICE_BUS_DELIVERY_H
#define VPTZ_SERVICE_BUS_DELIVERY_H

#include <chrono>
#include <string>

#include <vptz/vptz.pb.h>

#include "bus/router.h"
#include "fleet/fleet.h"

namespace vptzd {

struct Delivery {
  // Beyond every client's time-out: what a lost answer is kept for.
  static constexpr std::chrono::minutes kLost{10};
  // More than the 512 bytes that a client takes.
  static constexpr int kOversize = 2048;

  std::string bytes;
  std::chrono::nanoseconds delay{0};
  bool lost = false;
};

// With the delay of the camera that the call is about, and the faults that are
// in force there.
Delivery PlanDelivery(Fleet& fleet, const Call& call, const tutorial::VptzResponse& response);

}  // namespace vptzd

#endif
