// A service that comes, goes and comes back while others call it.
#include <atomic>
#include <cerrno>
#include <fstream>
#include <map>
#include <set>
#include <vector>

#include "contract/bundled_bus.h"
#include "support/broker.h"
#include "support/raw_mqtt.h"
#include "support/temp_dir.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

constexpr int kCallers = 4;
constexpr int kRestarts = 40;

class BundledRestart : public BundledBus {
 protected:
  // Notes what it executes.
  Handler Recorder() {
    return [this](bus_service*, bus_request* request) {
      const std::string payload = Payload(request);
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++executed_[payload];
      }
      Reply(request, payload);
    };
  }

  // Calls one after the other until told to stop, each with bytes of its own.
  void CallUntilStopped(const std::string& caller) {
    const ClientPtr client = ConnectedTo(broker_.address());
    for (int number = 0; !stop_; ++number) {
      const std::string payload = caller + ":" + std::to_string(number);
      const CallResult result = Call(client.get(), "camera", "move", payload, 3);
      const std::lock_guard<std::mutex> lock(mutex_);
      codes_.emplace(payload, result.code);
    }
  }

  std::size_t Executed() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return executed_.size();
  }

  // Each service stays until it has answered some of the calls.
  void RestartUnderCalls() {
    std::vector<Thread> callers;
    for (int caller = 0; caller < kCallers; ++caller) {
      callers.emplace_back([this, caller] { CallUntilStopped(std::to_string(caller)); });
    }
    for (int restart = 0; restart < kRestarts; ++restart) {
      const std::size_t before = Executed();
      const ServedName service("camera", broker_.address(), Recorder());
      EXPECT_EQ(service.result(), 0);
      EXPECT_TRUE(WaitUntil([&] { return Executed() >= before + kCallers; }));
    }
    stop_ = true;
  }

  void ExpectHonestResults() {
    std::set<int> codes;
    for (const auto& [payload, code] : codes_) {
      codes.insert(code);
      EXPECT_THAT(code, testing::AnyOf(0, -ESRCH, -ECONNRESET)) << payload;
      const int times = executed_[payload];
      EXPECT_LE(times, 1) << payload;
      if (code == 0) {
        EXPECT_EQ(times, 1) << payload;
      }
      if (code == -ESRCH) {
        EXPECT_EQ(times, 0) << payload << " was executed and said to be not";
      }
    }
    EXPECT_EQ(codes.count(0), 1u) << "no call came through";
    EXPECT_EQ(codes.count(-ESRCH), 1u) << "no call came while there was no service";
  }

  Broker broker_;
  std::atomic<bool> stop_{false};
  std::mutex mutex_;
  std::map<std::string, int> executed_;
  std::map<std::string, int> codes_;
};

TEST_F(BundledRestart, LosesNoCall) {
  RestartUnderCalls();
  ExpectHonestResults();
}

// The watcher takes every request, so the broker never says that nobody does.
TEST_F(BundledRestart, LosesNoCallBehindAWatcherOfEverything) {
  const RawMqtt watcher(broker_.socket_path(), "#");
  RestartUnderCalls();
  ExpectHonestResults();
}

// What an earlier service leaves behind may clear the presence of the one that
// serves.
TEST_F(BundledRestart, PresenceThatIsClearedComesBackAndLosesNoCall) {
  const RawMqtt watcher(broker_.socket_path(), "dorv/call/#");
  RawMqtt earlier(broker_.socket_path(), "");
  const ServedName service("camera", broker_.address(), Recorder());
  std::vector<Thread> callers;
  for (int caller = 0; caller < kCallers; ++caller) {
    callers.emplace_back([this, caller] { CallUntilStopped(std::to_string(caller)); });
  }
  for (int time = 0; time < kRestarts; ++time) {
    earlier.Send({"dorv/presence/camera", "", "", ""}, true);
    EXPECT_THAT(Call(ConnectedTo(broker_.address()).get(), "camera", "move", "own" + std::to_string(time)).code,
                testing::AnyOf(0, -ESRCH, -ECONNRESET));
  }
  stop_ = true;
  callers.clear();
  for (const auto& [payload, code] : codes_) {
    EXPECT_THAT(code, testing::AnyOf(0, -ESRCH, -ECONNRESET)) << payload;
    if (code == -ESRCH) {
      EXPECT_EQ(executed_[payload], 0) << payload << " was executed and said to be not";
    }
  }
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "move", "last").reply, "last");
}

// One that died without the broker's notice is replaced: its presence does not
// go before the new one's comes.
TEST_F(BundledRestart, CallsToAServiceThatIsReplacedAreToldAtOnce) {
  RawMqtt dead(broker_.socket_path(), "dorv/call/camera/#");
  dead.Send({"dorv/presence/camera", "dead", "", ""}, true);
  const ClientPtr client = ConnectedTo(broker_.address());
  CallResult result{};
  Thread calling([&] { result = Call(client.get(), "camera", "move", "1", 20); });
  dead.WaitFor("move");
  EXPECT_LT(Took([&] {
              dead.Send({"dorv/presence/camera", "alive", "", ""}, true);
              calling.join();
            }),
            kAtOnce);
  EXPECT_EQ(result.code, -ECONNRESET);
}

// It announces itself only when it is sure to be reached.
TEST_F(BundledRestart, ServiceThatMayNotAnnounceItselfIsTold) {
  const TempDir folder;
  const std::string rules = folder.path() + "/acl";
  std::ofstream(rules) << "topic readwrite dorv/call/#\npattern read dorv/reply/%c\n"
                          "topic write dorv/reply/#\ntopic read dorv/presence/#\n";
  const Broker broker({"acl_file " + rules});
  EXPECT_LT(Took([&] { EXPECT_EQ(ServedName("camera", broker.address(), &Echo).result(), -EACCES); }), kAtOnce);
}

}  // namespace
}  // namespace vptz_test
