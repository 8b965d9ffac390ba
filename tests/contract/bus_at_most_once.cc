// Commands are executed at most once and never after their time-out.
#include <cerrno>
#include <map>
#include <mutex>

#include "contract/bus_fixture.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

constexpr int kTimeout = 1;

// One command each twentieth of a second; each is due from its call on for
// kTimeout.
class CommandStream {
 public:
  explicit CommandStream(bus_client* client) : client_(client), next_(Clock::now()) {}

  // Sends commands until the condition holds.
  template <class F>
  bool SendUntil(F condition) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(20);
    while (!condition()) {
      if (Clock::now() >= end) return false;
      WaitUntil([this] { return Clock::now() >= next_; });
      next_ += milliseconds(50);
      Send();
    }
    return true;
  }

  // Sends commands for so long.
  void SendFor(milliseconds duration) {
    const Clock::time_point end = Clock::now() + duration;
    SendUntil([end] { return Clock::now() >= end; });
  }

  int sent() const { return sent_; }

  // `when` is the steady clock's time in nanoseconds.
  void ExpectDue(const std::string& command, std::int64_t when) const {
    const auto begin = begins_.at(std::stoi(command)).time_since_epoch();
    const auto late = std::chrono::nanoseconds(when) - begin - std::chrono::seconds(kTimeout);
    // Between the service's look at the clock and the test's lies a thread switch.
    EXPECT_LE(late, kSlack) << "command " << command << " was executed late";
  }

 private:
  void Send() {
    const int number = static_cast<int>(begins_.size());
    begins_[number] = Clock::now();
    const int result =
        CallAsync(client_, "camera", "echo", std::to_string(number), TheReceiver(0).callback, kTimeout);
    EXPECT_THAT(result, testing::AnyOf(0, -ENOTCONN));
    if (result == 0) ++sent_;
  }

  bus_client* client_;
  Clock::time_point next_;
  std::map<int, Clock::time_point> begins_;
  int sent_ = 0;
};

class BusAtMostOnce : public BusContract {
 protected:
  // Waits until every command is answered or given up, then looks at what was
  // executed.
  static void ExpectOnceAndInTime(PeerProcess& service, const CommandStream& commands) {
    EXPECT_TRUE(TheReceiver(0).WaitFor(static_cast<std::size_t>(commands.sent())));
    std::map<std::string, int> executions;
    for (const Executed& executed : service.Received()) {
      EXPECT_EQ(++executions[executed.payload], 1) << "command " << executed.payload;
      commands.ExpectDue(executed.payload, executed.nanoseconds);
    }
    EXPECT_GT(executions.size(), 10U);
    EXPECT_EQ(TheReceiver(0).Count(), static_cast<std::size_t>(commands.sent()));
  }

  static bool Answered(std::size_t more) {
    std::size_t count = 0;
    for (const Delivery& delivery : TheReceiver(0).All()) count += delivery.length >= 0;
    return count >= more;
  }
};

TEST_F(BusAtMostOnce, OutageOfTheBroker) {
  const auto service = peer_->ServeApart("camera");
  const ClientPtr client = Connected();
  CommandStream commands(client.get());
  EXPECT_TRUE(commands.SendUntil([] { return Answered(10); }));
  peer_->KillBroker();
  commands.SendFor(milliseconds(1500));
  peer_->StartBroker();
  EXPECT_TRUE(commands.SendUntil([] { return Answered(25); }));
  ExpectOnceAndInTime(*service, commands);
}

TEST_F(BusAtMostOnce, BrokerHeldStillLongerThanTheTimeOut) {
  const auto service = peer_->ServeApart("camera");
  const ClientPtr client = Connected();
  CommandStream commands(client.get());
  EXPECT_TRUE(commands.SendUntil([] { return Answered(10); }));
  peer_->StopBroker();
  commands.SendFor(milliseconds(1500));
  peer_->ContinueBroker();
  EXPECT_TRUE(commands.SendUntil([] { return Answered(25); }));
  ExpectOnceAndInTime(*service, commands);
}

TEST_F(BusAtMostOnce, ServiceHeldStillLongerThanTheTimeOut) {
  const auto service = peer_->ServeApart("camera");
  const ClientPtr client = Connected();
  CommandStream commands(client.get());
  EXPECT_TRUE(commands.SendUntil([] { return Answered(10); }));
  // None may be under way: it could be held still in the middle of its execution.
  EXPECT_TRUE(TheReceiver(0).WaitFor(static_cast<std::size_t>(commands.sent())));
  service->Stop();
  commands.SendFor(milliseconds(1500));
  service->Continue();
  EXPECT_TRUE(commands.SendUntil([] { return Answered(25); }));
  ExpectOnceAndInTime(*service, commands);
}

TEST_F(BusAtMostOnce, BrokerHeldStillAndThenKilled) {
  const auto service = peer_->ServeApart("camera");
  const ClientPtr client = Connected();
  CommandStream commands(client.get());
  EXPECT_TRUE(commands.SendUntil([] { return Answered(10); }));
  peer_->StopBroker();
  commands.SendFor(milliseconds(500));
  peer_->KillBroker();
  commands.SendFor(milliseconds(500));
  peer_->StartBroker();
  EXPECT_TRUE(commands.SendUntil([] { return Answered(25); }));
  ExpectOnceAndInTime(*service, commands);
}

}  // namespace
}  // namespace vptz_test
