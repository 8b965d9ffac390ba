#include "reliability/hostile_service.h"

#include <malloc.h>

#include <vector>

#include "reliability/bus_reliability.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

constexpr int kWrongReplies = 10000;

class HostileReplies : public BusReliability {
 protected:
  static std::size_t HeapInUse() { return mallinfo2().uordblks; }

  // Calls until there have been enough wrong replies.
  static void CallAndCall(VptzClient& client, const HostileService& service, const std::string& name) {
    for (int i = 0; service.wrong_replies() < kWrongReplies; ++i) {
      const std::string text = name + std::to_string(i);
      const CallResult result = CallOnce(client, "echo", text, 10);
      ASSERT_EQ(result.code, 0);
      ASSERT_EQ(result.reply, text);
    }
  }
};

TEST_F(HostileReplies, NoneReachesACallThatItDoesNotBelongTo) {
  const HostileService service(broker_.socket_path());
  const auto client = Connected();
  const auto other = Connected();
  std::vector<Thread> threads;
  threads.emplace_back([&] { CallAndCall(*client, service, "a"); });
  threads.emplace_back([&] { CallAndCall(*client, service, "b"); });
  threads.emplace_back([&] { CallAndCall(*other, service, "c"); });
  for (Thread& thread : threads) thread.join();
  EXPECT_GE(service.wrong_replies(), kWrongReplies);
  RecordProperty("wrong_replies", service.wrong_replies());
}

TEST_F(HostileReplies, AloneTheyLetCallsRunIntoTheirTimeOut) {
  const HostileService service(broker_.socket_path());
  const auto client = Connected();
  Longest calls(delay_);
  std::vector<Thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      const Clock::time_point begin = Clock::now();
      EXPECT_EQ(CallOnce(*client, "silent", "x", 1).code, -ETIMEDOUT);
      EXPECT_TRUE(calls.Keeps(begin, std::chrono::seconds(1) + kSlack));
    });
  }
  for (Thread& thread : threads) thread.join();
}

TEST_F(HostileReplies, LeaveNoCallBehindInTheTableOfThoseThatWait) {
  // Few enough at once for the broker, which drops replies that pile up.
  constexpr int kAtATime = 50;
  constexpr int kBatches = 40;
  const HostileService service(broker_.socket_path());
  const auto client = Connected();
  const auto call = [&](const char* method) {
    TheReceiver(0).Clear();
    for (int i = 0; i < kAtATime; ++i) {
      ASSERT_EQ(client->CallAsync(method, "x", 1, TheReceiver(0).callback, 1), 0);
    }
    ASSERT_TRUE(TheReceiver(0).WaitFor(kAtATime));
    for (const Delivery& delivery : TheReceiver(0).All()) {
      EXPECT_TRUE(delivery.payload == "x" || delivery.length == -ETIMEDOUT) << delivery.length;
    }
  };
  call("echo");  // whatever is allocated once
  call("silent");
  const std::size_t before = HeapInUse();
  for (int i = 0; i < kBatches; ++i) call("echo");
  call("silent");
  // Each call has been told exactly one result, and nothing of it is left.
  EXPECT_EQ(CallOnce(*client, "echo", "fence", 10).reply, "fence");
  EXPECT_EQ(TheReceiver(0).Count(), static_cast<std::size_t>(kAtATime));
  if (MeasuresMemory()) {
    EXPECT_LT(HeapInUse(), before + std::size_t{100} * kAtATime * kBatches);
  }
}

}  // namespace
}  // namespace vptz_test
