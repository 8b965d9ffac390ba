#include "drivers/command_queue.h"

#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace vptz_test {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using vptzd::CommandQueue;
using vptzd::Pace;
using vptzd::Parts;
using vptzd::Status;
using Kind = CommandQueue::Kind;

const Parts kPan(0b0001);
const Parts kTilt(0b0010);
const Parts kPanTilt(0b0011);

class ManualTimer final : public vptzd::Timer {
 public:
  nanoseconds Now() const override { return now_; }
  void RunIn(nanoseconds delay, std::function<void()> task) override {
    tasks_.emplace(now_ + delay, std::move(task));
  }
  void Advance(nanoseconds elapsed) {
    const nanoseconds end = now_ + elapsed;
    while (!tasks_.empty() && tasks_.begin()->first <= end) {
      now_ = tasks_.begin()->first;
      const auto task = std::move(tasks_.begin()->second);
      tasks_.erase(tasks_.begin());
      task();
    }
    now_ = end;
  }

 private:
  nanoseconds now_ = 1h;
  std::multimap<nanoseconds, std::function<void()>> tasks_;
};

// A camera that takes commands, and answers when the test says so.
class CommandQueueTest : public testing::Test {
 protected:
  struct Sent {
    std::string name;
    Parts parts;
    CommandQueue::Done answered;
  };

  void Make(const Pace& pace = {}) { queue_.emplace(timer_, pace); }

  CommandQueue::Send Sending(const std::string& name) {
    return [this, name](const Parts& parts, CommandQueue::Done answered) {
      sent_.push_back({name, parts, std::move(answered)});
    };
  }
  CommandQueue::Done Telling(const std::string& name) {
    return [this, name](Status status) { told_.emplace_back(name, status); };
  }
  void Add(const std::string& name, Kind kind, const Parts& parts = {}, nanoseconds time = 2s) {
    queue_->Add({kind, parts, timer_.Now() + time, Sending(name), Telling(name)});
  }
  void Stop(const Parts& parts, const std::string& name = "stop", nanoseconds time = 2s) {
    queue_->Stop(parts, timer_.Now() + time, Sending(name), Telling(name));
  }
  void AnswerTo(std::size_t index, Status status = Status::kDone) { sent_.at(index).answered(status); }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const Sent& sent : sent_) names.push_back(sent.name);
    return names;
  }
  using Told = std::vector<std::pair<std::string, Status>>;
  using NameList = std::vector<std::string>;

  ManualTimer timer_;
  std::vector<Sent> sent_;
  Told told_;
  std::optional<CommandQueue> queue_;
};

TEST_F(CommandQueueTest, SendsOneAfterTheOtherAsTheCameraAnswers) {
  Make();
  Add("a", Kind::kSetting);
  Add("b", Kind::kMove, kPan);
  Add("c", Kind::kSetting);
  EXPECT_EQ(Names(), NameList{"a"});
  AnswerTo(0);
  AnswerTo(1, Status::kOutOfRange);
  AnswerTo(2);
  EXPECT_EQ(Names(), (NameList{"a", "b", "c"}));
  EXPECT_EQ(told_, (Told{{"a", Status::kDone}, {"b", Status::kOutOfRange}, {"c", Status::kDone}}));
}

TEST_F(CommandQueueTest, SendsAsManyAtOnceAsTheCameraTakes) {
  Make({2});
  for (const char* name : {"a", "b", "c"}) Add(name, Kind::kSetting);
  EXPECT_EQ(Names(), (NameList{"a", "b"}));
  AnswerTo(1);
  EXPECT_EQ(Names(), (NameList{"a", "b", "c"}));
}

