// Until when a request may be executed, whatever clock its caller goes by.
#include <cerrno>
#include <limits>
#include <map>
#include <vector>

#include "contract/bundled_bus.h"
#include "support/broker.h"
#include "support/process.h"
#include "support/raw_mqtt.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

using std::chrono::nanoseconds;

// Where the numbers of a request's correlation data lie.
constexpr std::size_t kSequence = 8;
constexpr std::size_t kBootId = 16;
constexpr std::size_t kBootDeadline = 24;
constexpr std::size_t kWallDeadline = 32;

void Add(std::string& correlation, std::size_t at, std::int64_t amount) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < 8; ++i)
    number = (number << 8) | static_cast<unsigned char>(correlation.at(at + i));
  number += static_cast<std::uint64_t>(amount);
  for (std::size_t i = 8; i-- > 0; number >>= 8) correlation.at(at + i) = static_cast<char>(number & 0xff);
}

class BundledDeadline : public BundledBus {
 protected:
  Handler Recorder() {
    return [this](bus_service*, bus_request* request) {
      executed_.push_back(Payload(request));
      Reply(request, Payload(request));
    };
  }

  // A request that has been answered, to be sent again as a later one of its caller.
  RawMessage Later(const RawMessage& request, const std::string& payload) {
    RawMessage later = request;
    later.payload = payload;
    Add(later.correlation, kSequence, ++sent_);
    return later;
  }

  // A service in a process whose clock since boot differs by that many seconds.
  // Null where this machine does not allow it.
  std::unique_ptr<Process> ServeShifted(int seconds) const {
    const std::vector<std::string> shifted = {
        "unshare", "--user",      "--map-root-user", "--time", "--boottime=" + std::to_string(seconds),
        "--fork",  "--kill-child"};
    std::vector<std::string> command = shifted;
    command.emplace_back("true");
    if (Process(command).Wait() != 0) return nullptr;
    command = shifted;
    command.insert(command.end(), {VPTZ_CONTRACT_BUS_SERVER, "camera", broker_.address()});
    auto process = std::make_unique<Process>(command);
    EXPECT_TRUE(WaitUntil([&] { return process->Output() == "serving\n"; })) << process->Errors();
    return process;
  }

  Broker broker_;
  std::vector<std::string> executed_;
  std::int64_t sent_ = 0;
};

TEST_F(BundledDeadline, FartherAwayThanAnHourIsNoneOnTheSameMachine) {
  RawMqtt watcher(broker_.socket_path(), "dorv/call/#");
  ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "move", "1", 10).reply, "1");
  const RawMessage request = watcher.WaitFor("move");
  for (const nanoseconds away : {nanoseconds(std::chrono::hours(24 * 365)), nanoseconds(std::chrono::hours(2)),
                                 nanoseconds(std::chrono::seconds(3601))}) {
    RawMessage far = Later(request, "far");
    Add(far.correlation, kBootDeadline, away.count());
    watcher.Send(far);
  }
  RawMessage near = Later(request, "near");
  Add(near.correlation, kBootDeadline, nanoseconds(std::chrono::minutes(59)).count());
  watcher.Send(near);
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "move", "2").reply, "2");
  service.Free();
  EXPECT_EQ(executed_, (std::vector<std::string>{"1", "near", "2"}));
}

TEST_F(BundledDeadline, FartherAwayThanAnHourIsNoneFromAnotherMachine) {
  RawMqtt watcher(broker_.socket_path(), "dorv/call/#");
  ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "move", "1", 10).reply, "1");
  const RawMessage request = watcher.WaitFor("move");
  for (const nanoseconds away : {nanoseconds(std::chrono::hours(2)), nanoseconds(std::chrono::seconds(3670))}) {
    RawMessage far = Later(request, "far");
    Add(far.correlation, kBootId, 1);
    Add(far.correlation, kWallDeadline, away.count());
    watcher.Send(far);
  }
  RawMessage near = Later(request, "near");
  Add(near.correlation, kBootId, 1);
  Add(near.correlation, kBootDeadline, nanoseconds(std::chrono::hours(2)).count());
  watcher.Send(near);
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "move", "2").reply, "2");
  service.Free();
  EXPECT_EQ(executed_, (std::vector<std::string>{"1", "near", "2"}));
}

