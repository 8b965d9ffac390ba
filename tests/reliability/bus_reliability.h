// Clients of the library at a private broker, with a service that answers
// everything with the request's bytes.
#ifndef VPTZ_TESTS_RELIABILITY_BUS_RELIABILITY_H
#define VPTZ_TESTS_RELIABILITY_BUS_RELIABILITY_H

#include <vptz/vptz_client.h>

#include <cerrno>
#include <fstream>
#include <memory>
#include <string>

#include "contract/bundled_bus.h"
#include "installed_paths.h"
#include "reliability/reliability.h"
#include "support/broker.h"
#include "support/machine_delay.h"

namespace vptz_test {

class BusReliability : public BundledBus {
 protected:
  BusReliability() { std::ofstream(vptz::ConfigFile()) << "[MQTT]\ntimeout=1\n"; }

  std::unique_ptr<VptzClient> Connected() const {
    auto client = std::make_unique<VptzClient>();
    EXPECT_EQ(client->Connect("reliability", broker_.address().c_str()), 0);
    return client;
  }
  std::unique_ptr<ServedName> Serve(Handler handler = &Echo) const {
    auto service = std::make_unique<ServedName>("vptz", broker_.address(), std::move(handler));
    EXPECT_EQ(service->result(), 0);
    return service;
  }

  static CallResult CallOnce(VptzClient& client, const std::string& method, const std::string& request,
                             int timeout) {
    std::string reply(512, '\0');
    int length = static_cast<int>(reply.size());
    const int code = client.CallSync(method.c_str(), request.data(), static_cast<int>(request.size()),
                                     reply.data(), &length, timeout);
    return {code, code < 0 ? "" : reply.substr(0, static_cast<std::size_t>(length))};
  }

  Broker broker_;
  MachineDelay delay_;
};

// Notes the longest of many durations, apart from what the machine took.
class Longest {
 public:
  explicit Longest(MachineDelay& delay) : delay_(delay) {}

  // Whether an action that began then and has ended now kept the limit. Where it is
  // known how long its own threads waited for a processor, that counts if it is more
  // than what was measured beside it.
  bool Keeps(Clock::time_point begin, milliseconds limit, std::chrono::nanoseconds queued = {}) {
    const Clock::time_point end = Clock::now();
    const auto took = std::chrono::ceil<milliseconds>(end - begin);
    const std::lock_guard<std::mutex> lock(mutex_);
    longest_ = std::max(longest_, took);
    return took <= limit ||
           took <= limit + std::max(delay_.Between(begin, end), std::chrono::floor<milliseconds>(queued));
  }
  int milliseconds_taken() const { return static_cast<int>(longest_.count()); }

 private:
  MachineDelay& delay_;
  std::mutex mutex_;
  milliseconds longest_{0};
};

}  // namespace vptz_test

#endif
