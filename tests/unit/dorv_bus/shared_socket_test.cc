// Threads that read one socket in turns. The other end is the test's: no broker.
#include "shared_socket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "support/wait_until.h"

namespace {

std::atomic<int> watch_changes{0};

}  // namespace

// Counts, in the place of the C library's.
extern "C" int epoll_ctl(int epoll, int operation, int descriptor, epoll_event* event) noexcept {
  ++watch_changes;
  return static_cast<int>(syscall(SYS_epoll_ctl, epoll, operation, descriptor, event));
}

namespace dorv {
namespace {

using std::chrono::milliseconds;
using vptz_test::WaitUntil;

constexpr milliseconds kLong{20000};

// Each byte that arrives is the number of a waiter, which it finishes, or 0, a
// signal. Counts what arrived by the thread that read it.
class Stream : public SharedSocket::Stream {
 public:
  int descriptor() const override { return descriptor_; }
  bool WantsToWrite() const override { return wants_to_write_; }
  void ReadAndWrite() override {
    unsigned char numbers[64];
    const ssize_t count = read(descriptor_, numbers, sizeof numbers);
    for (ssize_t i = 0; i < count; ++i) {
      read_by_[numbers[i]] = std::this_thread::get_id();
      signals_ += numbers[i] == 0 ? 1 : 0;
      const auto waiter = waiters_.find(numbers[i]);
      if (waiter != waiters_.end()) waiter->second->Finish(numbers[i]);
    }
    if (std::exchange(wants_to_write_, false)) ++writes_;
  }

  int descriptor_ = -1;
  bool wants_to_write_ = false;
  int writes_ = 0;
  int signals_ = 0;
  std::map<int, std::thread::id> read_by_;
  std::map<int, Waiter*> waiters_;
};

class SharedSocketTest : public testing::Test {
 protected:
  SharedSocketTest() : background_([this] { RunBackground(); }) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Open();
    socket_.AdmitCallers();
  }
  ~SharedSocketTest() override {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      stop_ = true;
      socket_.WakeBackground();
    }
    background_.join();
    close(stream_.descriptor_);
    close(peer_);
  }

  // With the mutex held.
  void Open() {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
    stream_.descriptor_ = ends[0];
    peer_ = ends[1];
    socket_.Open();
  }
  void CloseIt() {
    socket_.Close();
    close(stream_.descriptor_);
    close(peer_);
    stream_.descriptor_ = peer_ = -1;
    for (const auto& [number, waiter] : stream_.waiters_) waiter->Finish(-ECONNRESET);
    socket_.WakeBackground();
  }

  void RunBackground() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stop_) {
      socket_.ForgetClosed();
      const bool ready = socket_.Sleep(lock, Clock::now() + kLong);
      ++rounds_;
      if (!socket_.IsLeftToBackground()) continue;
      if (ready) stream_.ReadAndWrite();
      socket_.WatchInBackground();
    }
  }

  void Arrive(unsigned char number) { ASSERT_EQ(write(peer_, &number, 1), 1); }

  // What a call does: takes the turn, sends, waits.
  int Call(unsigned char number, const std::function<void()>& send, milliseconds timeout = kLong) {
    std::unique_lock<std::mutex> lock(mutex_);
    Waiter waiter(Clock::now() + timeout);
    stream_.waiters_[number] = &waiter;
    socket_.TakeTurn(waiter);
    send();
    const int result = socket_.Await(lock, waiter);
    stream_.waiters_.erase(number);
    return result;
  }

  template <class F>
  auto Locked(F body) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return body();
  }
  // Closes the socket, and opens another when the background thread has forgotten it.
  void Reopen() {
    const int rounds = Locked([this] {
      CloseIt();
      return rounds_;
    });
    ASSERT_TRUE(WaitUntil([&] { return Locked([&] { return rounds_ > rounds; }); }));
    Locked([this] { Open(); });
  }
  bool Waits(int number) {
    return WaitUntil([&] { return Locked([&] { return stream_.waiters_.count(number) > 0; }); });
  }
  bool Signals(int count) {
    return WaitUntil([&] { return Locked([&] { return stream_.signals_ == count; }); });
  }

  std::mutex mutex_;
  Stream stream_;
  SharedSocket socket_{&stream_};
  int peer_ = -1;
  bool stop_ = false;
  int rounds_ = 0;
  std::thread background_;
};

TEST_F(SharedSocketTest, TheBackgroundThreadReadsWhileNoCallerWaits) {
  Arrive(0);
  EXPECT_TRUE(Signals(1));
  EXPECT_EQ(stream_.read_by_[0], background_.get_id());
}

TEST_F(SharedSocketTest, ACallerReadsItsAnswerItself) {
  EXPECT_EQ(Call(1, [this] { Arrive(1); }), 1);
  EXPECT_EQ(stream_.read_by_[1], std::this_thread::get_id());
}

TEST_F(SharedSocketTest, ACallerThatReadsFinishesOneThatQueues) {
  std::thread reading([this] { EXPECT_EQ(Call(1, [] {}), 1); });
  const std::thread::id reader = reading.get_id();
  ASSERT_TRUE(Waits(1));
  EXPECT_EQ(Call(2, [this] { Arrive(2); }), 2);
  EXPECT_EQ(Locked([this] { return stream_.read_by_[2]; }), reader);
  Arrive(1);
  reading.join();
}