TEST_F(CommandQueueTest, CommandPastItsDeadlineIsToldAndNeverLeaves) {
  Make();
  Add("a", Kind::kSetting, {}, 500ms);
  Add("b", Kind::kMove, kPan, 1s);
  timer_.Advance(499ms);
  EXPECT_TRUE(told_.empty());
  timer_.Advance(501ms);
  EXPECT_EQ(told_, (Told{{"a", Status::kOffline}, {"b", Status::kOffline}}));
  AnswerTo(0);  // late: told already
  EXPECT_EQ(Names(), NameList{"a"});
  EXPECT_EQ(told_.size(), 2u);
}

TEST_F(CommandQueueTest, CommandThatComesLateIsToldAtOnce) {
  Make();
  Add("a", Kind::kSetting, {}, 0s);
  EXPECT_EQ(told_, (Told{{"a", Status::kOffline}}));
  EXPECT_TRUE(sent_.empty());
}

TEST_F(CommandQueueTest, OnlyTheLatestVelocityLeaves) {
  Make();
  Add("first", Kind::kVelocity, kPan);
  for (int i = 0; i < 20; ++i) Add("v" + std::to_string(i), Kind::kVelocity, kPan);
  AnswerTo(0);
  EXPECT_EQ(Names(), (NameList{"first", "v19"}));
  ASSERT_EQ(told_.size(), 20u);  // those that were replaced, and the first
  for (const auto& [name, status] : told_) EXPECT_EQ(status, Status::kDone) << name;
}

TEST_F(CommandQueueTest, VelocitiesKeepTheirSpacingAndTheLastOneLeaves) {
  Make({1, 50ms});
  const nanoseconds begin = timer_.Now();
  std::vector<nanoseconds> times;
  std::string last;
  for (int i = 0; i < 50; ++i) {
    const auto send = [&, i](const Parts&, const CommandQueue::Done& answered) {
      times.push_back(timer_.Now() - begin);
      last = std::to_string(i);
      answered(Status::kDone);
    };
    queue_->Add({Kind::kVelocity, kPan, timer_.Now() + 2s, send, Telling("v")});
    timer_.Advance(20ms);
  }
  timer_.Advance(50ms);
  EXPECT_EQ(last, "49");
  EXPECT_LE(times.size(), 21u);
  for (std::size_t i = 1; i < times.size(); ++i) EXPECT_GE(times[i] - times[i - 1], 50ms);
}

TEST_F(CommandQueueTest, VelocityOfAnotherPartWaitsBesideTheFirst) {
  Make();
  Add("busy", Kind::kSetting);
  Add("pan", Kind::kVelocity, kPan);
  Add("tilt", Kind::kVelocity, kTilt);
  AnswerTo(0);
  AnswerTo(1);
  EXPECT_EQ(Names(), (NameList{"busy", "pan", "tilt"}));
}

TEST_F(CommandQueueTest, VelocityReplacesPartOfWhatWaits) {
  Make();
  Add("busy", Kind::kSetting);
  Add("both", Kind::kVelocity, kPanTilt);
  Add("move", Kind::kMove, kTilt);
  Add("pan", Kind::kVelocity, kPan);
  for (std::size_t i = 0; i < 4; ++i) AnswerTo(i);
  EXPECT_EQ(Names(), (NameList{"busy", "both", "move", "pan"}));
  EXPECT_EQ(sent_[1].parts, kTilt);
}

TEST_F(CommandQueueTest, SettingDoesNotWaitForTheSpacingOfAVelocity) {
  Make({1, 50ms});
  Add("v1", Kind::kVelocity, kPan);
  AnswerTo(0);
  Add("v2", Kind::kVelocity, kPan);
  Add("setting", Kind::kSetting);
  EXPECT_EQ(Names(), (NameList{"v1", "setting"}));
}

TEST_F(CommandQueueTest, StopOvertakesWhatWaitsAndNoneOfItLeavesLater) {
  Make();
  Add("busy", Kind::kSetting);
  Add("move", Kind::kMove, kPan);
  Add("v", Kind::kVelocity, kPan);
  Stop(kPan);
  EXPECT_EQ(Names(), (NameList{"busy", "stop"}));
  AnswerTo(1);
  AnswerTo(0);
  timer_.Advance(10s);
  EXPECT_EQ(Names(), (NameList{"busy", "stop"}));
  EXPECT_EQ(
      told_,
      (Told{{"move", Status::kDone}, {"v", Status::kDone}, {"stop", Status::kDone}, {"busy", Status::kDone}}));
}

