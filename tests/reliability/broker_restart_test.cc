// The broker dies and comes back under load.
#include <atomic>
#include <vector>

#include "reliability/bus_reliability.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

constexpr int kThreads = 4;
constexpr int kCallsOfAThread = 2500;
constexpr int kRestarts = 20;
constexpr int kTimeout = 1;

// One client with one thread that calls and calls.
class Caller {
 public:
  Caller(std::unique_ptr<VptzClient> client, Longest& longest)
      : client_(std::move(client)), longest_(longest) {}

  void Start(const std::atomic<bool>& enough) {
    thread_ = std::make_unique<Thread>([this, &enough] {
      while (!enough || made_ < kCallsOfAThread) CallOnce();
    });
  }
  void Join() { thread_->join(); }

  VptzClient& client() { return *client_; }
  int made() const { return made_; }
  int answered() const { return answered_; }
  int failed() const { return failed_; }

 private:
  void CallOnce() {
    const std::string text = "call " + std::to_string(made_++);
    char reply[512];
    int length = sizeof reply;
    const Clock::time_point begin = Clock::now();
    const int code =
        client_->CallSync("echo", text.data(), static_cast<int>(text.size()), reply, &length, kTimeout);
    EXPECT_TRUE(longest_.Keeps(begin, std::chrono::seconds(kTimeout) + kSlack)) << code;
    if (code >= 0) {
      EXPECT_EQ(std::string(reply, static_cast<std::size_t>(length)), text);
      ++answered_;
      return;
    }
    ++failed_;
    EXPECT_THAT(code, testing::AnyOf(-ENOTCONN, -ECONNRESET, -ESRCH, -ETIMEDOUT));
    // Failing at once, it would have used up its calls before the broker is back.
    const Clock::time_point next = Clock::now() + milliseconds(20);
    WaitUntil([next] { return Clock::now() >= next; });
  }

  std::unique_ptr<VptzClient> client_;
  Longest& longest_;
  std::unique_ptr<Thread> thread_;
  std::atomic<int> made_{0};
  std::atomic<int> answered_{0};
  std::atomic<int> failed_{0};
};

class BrokerRestart : public BusReliability {
 protected:
  // Waits until each caller has had so many more answers.
  bool AllAnswered(int more) {
    std::vector<int> before;
    for (const auto& caller : callers_) before.push_back(caller->answered());
    return WaitUntil([&] {
      for (std::size_t i = 0; i < callers_.size(); ++i) {
        if (callers_[i]->answered() < before[i] + more) return false;
      }
      return true;
    });
  }

  // Emits until every client has got a signal; the service may come back later
  // than a client.
  static bool SignalsArrive(bus_service* service) {
    TheReceiver(0).Clear();
    return WaitUntil([&] {
      Emit(service, "moved");
      std::vector<bus_client*> heard;
      for (const Delivery& delivery : TheReceiver(0).All()) heard.push_back(delivery.client);
      std::sort(heard.begin(), heard.end());
      heard.erase(std::unique(heard.begin(), heard.end()), heard.end());
      return heard.size() == kThreads;
    });
  }

  std::vector<std::unique_ptr<Caller>> callers_;
};

TEST_F(BrokerRestart, TwentyTimesDuringTenThousandCallsEveryCallEndsInTimeAndWorkGoesOn) {
  const auto service = Serve();
  Longest calls(delay_);
  Longest recoveries(delay_);
  std::atomic<bool> enough{false};
  for (int i = 0; i < kThreads; ++i) {
    callers_.push_back(std::make_unique<Caller>(Connected(), calls));
    EXPECT_EQ(callers_.back()->client().SubscribeSignal("moved", TheReceiver(0).callback), 0);
  }
  for (const auto& caller : callers_) caller->Start(enough);
  for (int restart = 0; restart < kRestarts; ++restart) {
    EXPECT_TRUE(AllAnswered(20));
    broker_.Kill();
    broker_.Start();
    const Clock::time_point back = Clock::now();
    EXPECT_TRUE(AllAnswered(1));
    EXPECT_TRUE(recoveries.Keeps(back, std::chrono::seconds(2))) << "restart " << restart;
    EXPECT_TRUE(SignalsArrive(service->get())) << "restart " << restart;
  }
  enough = true;
  int made = 0;
  int answered = 0;
  int failed = 0;
  for (const auto& caller : callers_) {
    caller->Join();
    made += caller->made();
    answered += caller->answered();
    failed += caller->failed();
  }
  EXPECT_GE(made, kThreads * kCallsOfAThread);
  EXPECT_EQ(answered + failed, made);
  RecordProperty("calls", made);
  RecordProperty("answered", answered);
  RecordProperty("longest_call_ms", calls.milliseconds_taken());
  RecordProperty("longest_recovery_ms", recoveries.milliseconds_taken());
}

}  // namespace
}  // namespace vptz_test
