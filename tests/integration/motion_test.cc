#include <vector>

#include "integration/integration.h"

namespace vptz_test {
namespace {

class IntegrationMotion : public IntegrationWithService {};

TEST_F(IntegrationMotion, MoveIsSeenOnItsWayUntilItArrives) {
  const auto client = Connected();
  EXPECT_EQ(Pan(*client, 1), 0);
  EXPECT_EQ(client->AbsolutePanMove(1, 30, 60), 0);
  std::vector<double> seen = {0};
  EXPECT_TRUE(WaitUntil([&] {
    seen.push_back(Pan(*client, 1));
    EXPECT_GE(seen.back(), seen[seen.size() - 2]);
    EXPECT_LE(seen.back(), 30);
    return seen.back() == 30 || HasFailure();
  }));
  EXPECT_THAT(seen, testing::Contains(testing::AllOf(testing::Gt(0), testing::Lt(30))));
  EXPECT_EQ(Pan(*client, 1), 30);
  EXPECT_EQ(Pan(*client, 2), 0);
}

TEST_F(IntegrationMotion, EveryAxisArrivesAndUncommandedOnesStay) {
  const auto client = Connected();
  EXPECT_EQ(client->AbsoluteMove(1, kVptzNotCommanded, 20, 5, kVptzNotCommanded, 80, 8), 0);
  VptzPtzData profile;
  EXPECT_TRUE(WaitUntil([&] {
    EXPECT_EQ(client->QueryPtzProfiles(1, "ptz0", &profile), 0);
    return profile.tilt.position.value == 20 && profile.zoom.position.value == 5;
  }));
  EXPECT_EQ(profile.pan.position.value, 0);
}

TEST_F(IntegrationMotion, ContinuousMoveGoesOnUntilItIsStopped) {
  const auto client = Connected();
  EXPECT_EQ(client->ContinuousPanMove(1, -20), 0);
  EXPECT_TRUE(WaitUntil([&] { return Pan(*client, 1) < -2; }));
  EXPECT_EQ(client->PanTiltStop(1), 0);
  // It slows down first.
  VptzPtzData profile;
  EXPECT_TRUE(WaitUntil([&] {
    EXPECT_EQ(client->QueryPtzProfiles(1, "ptz0", &profile), 0);
    return profile.pan.speed.value == 0;
  }));
  const double stopped = Pan(*client, 1);
  EXPECT_LT(stopped, -2);
  // Another camera's clock tells that time has passed.
  EXPECT_EQ(client->AbsolutePanMove(2, 5, 50), 0);
  EXPECT_TRUE(WaitUntil([&] { return Pan(*client, 2) == 5; }));
  EXPECT_EQ(Pan(*client, 1), stopped);
}

TEST_F(IntegrationMotion, HomeIsStoredAndReached) {
  const auto client = Connected();
  EXPECT_EQ(client->AbsolutePanMove(1, 10, 100), 0);
  EXPECT_TRUE(WaitUntil([&] { return Pan(*client, 1) == 10; }));
  EXPECT_EQ(client->SetHome(1), 0);
  EXPECT_EQ(client->AbsolutePanMove(1, -10, 100), 0);
  EXPECT_TRUE(WaitUntil([&] { return Pan(*client, 1) == -10; }));
  EXPECT_EQ(client->GotoHome(1, 100, 80, 8), 0);
  EXPECT_TRUE(WaitUntil([&] { return Pan(*client, 1) == 10; }));
}

TEST_F(IntegrationMotion, MoveIsSeenByEveryClient) {
  const auto driver = Connected();
  const auto watcher = Connected();
  EXPECT_EQ(driver->AbsolutePanMove(1, 5, 100), 0);
  EXPECT_TRUE(WaitUntil([&] { return Pan(*watcher, 1) == 5; }));
}

}  // namespace
}  // namespace vptz_test