TEST_F(CommandQueueTest, StopOfOnePartLeavesTheOthersTheirMotion) {
  Make();
  Add("busy", Kind::kSetting);
  Add("v", Kind::kVelocity, kPanTilt);
  Stop(kPan);
  AnswerTo(0);
  ASSERT_EQ(Names(), (NameList{"busy", "stop", "v"}));
  EXPECT_EQ(sent_[2].parts, kTilt);
}

TEST_F(CommandQueueTest, StopIsRepeatedUntilItIsConfirmed) {
  Make();
  Stop(kPan);
  timer_.Advance(80ms);
  AnswerTo(0, Status::kOffline);
  timer_.Advance(80ms);
  EXPECT_EQ(sent_.size(), 3u);
  EXPECT_TRUE(told_.empty());
  AnswerTo(1);  // the answer to an earlier transmission confirms it too
  timer_.Advance(10s);
  EXPECT_EQ(sent_.size(), 3u);
  EXPECT_EQ(told_, (Told{{"stop", Status::kDone}}));
}

TEST_F(CommandQueueTest, StopGoesOnAfterItsCallerWasToldAndLessOften) {
  Make();
  Stop(kPan);
  timer_.Advance(2s);
  EXPECT_EQ(told_, (Told{{"stop", Status::kOffline}}));
  timer_.Advance(3600s);
  const std::size_t sent = sent_.size();
  EXPECT_GT(sent, 600u);
  EXPECT_LT(sent, 800u);
  timer_.Advance(5s);
  EXPECT_EQ(sent_.size(), sent + 1);
  queue_->CameraIsBack();
  EXPECT_EQ(sent_.size(), sent + 2);
  AnswerTo(sent + 1);
  timer_.Advance(10s);
  EXPECT_EQ(sent_.size(), sent + 2);
}

TEST_F(CommandQueueTest, StopIsSentAgainAfterTheAnswerToAMotionThatHadLeft) {
  Make();
  Add("v", Kind::kVelocity, kPan);
  Stop(kPan);
  AnswerTo(1);
  EXPECT_EQ(told_, (Told{{"stop", Status::kDone}}));
  timer_.Advance(500ms);
  EXPECT_EQ(Names(), (NameList{"v", "stop"}));
  AnswerTo(0);
  EXPECT_EQ(Names(), (NameList{"v", "stop", "stop"}));
  AnswerTo(2);
  timer_.Advance(10s);
  EXPECT_EQ(sent_.size(), 3u);
}

TEST_F(CommandQueueTest, MotionAfterAStopWaitsForItsConfirmation) {
  Make({2});
  Stop(kPan);
  Add("v", Kind::kVelocity, kPan);
  Add("tilt", Kind::kMove, kTilt);
  EXPECT_EQ(Names(), (NameList{"stop"}));  // motions keep their order
  AnswerTo(0);
  EXPECT_EQ(Names(), (NameList{"stop", "v", "tilt"}));
}

TEST_F(CommandQueueTest, SecondStopNeedsAConfirmationOfItsOwn) {
  Make();
  Stop(kPan, "first");
  Stop(kTilt, "second");
  AnswerTo(0);
  EXPECT_TRUE(told_.empty());
  ASSERT_EQ(sent_.size(), 2u);
  EXPECT_EQ(sent_[1].parts, kPanTilt);
  AnswerTo(1);
  EXPECT_EQ(told_, (Told{{"first", Status::kDone}, {"second", Status::kDone}}));
}

