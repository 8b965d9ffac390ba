#include <cerrno>
#include <vector>

#include "contract/bus_fixture.h"

namespace vptz_test {
namespace {

class BusTimeout : public BusContract {
 protected:
  // A call that is never answered.
  static void ExpectTimeout(bus_client* client, int timeout, milliseconds expected) {
    CallResult result{};
    const Clock::time_point begin = Clock::now();
    EXPECT_LE(Took([&] { result = Call(client, "camera", "silent", "", timeout); }), expected + kSlack);
    EXPECT_GE(Clock::now() - begin, expected);
    EXPECT_EQ(result.code, -ETIMEDOUT);
  }
};

TEST_F(BusTimeout, UnansweredCallComesBackInTime) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  ExpectTimeout(client.get(), 1, milliseconds(1000));
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BusTimeout, UnansweredCallsOfFourThreadsComeBackInTime) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::vector<Thread> threads;
  for (const int timeout : {1, 1, 1, 2}) {
    threads.emplace_back(
        [&client, timeout] { ExpectTimeout(client.get(), timeout, milliseconds(timeout * 1000)); });
  }
  for (Thread& thread : threads) thread.join();
}

// Neither is told that signals will come before the broker has said so.
TEST_F(BusTimeout, SubscribingTwiceAtOnceIsToldToBoth) {
  const ClientPtr client = Connected();
  peer_->StopBroker();
  std::vector<Thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&client] {
      EXPECT_LT(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
    });
  }
  for (Thread& thread : threads) thread.join();
  peer_->ContinueBroker();
}

TEST_F(BusTimeout, ZeroOrLessSelectsTheDefault) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  std::vector<Thread> threads;
  for (const int timeout : {0, -1, -2000000000}) {
    threads.emplace_back([&client, timeout] { ExpectTimeout(client.get(), timeout, kDefaultTimeout); });
  }
  for (Thread& thread : threads) thread.join();
}

TEST_F(BusTimeout, TheLongestTimeOutDoesNotOverflow) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x", 2147483647).reply, "x");
}

TEST_F(BusTimeout, StoppedServiceProcessIsNotWaitedForLonger) {
  const auto service = peer_->ServeApart("camera");
  const ClientPtr client = Connected();
  service->Stop();
  ExpectTimeout(client.get(), 1, milliseconds(1000));
  service->Continue();
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BusTimeout, StoppedBrokerIsNotWaitedForLonger) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  peer_->StopBroker();
  std::vector<Thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&client] { ExpectTimeout(client.get(), 1, milliseconds(1000)); });
  }
  for (Thread& thread : threads) thread.join();
  EXPECT_LE(Took([&] {
              EXPECT_LT(bus_signal_subscribe(client.get(), "camera", "moved", TheReceiver(0).callback), 0);
            }),
            kDefaultTimeout + kSlack);
  peer_->ContinueBroker();
}

TEST_F(BusTimeout, LargeRequestsToAStoppedBrokerComeBackInTime) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  peer_->StopBroker();
  const std::string large(1048576, 'x');
  for (int i = 0; i < 2; ++i) {
    EXPECT_LE(Took([&] { EXPECT_EQ(Call(client.get(), "camera", "echo", large, 1).code, -ETIMEDOUT); }),
              milliseconds(1000) + kSlack);
  }
  peer_->ContinueBroker();
}

TEST_F(BusTimeout, LateReplyIsNotGivenToALaterCall) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  ExpectTimeout(client.get(), 1, milliseconds(1000));
  CallResult result{};
  Thread later([&] { result = Call(client.get(), "camera", "silent", "", 20); });
  EXPECT_TRUE(service->WaitKept(2));
  service->Take()->Reply("late");
  service->Take()->Reply("in time");
  later.join();
  EXPECT_EQ(result.reply, "in time");
}

TEST_F(BusTimeout, ReplyHeldUpByAStoppedProcessIsNotGivenToALaterCall) {
  const auto service = peer_->ServeApart("camera");
  const ClientPtr client = Connected();
  service->Stop();
  EXPECT_EQ(Call(client.get(), "camera", "echo", "first", 1).code, -ETIMEDOUT);
  EXPECT_EQ(CallAsync(client.get(), "camera", "echo", "second", TheReceiver(0).callback, 10), 0);
  service->Continue();
  for (int i = 0; i < 20; ++i) EXPECT_EQ(Call(client.get(), "camera", "echo", "third").reply, "third");
  ASSERT_TRUE(TheReceiver(0).WaitFor(1));
  EXPECT_EQ(TheReceiver(0).All()[0].payload, "second");
  EXPECT_EQ(service->Received().front().payload, "second") << "the first request came past its deadline";
}

TEST_F(BusTimeout, AsynchronousCallIsToldOfItsTimeOut) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_LE(Took([&] {
              EXPECT_EQ(CallAsync(client.get(), "camera", "silent", "", TheReceiver(0).callback, 1), 0);
              EXPECT_TRUE(TheReceiver(0).WaitFor(1));
            }),
            milliseconds(1000) + kSlack);
  EXPECT_EQ(TheReceiver(0).All()[0].length, -ETIMEDOUT);
  service->Take()->Reply("late");
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
  EXPECT_EQ(TheReceiver(0).Count(), 1U);
}

}  // namespace
}  // namespace vptz_test
