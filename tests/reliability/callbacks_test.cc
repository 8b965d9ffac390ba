// Callbacks that do what they should rather not. What the bus library's own
// functions do in callbacks is the contract tests'.
#include "reliability/bus_reliability.h"

namespace vptz_test {
namespace {

class Callback : public BusReliability {
 protected:
  std::unique_ptr<ServedName> service_ = Serve();
};

TEST_F(Callback, ThatBlocksHoldsUpNoCallOfAnyClient) {
  const auto client = Connected();
  const auto other = Connected();
  Event entered;
  Event release;
  TheReceiver(0).OnDelivery([&](const Delivery&) {
    entered.Set();
    release.Wait(std::chrono::seconds(60));
  });
  EXPECT_EQ(client->SubscribeSignal("moved", TheReceiver(0).callback), 0);
  EXPECT_EQ(Emit(service_->get(), "moved"), 0);
  ASSERT_TRUE(entered.Wait());
  Longest calls(delay_);
  const Clock::time_point end = Clock::now() + std::chrono::seconds(10);
  while (Clock::now() < end) {
    for (VptzClient* one : {client.get(), other.get()}) {
      const Clock::time_point begin = Clock::now();
      EXPECT_EQ(CallOnce(*one, "echo", "x", 1).reply, "x");
      EXPECT_TRUE(calls.Keeps(begin, std::chrono::seconds(1) + kSlack));
    }
  }
  release.Set();
  RecordProperty("longest_call_ms", calls.milliseconds_taken());
}

TEST_F(Callback, MayCallBackInUnsubscribeAndSubscribeAgain) {
  const auto client = Connected();
  Event done;
  TheReceiver(0).OnDelivery([&](const Delivery&) {
    EXPECT_EQ(CallOnce(*client, "echo", "inside", 10).reply, "inside");
    EXPECT_EQ(client->CallAsync("echo", "y", 1, TheReceiver(1).callback, 10), 0);
    EXPECT_EQ(client->UnsubscribeSignal("moved"), 0);
    EXPECT_EQ(client->SubscribeSignal("turned", TheReceiver(2).callback), 0);
    done.Set();
  });
  EXPECT_EQ(client->SubscribeSignal("moved", TheReceiver(0).callback), 0);
  EXPECT_EQ(Emit(service_->get(), "moved"), 0);
  ASSERT_TRUE(done.Wait());
  EXPECT_TRUE(TheReceiver(1).WaitFor(1));
  EXPECT_EQ(Emit(service_->get(), "moved"), 0);
  EXPECT_EQ(Emit(service_->get(), "turned"), 0);
  EXPECT_TRUE(TheReceiver(2).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).Count(), 1U);
}

TEST_F(Callback, MayDestroyItsClient) {
  auto client = Connected();
  Event destroyed;
  TheReceiver(0).OnDelivery([&](const Delivery&) {
    client.reset();
    destroyed.Set();
  });
  EXPECT_EQ(client->SubscribeSignal("moved", TheReceiver(0).callback), 0);
  const auto other = Connected();
  EXPECT_EQ(Emit(service_->get(), "moved"), 0);
  ASSERT_TRUE(destroyed.Wait(std::chrono::seconds(2)));
  EXPECT_EQ(CallOnce(*other, "echo", "x", 1).reply, "x");
}

}  // namespace
}  // namespace vptz_test
