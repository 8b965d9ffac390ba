// Several clients and the one database that the process has open.
#include <vptz/model/device.h>
#include <vptz/model/media.h>
#include <vptz/model/preset.h>
#include <vptz/model/ptz.h>
#include <vptz/model/vptzmodel.h>

#include <atomic>
#include <random>

#include "reliability/bus_reliability.h"
#include "reliability/reliability.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

class SharedDatabase : public BusReliability {
 protected:
  SharedDatabase() {
    EXPECT_EQ(VptzModel::Instance().Initialize(vptz::DatabaseFile(), "vptz", ""), 0);
    Device device;
    device_ = static_cast<unsigned>(Device::Add(&device));
    Media media(&device, "main", "rtsp://10.0.0.1/main", "", true);
    media_ = static_cast<unsigned>(Media::Add(&media));
    Ptz ptz(&device, nullptr, nullptr, nullptr, "ptz0", "", true, 0);
    ptz_ = static_cast<unsigned>(Ptz::Add(&ptz));
    Preset preset(&ptz, 1, "stage", "", 0, 0, 0);
    EXPECT_GT(Preset::Add(&preset), 0);
  }
  ~SharedDatabase() override { VptzModel::Instance().Release(); }

  std::unique_ptr<ServedName> ServeZeros() const {
    return Serve([](bus_service*, bus_request* request) { Reply(request, ""); });
  }

  // What needs the database, all of it; how many of them failed.
  int Fails(VptzClient& client) const {
    int failed = 0;
    if (client.GotoPresetById(ptz_, 1, 1.0, 1.0, 1.0, 10) != 0) ++failed;
    if (client.SetBrightness(media_, 0.5, 10) != 0) ++failed;
    const CVptzDevice* const device = client.QueryDeviceById(static_cast<int>(device_));
    if (device == nullptr || device->ptz_list.size() != 1 || device->media_list.size() != 1) ++failed;
    return failed;
  }

  unsigned device_ = 0;
  unsigned media_ = 0;
  unsigned ptz_ = 0;
};

TEST_F(SharedDatabase, LosesNoLookupAndNoCommandToClientsThatAreMade) {
  const auto service = ServeZeros();
  std::atomic<bool> stop{false};
  std::atomic<int> lost{0};
  std::atomic<int> rounds{0};
  std::vector<std::unique_ptr<VptzClient>> made;
  {
    std::vector<std::unique_ptr<VptzClient>> clients;
    for (int i = 0; i < 2; ++i) clients.push_back(Connected());
    std::vector<Thread> threads;
    for (const auto& client : clients) {
      threads.emplace_back([&] {
        while (!stop) {
          lost += Fails(*client);
          ++rounds;
        }
      });
    }
    for (int i = 0; i < Scaled(200, 5000); ++i) made.push_back(std::make_unique<VptzClient>());
    EXPECT_TRUE(WaitUntil([&] { return rounds > 10; }));
    stop = true;
  }
  EXPECT_EQ(lost, 0) << "of " << rounds << " rounds";
}

TEST_F(SharedDatabase, IsClosedByAClientThatIsDestroyedUntilAnotherOneIsMade) {
  const auto service = ServeZeros();
  const auto client = Connected();
  EXPECT_EQ(Fails(*client), 0);
  { const VptzClient other; }
  EXPECT_EQ(Fails(*client), 3);
  const VptzClient another;
  EXPECT_EQ(Fails(*client), 0);
}

TEST_F(SharedDatabase, BearsThreadsThatMakeUseAndDestroyClientsAtRandom) {
  const auto service = ServeZeros();
  std::atomic<int> worked{0};
  {
    std::vector<Thread> threads;
    for (unsigned i = 0; i < 4; ++i) {
      threads.emplace_back([&, i] {
        std::mt19937 random(i);
        std::unique_ptr<VptzClient> client;
        for (int round = 0; round < Scaled(100, 5000); ++round) {
          if (client == nullptr || random() % 4 == 0) client = Connected();
          if (Fails(*client) == 0) ++worked;
          if (random() % 4 == 0) client.reset();
        }
      });
    }
  }
  EXPECT_GT(worked, 0);
  EXPECT_EQ(VptzModel::Instance().Connect(vptz::DatabaseFile()), 0);
  EXPECT_EQ(Preset::QueryCountByPtz(ptz_), 1);
}

}  // namespace
}  // namespace vptz_test
