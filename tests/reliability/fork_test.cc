// The application forks: the child has a copy of every client and of every lock,
// but none of the threads.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "reliability/bus_reliability.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

// The sanitizer ends a child of a threaded process that starts threads.
#if defined(__SANITIZE_THREAD__)
constexpr bool kChildMayStartThreads = false;
#else
constexpr bool kChildMayStartThreads = true;
#endif

class Fork : public BusReliability {
 protected:
  // Runs the body in a child that then ends; its wait status.
  template <class Body>
  static int InChild(Body body) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      body();
      _exit(0);
    }
    return WaitStatus(child);
  }

  static int WaitStatus(pid_t child) {
    // To wait for "-1" would be to wait for the broker, which is a child as well.
    if (child < 0) {
      ADD_FAILURE() << "no process to be had: " << std::strerror(errno);
      return -1;
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child) << std::strerror(errno);
    return status;
  }
};

TEST_F(Fork, ChildThatDestroysTheClientLeavesTheParentsConnectionAlone) {
  std::atomic<bus_request*> kept{nullptr};
  const auto service = Serve([&](bus_service*, bus_request* request) {
    if (std::string(bus_request_method(request)) == "slow") {
      kept = request;
    } else {
      Reply(request, Payload(request));
    }
  });
  auto client = Connected();
  EXPECT_EQ(client->SubscribeSignal("moved", TheReceiver(0).callback), 0);
  EXPECT_EQ(client->CallAsync("slow", "x", 1, TheReceiver(1).callback, 20), 0);
  ASSERT_TRUE(WaitUntil([&] { return kept != nullptr; }));
  Longest children(delay_);
  const Clock::time_point begin = Clock::now();
  EXPECT_EQ(InChild([&] {
              client.reset();
              bus_service_free(service->get());
            }),
            0);
  EXPECT_TRUE(children.Keeps(begin, kAtOnce));
  // A call that was under way is answered over the same connection.
  EXPECT_EQ(Reply(kept, "unharmed"), 0);
  ASSERT_TRUE(TheReceiver(1).WaitFor(1));
  EXPECT_EQ(TheReceiver(1).All()[0].payload, "unharmed");
  EXPECT_EQ(CallOnce(*client, "echo", "x", 10).reply, "x");
  EXPECT_EQ(Emit(service->get(), "moved"), 0);
  EXPECT_TRUE(TheReceiver(0).WaitFor(1));
}

TEST_F(Fork, ChildIsToldThatTheParentsClientIsOfNoUse) {
  const auto service = Serve();
  const auto client = Connected();
  EXPECT_EQ(InChild([&] {
              const bool refused = CallOnce(*client, "echo", "x", 10).code == -ENOTCONN &&
                                   client->SubscribeSignal("moved", TheReceiver(0).callback) == -ENOTCONN &&
                                   client->Disconnect() == -1 && Emit(service->get(), "moved") == -ENOTCONN;
              if (!refused) _exit(1);
            }),
            0);
  EXPECT_EQ(CallOnce(*client, "echo", "x", 10).reply, "x");
}

TEST_F(Fork, InTheMiddleOfCallsOfOtherThreadsHarmsNeitherSide) {
  const auto service = Serve();
  std::vector<std::unique_ptr<VptzClient>> clients;
  for (int i = 0; i < 2; ++i) clients.push_back(Connected());
  std::atomic<bool> stop{false};
  std::atomic<int> failures{0};
  std::vector<Thread> threads;
  for (const auto& client : clients) {
    threads.emplace_back([&] {
      while (!stop) {
        const Clock::time_point begin = Clock::now();
        const CallResult result = CallOnce(*client, "echo", "x", 10);
        EXPECT_EQ(result.code, 0) << "after " << (Clock::now() - begin) / milliseconds(1) << " ms";
        failures += result.reply == "x" ? 0 : 1;
      }
    });
  }
  Longest children(delay_);
  for (int i = 0; i < 100; ++i) {
    const Clock::time_point begin = Clock::now();
    EXPECT_EQ(InChild([&] {
                for (auto& client : clients) client.reset();
              }),
              0);
    // A child that shares the processors with all these threads: it must end, not at once.
    EXPECT_TRUE(children.Keeps(begin, std::chrono::seconds(5)))
        << "fork " << i << " took " << children.milliseconds_taken();
  }
  stop = true;
  for (Thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
  RecordProperty("longest_child_ms", children.milliseconds_taken());
}

milliseconds ProcessorTime() {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return std::chrono::duration_cast<milliseconds>(std::chrono::seconds(used.tv_sec) +
                                                  std::chrono::nanoseconds(used.tv_nsec));
}

// It has a copy of the socket, which thereby lives on when the parent has closed it.
TEST_F(Fork, ChildThatLivesOnDoesNotKeepTheParentBusyWhenTheBrokerDies) {
  const auto service = Serve();
  const auto client = Connected();
  EXPECT_EQ(CallOnce(*client, "echo", "x", 10).code, 0);
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    for (;;) pause();
  }
  broker_.Kill();
  EXPECT_TRUE(WaitUntil([&] { return CallOnce(*client, "echo", "x", 1).code == -ENOTCONN; }));
  const milliseconds before = ProcessorTime();
  std::this_thread::sleep_for(std::chrono::seconds(1));  // measured, not waited for
  const milliseconds used = ProcessorTime() - before;
  EXPECT_LT(used, milliseconds(250));
  RecordProperty("processor_time_in_a_second_ms", static_cast<int>(used.count()));
  broker_.Start();
  EXPECT_TRUE(WaitUntil([&] { return CallOnce(*client, "echo", "x", 1).code == 0; }));
  if (child > 0) kill(child, SIGKILL);
  WaitStatus(child);
}

TEST_F(Fork, ChildMayMakeAClientOfItsOwn) {
  if (!kChildMayStartThreads) GTEST_SKIP() << "not with this sanitizer";
  const auto service = Serve();
  const auto client = Connected();
  EXPECT_EQ(InChild([&] {
              VptzClient own;
              const bool works = own.Connect("child", broker_.address().c_str()) == 0 &&
                                 CallOnce(own, "echo", "x", 10).reply == "x";
              if (!works) _exit(1);
            }),
            0);
  EXPECT_EQ(CallOnce(*client, "echo", "x", 10).reply, "x");
}

}  // namespace
}  // namespace vptz_test
