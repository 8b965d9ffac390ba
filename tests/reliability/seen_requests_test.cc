// What the service half remembers of the requests that came: enough to execute
// none twice, and never more than so much.
#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <random>
#include <vector>

#include "allocations.h"
#include "request_identity.h"

namespace dorv {
namespace {

RequestIdentity Request(std::uint64_t caller, std::uint64_t sequence, std::chrono::seconds due) {
  return RequestIdentity::Make(caller, sequence, Clock::now() + due);
}

constexpr std::chrono::hours kFarAway{24 * 365};

TEST(SeenRequests, StayBoundedUnderAMillionIdentities) {
  SeenRequests seen;
  std::mt19937_64 random(1);
  std::size_t most = 0;
  for (int i = 0; i < 1000000; ++i) {
    EXPECT_TRUE(seen.Insert(Request(random(), random(), kFarAway)));
    most = std::max(most, seen.size());
  }
  EXPECT_EQ(most, SeenRequests::kMostCallers);
  RecordProperty("most_callers", static_cast<int>(most));
}

TEST(SeenRequests, OfOneCallerTakeTheRoomOfOne) {
  SeenRequests seen;
  for (std::uint64_t i = 1; i <= 1000; ++i) EXPECT_TRUE(seen.Insert(Request(7, i, kFarAway)));
  EXPECT_EQ(seen.size(), 1U);
  for (std::uint64_t i = 1; i <= 1000; ++i) EXPECT_FALSE(seen.Insert(Request(7, i, kFarAway)));
}

TEST(SeenRequests, AreForgottenWhenNobodyCouldRepeatThem) {
  SeenRequests seen;
  for (std::uint64_t caller = 1; caller <= 1000; ++caller) {
    EXPECT_TRUE(seen.Insert(Request(caller, 1, std::chrono::seconds(0))));
    EXPECT_LE(seen.size(), 2U);
  }
}

TEST(SeenRequests, OfACallerAtWorkAreKeptWhateverOthersMakeUp) {
  SeenRequests seen;
  std::mt19937_64 random(2);
  for (std::uint64_t i = 1; i <= 100; ++i) {
    EXPECT_TRUE(seen.Insert(Request(7, i, kFarAway)));
    for (std::size_t made_up = 0; made_up + 1 < SeenRequests::kMostCallers; ++made_up) {
      seen.Insert(Request(random(), 1, kFarAway));
    }
    EXPECT_FALSE(seen.Insert(Request(7, i, kFarAway))) << "would be executed twice";
  }
}

TEST(SeenRequests, ThatCouldNotBeNotedLeaveNothing) {
  for (std::size_t allocations = 0; allocations < 8; ++allocations) {
    SeenRequests seen;
    try {
      const vptz_test::AllocationLimit limit(allocations);
      seen.Insert(Request(7, 1, kFarAway));
    } catch (const std::bad_alloc&) {
    }
    EXPECT_TRUE(seen.Insert(Request(7, 2, kFarAway)));
    for (std::uint64_t other = 1; other < SeenRequests::kMostCallers; ++other) {
      seen.Insert(Request(7 + other, 1, kFarAway));
    }
    EXPECT_FALSE(seen.Insert(Request(7, 2, kFarAway))) << "would be executed twice";
  }
}

TEST(RequestIdentity, DeadlineIsAtMostAnHourAhead) {
  using std::chrono::seconds;
  EXPECT_FALSE(Request(7, 1, kLongestTimeout).IsTooFar());
  EXPECT_TRUE(Request(7, 1, kLongestTimeout + seconds(20)).IsTooFar());
  EXPECT_FALSE(Request(7, 1, seconds(-1)).IsTooFar());
  for (const bool same_machine : {true, false}) {
    RequestIdentity identity = Request(7, 1, seconds(1));
    if (!same_machine) identity.boot_id = 0;
    EXPECT_FALSE(identity.IsTooFar());
    EXPECT_FALSE(identity.Expired());
    identity.boot_deadline = identity.wall_deadline = std::numeric_limits<std::int64_t>::max();
    EXPECT_TRUE(identity.IsTooFar());
    identity.boot_deadline = identity.wall_deadline = std::numeric_limits<std::int64_t>::min();
    EXPECT_FALSE(identity.IsTooFar());
    EXPECT_TRUE(identity.Expired());
  }
}

}  // namespace
}  // namespace dorv
