// Clients come and go.
#include <vptz/model/vptzmodel.h>

#include "reliability/bus_reliability.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class Lifecycle : public BusReliability {
 protected:
  // A whole life, with everything that a client acquires.
  void LiveOnce(int number) const {
    const auto client = Connected();
    if (number % 4 == 0) {
      EXPECT_EQ(client->SubscribeSignal("moved", TheReceiver(0).callback), 0);
    }
    if (number % 4 == 1) {
      EXPECT_EQ(CallOnce(*client, "echo", "x", 10).reply, "x");
    }
    if (number % 4 == 2) {
      EXPECT_EQ(client->CallAsync("silent", "x", 1, TheReceiver(0).callback, 10), 0);
    }
    if (number % 4 == 3) {
      EXPECT_EQ(client->Disconnect(), 0);
    }
  }
};

TEST_F(Lifecycle, OfAThousandClientsLeavesNothingBehind) {
  ASSERT_EQ(VptzModel::Instance().Initialize(vptz::DatabaseFile(), "vptz", ""), 0);
  const auto service = Serve([](bus_service*, bus_request* request) { Reply(request, Payload(request)); });
  for (int i = 0; i < 100; ++i) LiveOnce(i);  // whatever is allocated once
  const std::size_t threads = ThreadCount();
  const std::size_t descriptors = DescriptorCount();
  const std::size_t memory = ResidentKib();
  for (int i = 0; i < 1000; ++i) LiveOnce(i);
  EXPECT_TRUE(WaitUntil([&] { return ThreadCount() == threads; }));
  EXPECT_EQ(DescriptorCount(), descriptors);
  const int growth = static_cast<int>(ResidentKib()) - static_cast<int>(memory);
  if (MeasuresMemory()) {
    EXPECT_LE(growth, 1024);
  }
  RecordProperty("growth_kib", growth);
}

}  // namespace
}  // namespace vptz_test
