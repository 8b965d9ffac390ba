// An application with an interval timer: its signals interrupt every system call
// of its threads.
#include <signal.h>
#include <sys/time.h>

#include <vector>

#include "reliability/bus_reliability.h"
#include "reliability/every_millisecond.h"

namespace vptz_test {
namespace {

class Timer : public BusReliability {};

TEST_F(Timer, OfAMillisecondMakesNoCallFail) {
  const auto service = Serve();
  std::vector<std::unique_ptr<VptzClient>> clients;
  for (int i = 0; i < 2; ++i) clients.push_back(Connected());
  const EveryMillisecond timer;
  std::vector<Thread> threads;
  for (const auto& client : clients) {
    threads.emplace_back([&] {
      int failures = 0;
      for (int i = 0; i < 5000; ++i) failures += CallOnce(*client, "echo", "x", 10).reply == "x" ? 0 : 1;
      EXPECT_EQ(failures, 0);
    });
  }
  for (Thread& thread : threads) thread.join();
  RecordProperty("signals", timer.Count());
}

TEST_F(Timer, OfAMillisecondLetsClientsConnectSubscribeAndTimeOut) {
  const auto service = Serve([](bus_service*, bus_request* request) {
    const bool echo = std::string(bus_request_method(request)) == "echo";
    if (echo) {
      Reply(request, Payload(request));
    } else {
      bus_request_fail(request, -EIO);
    }
  });
  const EveryMillisecond timer;
  for (int i = 0; i < 50; ++i) {
    const auto client = Connected();
    EXPECT_EQ(client->SubscribeSignal("moved", TheReceiver(0).callback), 0);
    EXPECT_EQ(CallOnce(*client, "echo", std::string(500, 'x'), 10).reply, std::string(500, 'x'));
    EXPECT_EQ(CallOnce(*client, "other", "x", 10).code, -EIO);
  }
  const auto client = Connected();
  broker_.Stop();
  Longest calls(delay_);
  const Clock::time_point begin = Clock::now();
  EXPECT_EQ(CallOnce(*client, "echo", "x", 1).code, -ETIMEDOUT);
  EXPECT_TRUE(calls.Keeps(begin, std::chrono::seconds(1) + kSlack));
  EXPECT_GE(Clock::now() - begin, std::chrono::seconds(1)) << "the signals end no wait early";
  broker_.Continue();
  EXPECT_GT(timer.Count(), 100);
}

}  // namespace
}  // namespace vptz_test
