// The service dies in the middle of a call, or is not there at all.
#include <unistd.h>

#include "contract/bus_peer.h"
#include "reliability/bus_reliability.h"
#include "support/raw_mqtt.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

constexpr milliseconds kAbsentIsToldIn{100};

class ServiceKilled : public BusReliability {
 protected:
  // Such a call goes from this thread to the broker and back. With a watcher half of
  // its time is the bus's own, so that the other half must not be the machine's.
  std::chrono::nanoseconds Queued() const { return TimeQueued(gettid()) + TimeQueued(broker_.pid()); }

  void ExpectAbsent(VptzClient& client, Longest& longest) {
    const auto queued = Queued();
    const Clock::time_point begin = Clock::now();
    EXPECT_EQ(CallOnce(client, "echo", "x", 10).code, -ESRCH);
    EXPECT_TRUE(longest.Keeps(begin, kAbsentIsToldIn, Queued() - queued));
  }
};

TEST_F(ServiceKilled, InTheMiddleOfACallIsToldAtOnceAHundredTimes) {
  const auto peer = MakeBusPeer();
  VptzClient client;
  ASSERT_EQ(client.Connect("reliability", peer->address().c_str()), 0);
  Longest deaths(delay_);
  Longest absences(delay_);
  for (int round = 0; round < 100 && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const auto service = peer->ServeApart("vptz");
    int code = 0;
    Clock::time_point ended;
    Thread call([&] {
      code = CallOnce(client, "silent", "x", 10).code;
      ended = Clock::now();
    });
    ASSERT_TRUE(WaitUntil([&] { return service->Received().size() == 1; }));
    const Clock::time_point killed = Clock::now();
    service->Kill();
    call.join();
    EXPECT_EQ(code, -ECONNRESET);
    EXPECT_TRUE(deaths.Keeps(killed, kAtOnce));
    ExpectAbsent(client, absences);
  }
  RecordProperty("longest_until_told_ms", deaths.milliseconds_taken());
  RecordProperty("longest_absence_ms", absences.milliseconds_taken());
}

TEST_F(ServiceKilled, AbsenceIsToldAtOnceAlsoWithAWatcherOfEverything) {
  const RawMqtt watcher(broker_.socket_path(), "#");
  const auto client = Connected();
  Longest absences(delay_);
  for (int i = 0; i < 20; ++i) ExpectAbsent(*client, absences);
  EXPECT_EQ(client->GetStatus(10), -ESRCH);
  RecordProperty("longest_absence_ms", absences.milliseconds_taken());
}

}  // namespace
}  // namespace vptz_test
