// What the integration tests share: a private broker, the service vptzd in a
// process of its own, and clients of the library.
#ifndef VPTZ_TESTS_INTEGRATION_INTEGRATION_H
#define VPTZ_TESTS_INTEGRATION_INTEGRATION_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vptz/vptz_client.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "support/broker.h"
#include "support/process.h"
#include "support/wait_until.h"

namespace vptz_test {

using std::chrono::milliseconds;

// What a call may take beyond its time-out.
constexpr milliseconds kSlack{250};

// The bound for what happens at once: far below the time-outs beside it.
constexpr milliseconds kAtOnce{1000};

template <class F>
milliseconds Took(F action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
}

class Integration : public testing::Test {
 protected:
  // Returns when the service answers calls.
  void StartService();
  Process& service() { return *service_; }

  std::unique_ptr<VptzClient> Connected() const;

  // The camera's pan axis as the service tells it.
  static double Pan(VptzClient& client, unsigned camera);

  Broker broker_;

 private:
  std::optional<Process> service_;
};

// With the service running from the beginning.
class IntegrationWithService : public Integration {
 protected:
  IntegrationWithService() { StartService(); }
};

}  // namespace vptz_test

#endif
