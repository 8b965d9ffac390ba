// How long each kind of operation lasts at most when the service does not answer
// and when another program locks the database.
#include <vptz/model/vptzmodel.h>

#include <cstdio>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "model/raw_database.h"
#include "reliability/bus_reliability.h"
#include "vptz_device/rows.h"

namespace vptz_test {
namespace {

using std::chrono::seconds;

// The configured time-out is the same.
constexpr int kTimeout = 1;
constexpr seconds kT(kTimeout);
// 402 tries with 10 ms between, and the tries themselves.
constexpr milliseconds kLock(5000);

// Answers every method with status 0 but some, or all, which it keeps unanswered.
class SilentService {
 public:
  explicit SilentService(std::set<std::string> silent) : silent_(std::move(silent)) {}
  ~SilentService() {
    for (bus_request* request : kept_) bus_request_fail(request, -EIO);
  }

  void operator()(bus_service*, bus_request* request) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (silent_.empty() || silent_.count(bus_request_method(request)) != 0) {
      kept_.push_back(request);
    } else {
      Reply(request, "");
    }
  }

 private:
  std::mutex mutex_;
  const std::set<std::string> silent_;  // empty: all
  std::vector<bus_request*> kept_;
};

// Camera 7 has a web address, a PTZ node (31) with a preset (5), and two streams
// (41, 42); camera 8 has credentials.
std::string Rows() {
  return Insert("device", {{"id", "7"}, {"service_uri", "'http://camera'"}}) +
         Insert("device", {{"id", "8"}, {"authorization", R"('{"account":"a","credentials":"c"}')"}}) +
         Insert("ptz", {{"id", "31"}, {"device", "7"}, {"node", "'ptz0'"}}) +
         Insert("preset", {{"ptz", "31"}, {"preset_id", "5"}, {"token", "'door'"}}) +
         Insert("media", {{"id", "41"}, {"device", "7"}}) + Insert("media", {{"id", "42"}, {"device", "7"}});
}

class OperationBounds : public BusReliability {
 protected:
  OperationBounds() {
    std::remove(vptz::DatabaseFile());  // an earlier test's
    EXPECT_EQ(VptzModel::Instance().Initialize(vptz::DatabaseFile(), "vptz", ""), 0);
    RawDatabase(vptz::DatabaseFile()).Execute("PRAGMA foreign_keys=OFF; BEGIN;" + Rows() + "COMMIT;");
  }

  // A client of a service that answers all but the named methods; without a name
  // it answers nothing.
  void Begin(std::set<std::string> silent = {}) {
    silent_ = std::make_unique<SilentService>(std::move(silent));
    service_ = Serve([this](bus_service* service, bus_request* request) { (*silent_)(service, request); });
    client_ = Connected();
  }

  template <class Operation>
  void ExpectWithin(milliseconds bound, Operation operation) {
    Longest longest(delay_);
    const Clock::time_point begin = Clock::now();
    operation();
    EXPECT_TRUE(longest.Keeps(begin, bound + kSlack)) << longest.milliseconds_taken() << " ms";
    RecordProperty("milliseconds", longest.milliseconds_taken());
  }

  std::unique_ptr<SilentService> silent_;
  std::unique_ptr<ServedName> service_;
  std::unique_ptr<VptzClient> client_;
};

TEST_F(OperationBounds, LookupTakesOneTimeOut) {
  Begin();
  ExpectWithin(kT, [&] { EXPECT_EQ(client_->QueryDeviceAll()->size(), 2u); });
}

// ---- several calls -----------------------------------------------------------

TEST_F(OperationBounds, OneCommandTakesItsTimeOut) {
  Begin();
  ExpectWithin(kT, [&] { EXPECT_EQ(client_->PtzStop(31, true, true, true, kTimeout), -ETIMEDOUT); });
}

// The registry's load waits for all addresses of all devices together, and so does
// the refresh for those of this one.
TEST_F(OperationBounds, EnablingNatTakesATimeOutForTheRegistryAndOneForTheAddresses) {
  Begin({"query_nat_uri"});
  ExpectWithin(2 * kT, [&] {
    std::vector<VptzNATData> mappings;
    EXPECT_EQ(client_->EnableNAT(7, NAT_ALL, &mappings, kTimeout), 0);
  });
}

TEST_F(OperationBounds, EnablingNatThatIsNotAnsweredAsksForNothingElse) {
  Begin();
  ExpectWithin(kT, [&] {
    std::vector<VptzNATData> mappings;
    EXPECT_EQ(client_->EnableNAT(7, NAT_ALL, &mappings, kTimeout), -ETIMEDOUT);
  });
}

TEST_F(OperationBounds, CouplingASlaveTakesATimeOutAndOneForTheRegistry) {
  Begin();
  ExpectWithin(2 * kT, [&] { EXPECT_EQ(client_->SetSlaveDeviceById(7, 8), -ETIMEDOUT); });
}

TEST_F(OperationBounds, AddressesOfStreamsTakeOneTimeOutTogether) {
  Begin();
  CVptzDevice* const device = client_->QueryDeviceById(7);
  ASSERT_NE(device, nullptr);
  ExpectWithin(kT, [&] { EXPECT_EQ(client_->SetMediaInfoNAT(device, 7, NAT_MEDIA, kTimeout), 0); });
}

TEST_F(OperationBounds, EveryMediaProfileTakesATimeOut) {
  Begin();
  CVptzDevice* const device = client_->QueryDeviceById(7);
  ASSERT_NE(device, nullptr);
  ExpectWithin(2 * kT, [&] { EXPECT_EQ(device->SetBrightness(50.0, 0, kTimeout), -1); });
}

TEST_F(OperationBounds, LiveStateTakesATimeOutForEachProfile) {
  Begin();
  CVptzDevice* const device = client_->QueryDeviceById(7);
  ASSERT_NE(device, nullptr);
  ExpectWithin(2 * kT, [&] { EXPECT_EQ(device->LoadMediaProfiles(), 2); });
}

// ---- the database ------------------------------------------------------------

class OperationBoundsWithALock : public OperationBounds {
 protected:
  OperationBoundsWithALock() { Begin(); }

  RawDatabase other_{vptz::DatabaseFile()};
};

TEST_F(OperationBoundsWithALock, PresetByIdWaitsForTheLockAndSendsNothing) {
  other_.Execute("BEGIN EXCLUSIVE");
  ExpectWithin(kLock, [&] { EXPECT_EQ(client_->GotoPresetById(31, 5, 1, 1, 1, kTimeout), -1); });
}

TEST_F(OperationBoundsWithALock, PictureWaitsForTheLockAndSendsNothing) {
  other_.Execute("BEGIN EXCLUSIVE");
  ExpectWithin(kLock, [&] { EXPECT_EQ(client_->SetBrightness(41, 50.0, kTimeout), -1); });
}

TEST_F(OperationBoundsWithALock, LockThatEndsLeavesTheCommandItsWholeTimeOut) {
  other_.Execute("BEGIN EXCLUSIVE");
  Thread holder([&] {
    std::this_thread::sleep_for(kT);
    other_.Execute("ROLLBACK");
  });
  ExpectWithin(2 * kT, [&] { EXPECT_EQ(client_->SetBrightness(41, 50.0, kTimeout), -ETIMEDOUT); });
  holder.join();
}

}  // namespace
}  // namespace vptz_test
