#include "time_budget.h"

#include <gmock/gmock.h>

#include "support/recording_log.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

// A clock that stands until a call takes its time.
struct CallsClock {
  using duration = std::chrono::nanoseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<CallsClock>;
  static constexpr bool is_steady = true;

  static time_point now() { return time_point(elapsed); }
  static inline duration elapsed{};
};

class TimeBudgetTest : public testing::Test {
 protected:
  TimeBudgetTest() { CallsClock::elapsed = CallsClock::elapsed.zero(); }

  // Begins calls that take that long, or their time-out where that is shorter, and
  // end with `result`; the number of those that were made.
  int Make(int calls, milliseconds took, int result) {
    int made = 0;
    for (int i = 0; i < calls; ++i) {
      budget_.Spend([&](int timeout) {
        ++made;
        CallsClock::elapsed += std::min<CallsClock::duration>(took, seconds(timeout));
        return result;
      });
    }
    return made;
  }

  vptz_test::RecordingLog log_;
  vptz::BasicTimeBudget<CallsClock> budget_{2};
};

TEST_F(TimeBudgetTest, AnswersOverASlowLineCostNothing) {
  EXPECT_EQ(Make(400, milliseconds(20), 0), 400);
  EXPECT_EQ(Make(400, milliseconds(200), 3), 400);
  EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(TimeBudgetTest, RefusalsAreAnswers) { EXPECT_EQ(Make(400, milliseconds(20), -1004), 400); }

TEST_F(TimeBudgetTest, AnswersThatTakeLongerCostTheirTime) {
  EXPECT_EQ(Make(400, milliseconds(201), 0), 10);
  EXPECT_EQ(CallsClock::elapsed, milliseconds(2010));
}

TEST_F(TimeBudgetTest, AServiceThatDoesNotAnswerCostsOneTimeOut) {
  EXPECT_EQ(Make(400, seconds(60), -ETIMEDOUT), 1);
  EXPECT_EQ(CallsClock::elapsed, seconds(2));
}

TEST_F(TimeBudgetTest, FailuresCostTheirTimeHoweverShort) {
  EXPECT_EQ(Make(400, milliseconds(8), -ESRCH), 250);
  EXPECT_EQ(CallsClock::elapsed, seconds(2));
}

TEST_F(TimeBudgetTest, AServiceThatStopsAnsweringCostsLessThanASecondMore) {
  EXPECT_EQ(Make(1, milliseconds(300), 0), 1);
  EXPECT_EQ(Make(400, seconds(60), -ETIMEDOUT), 1);
  EXPECT_LT(CallsClock::elapsed, milliseconds(300) + seconds(3));
}

TEST_F(TimeBudgetTest, TheLogTellsOnceThatQueriesAreLeftOut) {
  Make(1, seconds(60), -ETIMEDOUT);
  EXPECT_THAT(log_.lines, IsEmpty());
  Make(3, seconds(60), -ETIMEDOUT);
  ASSERT_EQ(log_.lines.size(), 1u);
  EXPECT_EQ(log_.lines[0].level, 1);
  EXPECT_EQ(log_.lines[0].message, "The service takes too long, the other outside addresses are not asked for");
}

TEST_F(TimeBudgetTest, WithoutALimitEachCallIsMadeWithThatNumber) {
  vptz::BasicTimeBudget<CallsClock> budget(0);
  std::vector<int> timeouts;
  for (int i = 0; i < 2; ++i) {
    budget.Spend([&](int timeout) {
      timeouts.push_back(timeout);
      CallsClock::elapsed += seconds(60);
      return -ETIMEDOUT;
    });
  }
  EXPECT_THAT(timeouts, ElementsAre(0, 0));
}

}  // namespace
