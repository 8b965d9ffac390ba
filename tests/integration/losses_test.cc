#include <signal.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "integration/integration.h"

namespace vptz_test {
namespace {

class IntegrationLosses : public IntegrationWithService {
 protected:
  static bool Recovers(VptzClient& client) {
    return WaitUntil([&] { return client.GetStatus() == 0; });
  }
};

TEST_F(IntegrationLosses, ServiceThatDoesNotAnswerIsATimeOut) {
  const auto client = Connected();
  EXPECT_EQ(client->GetStatus(), 0);
  service().Signal(SIGSTOP);
  const milliseconds given = Took([&] { EXPECT_EQ(client->GetStatus(1), -ETIMEDOUT); });
  EXPECT_GE(given, milliseconds(999));
  EXPECT_LE(given, milliseconds(1000) + kSlack);
  const milliseconds configured = Took([&] { EXPECT_EQ(client->GetStatus(), -ETIMEDOUT); });
  EXPECT_GE(configured, milliseconds(1999));
  EXPECT_LE(configured, milliseconds(2000) + kSlack);
  service().Signal(SIGCONT);
  EXPECT_EQ(client->GetStatus(), 0);
}

TEST_F(IntegrationLosses, MoveThatTimedOutIsNotMadeLater) {
  const auto client = Connected();
  service().Signal(SIGSTOP);
  EXPECT_EQ(client->AbsolutePanMove(1, 30, 100, 1), -ETIMEDOUT);
  service().Signal(SIGCONT);
  EXPECT_EQ(client->AbsolutePanMove(2, 5, 100), 0);
  EXPECT_TRUE(WaitUntil([&] { return Pan(*client, 2) == 5; }));
  EXPECT_EQ(Pan(*client, 1), 0);
}

TEST_F(IntegrationLosses, KilledServiceIsToldAtOnceAndItsSuccessorAnswers) {
  const auto client = Connected();
  EXPECT_EQ(client->GetStatus(), 0);
  service().Signal(SIGSTOP);
  int result = 0;
  std::thread waiting([&] { result = client->GetStatus(20); });
  // The call has been sent when another client's has been.
  EXPECT_EQ(Connected()->GetStatus(1), -ETIMEDOUT);
  EXPECT_LT(Took([&] {
              service().Signal(SIGKILL);
              waiting.join();
            }),
            kAtOnce);
  EXPECT_EQ(result, -ECONNRESET);
  EXPECT_LT(Took([&] { EXPECT_EQ(client->GetStatus(20), -ESRCH); }), kAtOnce);
  StartService();
  EXPECT_EQ(client->GetStatus(), 0);
}

TEST_F(IntegrationLosses, ServiceThatEndsInGoodOrderIsAbsentAtOnce) {
  const auto client = Connected();
  service().Signal(SIGTERM);
  EXPECT_EQ(service().Wait(), 0);
  EXPECT_LT(Took([&] { EXPECT_THAT(client->GetStatus(20), testing::AnyOf(-ESRCH, -ECONNRESET)); }), kAtOnce);
  EXPECT_TRUE(WaitUntil([&] { return client->GetStatus(20) == -ESRCH; }));
}

TEST_F(IntegrationLosses, BrokerKilledAndRestartedInTheMiddleOfCalls) {
  std::atomic<bool> stop{false};
  std::atomic<int> answered{0};
  const auto client = Connected();
  std::thread caller([&] {
    while (!stop) {
      int result = 0;
      EXPECT_LE(Took([&] { result = client->GetStatus(1); }), milliseconds(1000) + kSlack);
      EXPECT_THAT(result, testing::AnyOf(0, -ENOTCONN, -ECONNRESET, -ESRCH));
      if (result == 0) {
        ++answered;
      } else {
        Breathe();
      }
    }
  });
  for (int round = 0; round < 3; ++round) {
    const int before = answered;
    EXPECT_TRUE(WaitUntil([&] { return answered > before + 20; }));
    if (round == 2) break;
    broker_.Kill();
    broker_.Start();
  }
  stop = true;
  caller.join();
}

TEST_F(IntegrationLosses, CallsWithoutABrokerFailAtOnce) {
  const auto client = Connected();
  broker_.Kill();
  EXPECT_TRUE(WaitUntil([&] { return client->GetStatus() == -ENOTCONN; }));
  EXPECT_LT(Took([&] { EXPECT_EQ(client->GetStatus(20), -ENOTCONN); }), kAtOnce);
  broker_.Start();
  EXPECT_TRUE(Recovers(*client));
}

TEST_F(IntegrationLosses, ClientWithoutABrokerConnectsWhenThereIsOne) {
  broker_.Kill();
  VptzClient client;
  EXPECT_EQ(client.Connect("integration", broker_.address().c_str()), -1);
  EXPECT_EQ(client.GetStatus(), -ENOTCONN);
  broker_.Start();
  EXPECT_TRUE(Recovers(client));
}

}  // namespace
}  // namespace vptz_test
