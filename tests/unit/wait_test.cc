#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include <vptz/wait.h>

#include "vptz_client/command_test.h"
#include "vptz_device/rows.h"

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using vptz_test::BusCall;
using vptz_test::ConnectedClientTest;
using vptz_test::Insert;
using vptz_test::StatusReply;

constexpr milliseconds kNoPause(0);

tutorial::VptzResponse PanAt(double position, double speed) {
  tutorial::VptzResponse reply = StatusReply(0);
  reply.mutable_ptz_info()->mutable_pan()->set_position(position);
  reply.mutable_ptz_info()->mutable_pan()->set_speed(speed);
  return reply;
}

class WaitTest : public ConnectedClientTest {
 protected:
  // What the calls are answered, one after the other; the last one again and again.
  void AnswerWith(const std::vector<tutorial::VptzResponse>& replies) {
    bus.on_call = [this, replies, next = std::size_t{0}](const BusCall&) mutable {
      bus.ReplyWith(replies[std::min(next++, replies.size() - 1)]);
    };
  }
};

TEST(WaitUntilTest, AsksUntilTheAnswerIsYes) {
  int asked = 0;
  EXPECT_TRUE(VptzWaitUntil([&] { return ++asked == 3; }, hours(1), kNoPause));
  EXPECT_EQ(asked, 3);
}

TEST(WaitUntilTest, LimitOfZeroAsksOnce) {
  int asked = 0;
  EXPECT_FALSE(VptzWaitUntil([&] { return ++asked == 3; }, milliseconds(0)));
  EXPECT_EQ(asked, 1);
}

// As nanoseconds this limit lies so far below zero that it would turn up above.
TEST(WaitUntilTest, NegativeLimitAsksOnce) {
  for (const milliseconds limit : {milliseconds(-1), milliseconds(-18446744070000), milliseconds::min()}) {
    int asked = 0;
    EXPECT_FALSE(VptzWaitUntil([&] { return ++asked == 3; }, limit, kNoPause));
    EXPECT_EQ(asked, 1);
  }
}

TEST(WaitUntilTest, LongestLimitIsNotOverAtOnce) {
  int asked = 0;
  EXPECT_TRUE(VptzWaitUntil([&] { return ++asked == 3; }, milliseconds::max(), kNoPause));
  EXPECT_EQ(asked, 3);
}

TEST(WaitUntilTest, PauseDoesNotOutlastTheLimit) {
  EXPECT_FALSE(VptzWaitUntil([] { return false; }, milliseconds(20), hours(1)));
}

TEST_F(WaitTest, ServiceThatAnswersLaterIsWaitedFor) {
  bus.FailCalls(-ESRCH);
  bus.on_call = [this, calls = 0](const BusCall&) mutable {
    if (++calls == 2) {
      bus.call_result = 0;
      bus.ReplyWith(StatusReply(0));
    }
  };
  EXPECT_EQ(VptzWaitForService(client, hours(1)), 0);
}

TEST_F(WaitTest, ServiceThatNeverAnswersGivesTheLastFailure) {
  bus.FailCalls(-ESRCH);
  EXPECT_EQ(VptzWaitForService(client, milliseconds(0)), -ESRCH);
}

TEST_F(WaitTest, DeviceIsFoundWhenItsRowIsAsWanted) {
  Store(Insert("device", {{"id", "7"}}));
  int looked = 0;
  const auto wanted = [&](const CVptzDevice& device) {
    // Meanwhile the service learns the camera's name.
    if (++looked == 1) Store("UPDATE device SET host_name = 'stage';");
    return device.host_name == "stage";
  };
  const CVptzDevice* const stage = VptzWaitForDevice(client, wanted, hours(1));
  ASSERT_NE(stage, nullptr);
  EXPECT_EQ(stage->id, 7u);
}

TEST_F(WaitTest, DeviceThatDoesNotComeIsNull) {
  const auto any = [](const CVptzDevice&) { return true; };
  EXPECT_EQ(VptzWaitForDevice(client, any, milliseconds(0)), nullptr);
}

TEST_F(WaitTest, MotionEndsWhenTwoReadingsAgree) {
  AnswerWith({PanAt(1, 20), PanAt(2, 0), PanAt(3, 0), PanAt(3, 0)});
  VptzPtzData state;
  EXPECT_EQ(VptzWaitUntilStill(client, 1, "ptz0", hours(1), &state), 0);
  EXPECT_EQ(state.pan.position.value, 3.0);
  EXPECT_EQ(bus.CallsOf("bus_method_call_sync").size(), 4u);
}

// Of an axis whose speed is not known two readings at once would agree in motion too.
TEST_F(WaitTest, PauseLiesBetweenTheReadings) {
  using std::chrono::steady_clock;
  std::vector<steady_clock::time_point> readings;
  tutorial::VptzResponse reply = StatusReply(0);
  reply.mutable_ptz_info()->mutable_pan()->set_position(1);
  bus.on_call = [&](const BusCall&) {
    readings.push_back(steady_clock::now());
    bus.ReplyWith(reply);
  };
  EXPECT_EQ(VptzWaitUntilStill(client, 1, "ptz0", hours(1)), 0);
  ASSERT_EQ(readings.size(), 2u);
  EXPECT_GE(readings[1] - readings[0], milliseconds(100));
}

TEST_F(WaitTest, CameraThatMovesOnIsATimeOut) {
  AnswerWith({PanAt(1, 20)});
  EXPECT_EQ(VptzWaitUntilStill(client, 1, "ptz0", milliseconds(0)), -ETIMEDOUT);
}

TEST_F(WaitTest, ReadingThatFailsEndsTheWaitWithItsResult) {
  AnswerWith({PanAt(1, 20), StatusReply(-1010)});
  EXPECT_EQ(VptzWaitUntilStill(client, 1, "ptz0", hours(1)), -1010);
}

}  // namespace