TEST_F(BundledDeadline, LongestTimeoutOfAMachineWhoseClockIsAheadIsTaken) {
  RawMqtt watcher(broker_.socket_path(), "dorv/call/#");
  ServedName service("camera", broker_.address(), Recorder());
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "move", "1", 3600).reply, "1");
  RawMessage ahead = Later(watcher.WaitFor("move"), "ahead");
  Add(ahead.correlation, kBootId, 1);
  Add(ahead.correlation, kWallDeadline, nanoseconds(std::chrono::seconds(50)).count());
  watcher.Send(ahead);
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "move", "2").reply, "2");
  service.Free();
  EXPECT_EQ(executed_, (std::vector<std::string>{"1", "ahead", "2"}));
}

TEST_F(BundledDeadline, TimeThatIsLeftGoesByTheClockThatDecides) {
  std::map<std::string, int> left;
  RawMqtt watcher(broker_.socket_path(), "dorv/call/#");
  ServedName service("camera", broker_.address(), [&](bus_service*, bus_request* request) {
    left[Payload(request)] = bus_request_time_left(request);
    Reply(request, Payload(request));
  });
  const ClientPtr client = ConnectedTo(broker_.address());
  EXPECT_EQ(Call(client.get(), "camera", "move", "1", 10).reply, "1");
  const RawMessage request = watcher.WaitFor("move");
  RawMessage same_machine = Later(request, "same");
  Add(same_machine.correlation, kBootDeadline, nanoseconds(std::chrono::minutes(10)).count());
  watcher.Send(same_machine);
  RawMessage other_machine = Later(request, "other");
  Add(other_machine.correlation, kBootId, 1);
  Add(other_machine.correlation, kWallDeadline, nanoseconds(std::chrono::minutes(20)).count());
  watcher.Send(other_machine);
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "move", "2", 60).reply, "2");
  service.Free();
  const auto minutes = [&](const char* payload) { return left.at(payload) / 60000; };
  EXPECT_EQ(minutes("same"), 10);
  EXPECT_EQ(minutes("other"), 20);
}

TEST_F(BundledDeadline, CallsThatWouldWaitLongerThanAnHourAreAnswered) {
  const ServedName service("camera", broker_.address(), &Echo);
  const ClientPtr client = ConnectedTo(broker_.address());
  for (const int timeout : {3600, 3601, 86400, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(Call(client.get(), "camera", "move", "x", timeout).reply, "x") << timeout;
  }
}

TEST_F(BundledDeadline, HoldsInATimeNamespaceWhoseClockIsAhead) {
  const auto service = ServeShifted(60);
  if (service == nullptr) GTEST_SKIP() << "no time namespaces to be had";
  EXPECT_EQ(Call(ConnectedTo(broker_.address()).get(), "camera", "echo", "x", 2).reply, "x");
}

TEST_F(BundledDeadline, HoldsInATimeNamespaceWhoseClockIsBehind) {
  RawMqtt watcher(broker_.socket_path(), "dorv/call/#");
  const ClientPtr client = ConnectedTo(broker_.address());
  {
    const ServedName service("camera", broker_.address(), &Echo);
    EXPECT_EQ(Call(client.get(), "camera", "echo", "late", 1).reply, "late");
  }
  const Clock::time_point sent = Clock::now();
  const RawMessage request = watcher.WaitFor("echo");
  const auto service = ServeShifted(-60);
  if (service == nullptr) GTEST_SKIP() << "no time namespaces to be had";
  ASSERT_TRUE(WaitUntil([&] { return Clock::now() > sent + milliseconds(1100); }));
  watcher.Send(request);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "due", 2).reply, "due");
  ASSERT_TRUE(WaitUntil([&] { return service->Output().find("due") != std::string::npos; }));
  EXPECT_EQ(service->Output().find("late"), std::string::npos) << "executed after its deadline";
}

}  // namespace
}  // namespace vptz_test
