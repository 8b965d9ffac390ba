// An application with an interval timer waits for a locked database as long as
// any other.
#include <sys/wait.h>
#include <unistd.h>
#include <vptz/model/event.h>

#include <chrono>
#include <thread>

#include "model/model_test.h"
#include "reliability/every_millisecond.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class InterruptedWait : public OpenModelTest {};

TEST_F(InterruptedWait, ForALockOfTwoSecondsSucceeds) {
  raw.Execute("BEGIN IMMEDIATE");
  const EveryMillisecond timer;
  const auto free_at = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  std::thread other([&] {
    WaitUntil([&] { return std::chrono::steady_clock::now() >= free_at; });
    raw.Execute("ROLLBACK");
  });
  Event event("late", "");
  EXPECT_GT(Event::Add(&event), 0);
  other.join();
  EXPECT_GT(timer.Count(), 100);
  EXPECT_THAT(Lines(), testing::IsEmpty());
}

TEST_F(InterruptedWait, LeavesAThousandOperationsUnharmed) {
  const EveryMillisecond timer;
  for (int i = 0; i < 1000; ++i) {
    Event event("event " + std::to_string(i), "");
    EXPECT_EQ(Event::Add(&event), i + 1);
  }
  EXPECT_EQ(raw.Value("SELECT count(*) FROM event"), "1000");
}

}  // namespace
}  // namespace vptz_test
