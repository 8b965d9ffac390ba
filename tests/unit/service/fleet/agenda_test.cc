#include "fleet/agenda.h"

#include <future>
#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::Agenda;

TEST(Agenda, RunsWhatIsDueInTheOrderOfTime) {
  ManualClock clock;
  Agenda agenda(clock);
  std::string done;
  agenda.PostIn(2s, [&] { done += 'c'; });
  agenda.PostIn(1s, [&] { done += 'a'; });
  agenda.PostIn(1s, [&] { done += 'b'; });
  agenda.RunDue();
  EXPECT_EQ(done, "");
  clock.Advance(1s);
  agenda.RunDue();
  EXPECT_EQ(done, "ab");
  clock.Advance(1s);
  agenda.RunDue();
  EXPECT_EQ(done, "abc");
}

TEST(Agenda, TaskMayPostAnother) {
  ManualClock clock;
  Agenda agenda(clock);
  int done = 0;
  agenda.Post([&] { agenda.Post([&] { ++done; }); });
  agenda.RunDue();
  EXPECT_EQ(done, 1);
}

TEST(Agenda, GoesOnAfterATaskThatFails) {
  ManualClock clock;
  Agenda agenda(clock);
  int done = 0;
  agenda.Post([] { throw std::runtime_error("test"); });
  agenda.Post([&] { ++done; });
  agenda.RunDue();
  EXPECT_EQ(done, 1);
}

TEST(Agenda, ClosedOneDropsItsTasks) {
  ManualClock clock;
  Agenda agenda(clock);
  const auto held = std::make_shared<int>(0);
  agenda.Post([held] { ++*held; });
  agenda.Close();
  agenda.Post([held] { ++*held; });
  agenda.RunDue();
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(*held, 0);
}

TEST(Agenda, WorkerRunsItUntilItsEnd) {
  const vptzd::SteadyClock clock;
  Agenda agenda(clock);
  std::promise<void> done;
  {
    const vptzd::Worker worker(agenda);
    agenda.PostIn(1h, [] { FAIL() << "far too early"; });
    agenda.PostIn(1ms, [&] { done.set_value(); });
    done.get_future().wait();
  }
}

}  // namespace
}  // namespace vptz_test
