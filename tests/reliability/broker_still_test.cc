// The broker is held still: its connections stay and nothing answers.
#include <vector>

#include "reliability/bus_reliability.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

constexpr int kTimeout = 1;
constexpr milliseconds kLimit = std::chrono::seconds(kTimeout) + kSlack;

class BrokerHeldStill : public BusReliability {};

TEST_F(BrokerHeldStill, CallsEndInTimeClientsCanBeDestroyedAndOthersRecover) {
  const auto service = Serve();
  std::vector<std::unique_ptr<VptzClient>> clients;
  for (int i = 0; i < 4; ++i) {
    clients.push_back(Connected());
    EXPECT_EQ(CallOnce(*clients.back(), "echo", "x", 10).reply, "x");
  }
  auto doomed = Connected();
  Longest calls(delay_);
  Longest destruction(delay_);
  Longest recovery(delay_);

  broker_.Stop();
  const Clock::time_point end = Clock::now() + std::chrono::seconds(10);
  std::vector<Thread> threads;
  for (const auto& client : clients) {
    threads.emplace_back([&] {
      while (Clock::now() < end) {
        const Clock::time_point begin = Clock::now();
        const int code = CallOnce(*client, "echo", "x", kTimeout).code;
        EXPECT_TRUE(calls.Keeps(begin, kLimit)) << code;
        EXPECT_THAT(code, testing::AnyOf(-ETIMEDOUT, -ECONNRESET, -ENOTCONN));
        if (code == -ENOTCONN) Breathe();
      }
    });
  }
  const Clock::time_point begin = Clock::now();
  doomed.reset();
  EXPECT_TRUE(destruction.Keeps(begin, kAtOnce));
  for (Thread& thread : threads) thread.join();

  broker_.Continue();
  const Clock::time_point back = Clock::now();
  for (const auto& client : clients) {
    EXPECT_TRUE(WaitUntil([&] { return CallOnce(*client, "echo", "y", kTimeout).reply == "y"; }));
  }
  EXPECT_TRUE(recovery.Keeps(back, std::chrono::seconds(2)));
  RecordProperty("longest_call_ms", calls.milliseconds_taken());
  RecordProperty("destruction_ms", destruction.milliseconds_taken());
  RecordProperty("recovery_ms", recovery.milliseconds_taken());
}

}  // namespace
}  // namespace vptz_test
