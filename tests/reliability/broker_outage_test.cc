// Commands go on while the broker is away for five seconds: what the service
// sees of them. Shorter outages and brokers held still are the contract tests'.
#include <cstdint>
#include <map>

#include "reliability/bus_reliability.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

constexpr int kTimeout = 1;

// Notes when each command was executed.
class Camera {
 public:
  void Execute(bus_service*, bus_request* request) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      executions_[Payload(request)].push_back(Clock::now());
    }
    Reply(request, "");
  }
  std::map<std::string, std::vector<Clock::time_point>> Executions() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return executions_;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, std::vector<Clock::time_point>> executions_;
};

class BrokerOutage : public BusReliability {
 protected:
  // A command each twentieth of a second.
  void SendFor(VptzClient& client, milliseconds duration) {
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i * milliseconds(50) < duration; ++i) {
      WaitUntil([&] { return Clock::now() >= begin + i * milliseconds(50); });
      const std::string command = std::to_string(sent_.size());
      sent_.push_back(Clock::now());
      const int result = client.CallAsync("move", command.data(), static_cast<int>(command.size()),
                                          TheReceiver(0).callback, kTimeout);
      EXPECT_THAT(result, testing::AnyOf(0, -ENOTCONN));
      if (result == 0) ++accepted_;
    }
  }

  std::vector<Clock::time_point> sent_;
  std::size_t accepted_ = 0;
};

TEST_F(BrokerOutage, OfFiveSecondsMakesNoCommandLateAndNoneTwice) {
  Camera camera;
  const auto service = Serve([&](bus_service* self, bus_request* request) { camera.Execute(self, request); });
  const auto client = Connected();
  SendFor(*client, milliseconds(500));
  broker_.Kill();
  SendFor(*client, milliseconds(5000));
  broker_.Start();
  SendFor(*client, milliseconds(2000));
  // Each accepted command is told how it ended, so none is under way any more.
  EXPECT_TRUE(TheReceiver(0).WaitFor(accepted_));

  const auto executions = camera.Executions();
  int late = 0;
  int twice = 0;
  for (const auto& [command, times] : executions) {
    const Clock::time_point due =
        sent_.at(static_cast<std::size_t>(std::stoi(command))) + std::chrono::seconds(kTimeout);
    twice += times.size() > 1 ? 1 : 0;
    // Between the service's look at the clock and the test's lies a thread switch.
    late += times.front() > due + kSlack ? 1 : 0;
  }
  EXPECT_EQ(late, 0);
  EXPECT_EQ(twice, 0);
  EXPECT_GT(executions.size(), 20U) << "before and after the outage commands arrive";
  EXPECT_LT(executions.size(), sent_.size() - 80) << "there was no outage";
  RecordProperty("commands", static_cast<int>(sent_.size()));
  RecordProperty("executed", static_cast<int>(executions.size()));
}

}  // namespace
}  // namespace vptz_test