TEST_F(CommandQueueTest, TakesNoMoreThanMayWait) {
  Make({1, 0ns, 80ms, 2});
  for (const char* name : {"a", "b", "c", "d"}) Add(name, Kind::kSetting);
  EXPECT_EQ(told_, (Told{{"d", Status::kBusy}}));
}

TEST_F(CommandQueueTest, EndAnswersEverythingOnceAndLateAnswersDoNoHarm) {
  Make();
  Add("a", Kind::kVelocity, kPan);
  Add("b", Kind::kMove, kPan);
  Stop(kTilt);
  queue_.reset();
  EXPECT_EQ(told_, (Told{{"a", Status::kOffline}, {"b", Status::kOffline}, {"stop", Status::kOffline}}));
  for (const Sent& sent : sent_) sent.answered(Status::kDone);
  timer_.Advance(10s);
  EXPECT_EQ(told_.size(), 3u);
}

TEST_F(CommandQueueTest, SecondAnswerToACommandIsIgnored) {
  Make();
  Add("a", Kind::kSetting);
  const CommandQueue::Done answered = sent_[0].answered;
  answered(Status::kDone);
  answered(Status::kBusy);
  EXPECT_EQ(told_, (Told{{"a", Status::kDone}}));
}

TEST_F(CommandQueueTest, CallerMayAddTheNextOneWhenItIsTold) {
  Make();
  queue_->Add(
      {Kind::kSetting, {}, timer_.Now() + 2s, Sending("a"), [this](Status) { Add("b", Kind::kSetting); }});
  AnswerTo(0);
  EXPECT_EQ(Names(), (NameList{"a", "b"}));
}

// Random commands to a camera that answers at random, late, twice or not at all:
// each is told once and in time, none leaves late, and after the last stop the
// camera stands.
TEST_F(CommandQueueTest, HoldsWhatItPromisesWhateverComes) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    std::mt19937 random(seed);
    const auto pick = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    ManualTimer timer;
    std::map<int, int> told;
    std::vector<nanoseconds> added;
    Parts moving;
    {
      CommandQueue queue(timer, {static_cast<std::size_t>(1 + pick(2)), pick(2) * 50ms});
      const auto answer_some_time = [&](const CommandQueue::Done& answered, std::function<void()> executed) {
        const bool lost = pick(4) == 0;
        timer.RunIn(pick(700) * 1ms, [=, executed = std::move(executed)] {
          if (!lost) executed();
          answered(lost ? Status::kOffline : Status::kDone);
          if (pick(5) == 0) answered(Status::kDone);
        });
      };
      for (int number = 0; number < 60; ++number) {
        added.push_back(timer.Now());
        const nanoseconds deadline = timer.Now() + 1s;
        const auto done = [&, number](Status) {
          ++told[number];
          EXPECT_LE(timer.Now(), added[static_cast<std::size_t>(number)] + 1s);
        };
        const Parts parts(static_cast<unsigned>(1 + pick(15)));
        if (number == 59 || pick(4) == 0) {
          queue.Stop(
              number == 59 ? Parts(15) : parts, deadline,
              [&](const Parts& stopped, const CommandQueue::Done& answered) {
                answer_some_time(answered, [&, stopped] { moving &= ~stopped; });
              },
              done);
        } else {
          const Kind kind = static_cast<Kind>(pick(3));
          queue.Add({kind, kind == Kind::kSetting ? Parts() : parts, deadline,
                     [&, deadline](const Parts& moved, const CommandQueue::Done& answered) {
                       EXPECT_LT(timer.Now(), deadline);
                       answer_some_time(answered, [&, moved] { moving |= moved; });
                     },
                     done});
        }
        timer.Advance(pick(100) * 1ms);
      }
      timer.Advance(60s);
      EXPECT_TRUE(moving.none()) << "seed " << seed;
    }
    EXPECT_EQ(told.size(), 60u);
    for (const auto& [number, times] : told) EXPECT_EQ(times, 1) << number << ", seed " << seed;
    timer.Advance(10s);
  }
}

}  // namespace
}  // namespace vptz_test