TEST_F(SharedSocketTest, ACallerThatLeavesPassesTheTurnOn) {
  std::thread first([this] { EXPECT_EQ(Call(1, [] {}), 1); });
  ASSERT_TRUE(Waits(1));
  std::thread second([this] { EXPECT_EQ(Call(2, [] {}), 2); });
  const std::thread::id next = second.get_id();
  ASSERT_TRUE(Waits(2));
  Arrive(1);
  first.join();
  Arrive(2);
  second.join();
  EXPECT_EQ(stream_.read_by_[2], next);
}

TEST_F(SharedSocketTest, ACallerWhoseTimeIsOverPassesTheTurnOn) {
  std::thread first([this] {
    EXPECT_EQ(Call(
                  1, [] {}, milliseconds(50)),
              -ETIMEDOUT);
  });
  ASSERT_TRUE(Waits(1));
  std::thread second([this] { EXPECT_EQ(Call(2, [] {}), 2); });
  ASSERT_TRUE(Waits(2));
  first.join();
  Arrive(2);
  second.join();
}

TEST_F(SharedSocketTest, WhatComesAfterACallIsReadWithoutAnotherOne) {
  for (int round = 1; round <= 200; ++round) {
    EXPECT_EQ(Call(1, [this] { Arrive(1); }), 1);
    Arrive(0);
    ASSERT_TRUE(Signals(round)) << "the socket is left to no thread";
  }
}

TEST_F(SharedSocketTest, ATurnThatIsGivenBackUnusedLeavesTheSocketToTheBackground) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    Waiter waiter(Clock::now());
    socket_.TakeTurn(waiter);
    socket_.LeaveTurn(waiter);
    socket_.LeaveTurn(waiter);
  }
  Arrive(0);
  EXPECT_TRUE(Signals(1));
}

TEST_F(SharedSocketTest, ABurstOfCallsNeitherWakesTheBackgroundThreadNorChangesTheWatchEachTime) {
  constexpr int kCalls = 2000;
  const int rounds = Locked([this] { return rounds_; });
  const int changes = watch_changes;
  const Clock::time_point begin = Clock::now();
  for (int i = 0; i < kCalls; ++i) EXPECT_EQ(Call(1, [this] { Arrive(1); }), 1);
  const int moments = static_cast<int>((Clock::now() - begin) / SocketWatch::kCallersMoment);
  EXPECT_LE(Locked([this] { return rounds_; }) - rounds, moments + 2);
  EXPECT_LE(watch_changes - changes, 2 * (moments + 2));
}

TEST_F(SharedSocketTest, WhatDidNotFitIsWrittenByTheThreadThatReads) {
  Locked([this] {
    stream_.wants_to_write_ = true;
    socket_.KeepWriting();
  });
  EXPECT_TRUE(WaitUntil([this] { return Locked([this] { return stream_.writes_ == 1; }); }));
  std::thread reading([this] { EXPECT_EQ(Call(1, [] {}), 1); });
  ASSERT_TRUE(Waits(1));
  Locked([this] {
    stream_.wants_to_write_ = true;
    socket_.KeepWriting();
  });
  EXPECT_TRUE(WaitUntil([this] { return Locked([this] { return stream_.writes_ == 2; }); }));
  Arrive(1);
  reading.join();
}

TEST_F(SharedSocketTest, WhatDidNotFitAfterACallIsWrittenToo) {
  EXPECT_EQ(Call(1,
                 [this] {
                   Arrive(1);
                   stream_.wants_to_write_ = true;
                 }),
            1);
  Locked([this] {
    stream_.wants_to_write_ = true;
    socket_.KeepWriting();
  });
  EXPECT_TRUE(WaitUntil([this] { return Locked([this] { return !stream_.wants_to_write_; }); }));
}

TEST_F(SharedSocketTest, ASocketThatClosesEndsTheTurnAndTheNextOneIsRead) {
  for (int round = 1; round <= 50; ++round) {
    std::thread reading([this] { EXPECT_EQ(Call(1, [] {}), -ECONNRESET); });
    std::thread queueing([this] { EXPECT_EQ(Call(2, [] {}), -ECONNRESET); });
    ASSERT_TRUE(Waits(1));
    ASSERT_TRUE(Waits(2));
    Reopen();  // readers of the one before may not have left yet
    Arrive(0);
    EXPECT_TRUE(Signals(round));
    Locked([this] { socket_.AdmitCallers(); });
    reading.join();
    queueing.join();
    EXPECT_EQ(Call(3, [this] { Arrive(3); }), 3);
  }
}

TEST_F(SharedSocketTest, ACallerThatIsNotAdmittedIsAnsweredByTheBackgroundThread) {
  Reopen();
  std::thread waiting([this] { EXPECT_EQ(Call(1, [] {}), 1); });
  ASSERT_TRUE(Waits(1));
  Arrive(1);
  waiting.join();
  EXPECT_EQ(stream_.read_by_[1], background_.get_id());
}

TEST_F(SharedSocketTest, ManyCallersAndSignalsLoseNothing) {
  constexpr int kCallers = 4;
  constexpr int kCalls = 500;
  std::atomic<int> signals{0};
  std::vector<std::thread> callers;
  for (int number = 1; number <= kCallers; ++number) {
    callers.emplace_back([this, number, &signals] {
      std::mt19937 random(static_cast<unsigned>(number));
      for (int i = 0; i < kCalls; ++i) {
        const auto answer = static_cast<unsigned char>(number);
        EXPECT_EQ(Call(answer,
                       [&] {
                         if (random() % 4 == 0) {
                           Arrive(0);
                           ++signals;
                         }
                         Arrive(answer);
                       }),
                  number);
        if (random() % 8 == 0) std::this_thread::sleep_for(std::chrono::microseconds(random() % 1500));
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_TRUE(Signals(signals));
}

}  // namespace
}  // namespace dorv
