// A service that does not answer in time: a lookup waits one time-out for it, however
// much it asks.
#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "vptz_client/command_test.h"
#include "vptz_client/exchange.h"
#include "vptz_device/rows.h"

namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using vptz_test::AddressReply;
using vptz_test::BusCall;
using vptz_test::TwoDevicesWithEverything;

// The bus waits as long as it is told.
class PatienceTest : public vptz_test::ConnectedClientTest {
 protected:
  struct Query {
    int timeout;
    steady_clock::time_point begin, end;
  };

  // Each query takes that long and fails when that is its time-out.
  void LetQueriesTake(std::chrono::milliseconds time) {
    bus.on_call = [this, time](const BusCall& call) {
      if (call.name != "query_nat_uri") return bus.ReplyWith(vptz_test::StatusReply(0));
      const auto begin = steady_clock::now();
      const auto took = std::min<std::chrono::milliseconds>(time, seconds(call.timeout));
      std::this_thread::sleep_for(took);
      bus.ReplyWith(AddressReply("outside"));
      if (took < time) bus.FailCalls(-ETIMEDOUT);
      queries.push_back({call.timeout, begin, steady_clock::now()});
    };
  }

  std::vector<int> TimeoutsOfQueries() const {
    std::vector<int> timeouts;
    for (const Query& query : queries) timeouts.push_back(query.timeout);
    return timeouts;
  }

  std::vector<Query> queries;
};

TEST_F(PatienceTest, ALookupWaitsOneTimeOutForAServiceThatIsSilent) {
  vptz_test::WriteConfigFile("[MQTT]\ntimeout=1\n");
  VptzClient impatient;
  EXPECT_EQ(impatient.Connect("camera-app", nullptr), 0);
  Store(TwoDevicesWithEverything());
  LetQueriesTake(std::chrono::hours(1));
  const std::vector<CVptzDevice>& devices = *impatient.QueryDeviceAll();
  EXPECT_THAT(TimeoutsOfQueries(), ElementsAre(1));
  ASSERT_EQ(devices.size(), 3u);
  EXPECT_EQ(devices[0].nat_service_uri, "http://s1");
  EXPECT_EQ(devices[0].nat_http_uri, "http://h1");
  ASSERT_EQ(devices[0].media_list.size(), 2u);
  EXPECT_EQ(devices[0].media_list[1].nat_url, "rtsp://m14");
  EXPECT_EQ(devices[2].nat_service_uri, "s3 by https");
  EXPECT_NE(impatient.QueryDeviceById(1), nullptr);
  EXPECT_THAT(TimeoutsOfQueries(), ElementsAre(1, 1)) << "another lookup asks anew";
}

// The machine may stop anything at any time. So a query took at least what it took at
// the bus, and at most the time between the queries before and after it.
TEST_F(PatienceTest, ALookupGivesEachQueryWhatIsLeftOfItsTime) {
  vptz_test::WriteConfigFile("[MQTT]\ntimeout=2\n");
  VptzClient impatient;
  EXPECT_EQ(impatient.Connect("camera-app", nullptr), 0);
  Store(TwoDevicesWithEverything());
  LetQueriesTake(std::chrono::milliseconds(700));
  auto before = steady_clock::now();
  const std::vector<CVptzDevice>& devices = *impatient.QueryDeviceAll();
  const auto after = steady_clock::now();
  steady_clock::duration least = seconds(2), most = seconds(2);  // what is left
  for (std::size_t i = 0; i < queries.size(); ++i) {
    EXPECT_GE(seconds(queries[i].timeout), std::chrono::ceil<seconds>(least)) << i;
    EXPECT_LE(seconds(queries[i].timeout), std::chrono::ceil<seconds>(most)) << i;
    EXPECT_GT(most, most.zero()) << i;
    least -= (i + 1 < queries.size() ? queries[i + 1].begin : after) - before;
    most -= queries[i].end - queries[i].begin;
    before = queries[i].end;
  }
  EXPECT_LE(least, least.zero()) << "there was time for another query";
  EXPECT_LE(queries.size(), 3u);
  EXPECT_EQ(devices.at(0).nat_service_uri, "outside");
  EXPECT_EQ(devices.at(1).media_list.at(0).nat_url, "rtsp://m12");
}

TEST_F(PatienceTest, EnablingNatWaitsOneTimeOutForTheRegistryAndOneForTheDevice) {
  vptz_test::WriteConfigFile("[MQTT]\ntimeout=1\n");
  VptzClient impatient;
  EXPECT_EQ(impatient.Connect("camera-app", nullptr), 0);
  Store(TwoDevicesWithEverything());
  LetQueriesTake(std::chrono::hours(1));
  EXPECT_EQ(impatient.EnableNAT(1, NAT_ALL, nullptr), 0);
  EXPECT_THAT(TimeoutsOfQueries(), ElementsAre(1, 1));
  EXPECT_EQ(vptz::ClientAccess::Devices(impatient).at(0).nat_http_uri, "http://h1");
}

}  // namespace
