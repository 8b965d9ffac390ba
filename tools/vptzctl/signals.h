// Signals of the service, for a verb that waits for them.
#ifndef VPTZCTL_SIGNALS_H
#define VPTZCTL_SIGNALS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include <vptz/vptz_client.h>

namespace vptzctl {

class Interrupt;

struct Signal {
  std::chrono::system_clock::time_point time;
  std::string name;
  std::string payload;
};

// To subscribe with. It runs on the bus library's thread, which gives it nothing
// to tell subscriptions apart: there is one queue for the program.
void OnSignal(bus_client*, void*, const char* name, const void* payload, std::int32_t length);

// Drops what came and was not taken.
void ForgetSignals();

// The oldest signal that came and was not taken yet; waits for one until the
// time is over or the program is interrupted.
std::optional<Signal> TakeSignal(const Interrupt& interrupt, std::chrono::duration<double> time);

}  // namespace vptzctl

#endif
