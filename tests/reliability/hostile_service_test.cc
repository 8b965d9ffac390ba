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
  constexpr int kCalls = 2000;
  const HostileService service(broker_.socket_path());
  const auto client = Connected();
  const auto call_many = [&](int count) {
    TheReceiver(0).Clear();
    for (int i = 0; i < count; ++i) {
      ASSERT_EQ(client->CallAsync(i % 10 == 0 ? "silent" : "echo", "x", 1, TheReceiver(0).callback, 1), 0);
    }
    ASSERT_TRUE(TheReceiver(0).WaitFor(static_cast<std::size_t>(count)));
    for (const Delivery& delivery : TheReceiver(0).All()) {
      EXPECT_TRUE(delivery.payload == "x" || delivery.length == -ETIMEDOUT) << delivery.length;
    }
    TheReceiver(0).Clear();
  };
  call_many(kCalls);  // whatever is allocated once
  const std::size_t before = HeapInUse();
  call_many(kCalls);
  // Each call has been told exactly one result, and nothing of it is left.
  EXPECT_EQ(CallOnce(*client, "echo", "fence", 10).reply, "fence");
  EXPECT_EQ(TheReceiver(0).Count(), 0U);
  if (MeasuresMemory()) {
    EXPECT_LT(HeapInUse(), before + std::size_t{100} * kCalls);
  }
}

}  // namespace
}  // namespace vptz_test
