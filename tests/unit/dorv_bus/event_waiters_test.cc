// Threads that wait for numbered events.
#include <gtest/gtest.h>

#include <cerrno>

#include "waiter.h"

namespace dorv {
namespace {

const TimePoint kLater = Clock::now() + std::chrono::hours(1);

TEST(EventWaiters, AnEventFinishesAllThatWaitForItAndNoOther) {
  EventWaiters waiters;
  Waiter first(kLater), second(kLater), other(kLater);
  waiters.Add(7, &first);
  waiters.Add(8, &other);
  waiters.Add(7, &second);
  waiters.Finish(7, -EACCES);
  EXPECT_TRUE(first.done);
  EXPECT_TRUE(second.done);
  EXPECT_EQ(first.result, -EACCES);
  EXPECT_FALSE(other.done);
}

TEST(EventWaiters, RemovedOnesAreLeftAlone) {
  EventWaiters waiters;
  Waiter removed(kLater), stays(kLater);
  waiters.Add(7, &removed);
  waiters.Add(7, &stays);
  waiters.Remove(removed);
  waiters.Finish(7, 0);
  EXPECT_FALSE(removed.done);
  EXPECT_TRUE(stays.done);
}

TEST(EventWaiters, TheEndFinishesEachOnce) {
  EventWaiters waiters;
  Waiter first(kLater), second(kLater);
  waiters.Add(7, &first);
  waiters.Add(8, &second);
  waiters.FinishAll(-ECONNRESET);
  EXPECT_EQ(first.result, -ECONNRESET);
  EXPECT_EQ(second.result, -ECONNRESET);
  waiters.FinishAll(0);
  EXPECT_EQ(first.result, -ECONNRESET);
}

}  // namespace
}  // namespace dorv
