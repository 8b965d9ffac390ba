#include <gmock/gmock.h>

#include <climits>

#include "vptz_client/command_test.h"
#include "vptz_client/exchange.h"
#include "vptz_device/rows.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz_test::AddressReply;
using vptz_test::BusCall;
using vptz_test::ClientTest;
using vptz_test::CommandCase;
using vptz_test::CommandTest;
using vptz_test::ConnectedClientTest;
using vptz_test::Insert;
using vptz_test::StatusReply;

std::vector<VptzNATData> Mappings() {
  return {{"t1", "t2", "t3", "t4", "t5", "t6", -8, 9}, {"", "", "", "", "", "", 0, 0}};
}

constexpr char kEnableFields[] =
    "nat_command { device_id: 1 nat_type: 0 params { text1: 't1' text2: 't2' text3: 't3' text4: 't4'"
    " text5: 't5' text6: 't6' number1: -8 number2: 9 } params { text1: '' text2: '' text3: '' text4: ''"
    " text5: '' text6: '' number1: 0 number2: 0 } }";

const CommandCase kNAT[] = {
    {"ClearNAT", "clear_nat", "", [](VptzClient& client, int timeout) { return client.ClearNAT(timeout); }},
    {"QueryNATuri", "query_nat_uri", "nat_command { device_id: 4294967295 nat_type: 2 address: 'rtsp://in' }",
     [](VptzClient& client, int timeout) {
       std::string uri = "rtsp://in";
       return client.QueryNATuri(4294967295u, NAT_SERVICE, uri, timeout);
     }},
    {"QueryNATuriOfAnEmptyAddress", "query_nat_uri", "nat_command { device_id: 0 nat_type: -7 address: '' }",
     [](VptzClient& client, int timeout) {
       std::string uri;
       return client.QueryNATuri(0, static_cast<NATType>(-7), uri, timeout);
     }},
    {"EnableNAT", "enable_nat", kEnableFields,
     [](VptzClient& client, int timeout) {
       std::vector<VptzNATData> mappings = Mappings();
       return client.EnableNAT(1, NAT_ALL, &mappings, timeout);
     }},
    {"EnableNATWithoutMappings", "enable_nat", "nat_command { device_id: 1 nat_type: 3 }",
     [](VptzClient& client, int timeout) {
       std::vector<VptzNATData> mappings;
       return client.EnableNAT(1, NAT_HTTP, &mappings, timeout);
     }},
    {"DisableNAT", "disable_nat", "nat_command { device_id: 1 nat_type: 1 }",
     [](VptzClient& client, int timeout) { return client.DisableNAT(1, NAT_MEDIA, timeout); }},
};

INSTANTIATE_TEST_SUITE_P(NAT, CommandTest, testing::ValuesIn(kNAT), vptz_test::CommandName);

// The service answers a query for ADDRESS with "out TYPE:ADDRESS".
class NATTest : public ConnectedClientTest {
 protected:
  NATTest() {
    bus.on_call = [this](const BusCall& call) { Answer(call); };
  }

  void Answer(const BusCall& call) {
    if (call.name != "query_nat_uri") return bus.ReplyWith(StatusReply(status_of_change));
    const tutorial::NATCommand nat = CommandOf(call).nat_command();
    bus.ReplyWith(AddressReply("out " + std::to_string(nat.nat_type()) + ":" + nat.address(), query_status));
    if (query_failure != 0) bus.FailCalls(query_failure);
  }

  // Two devices with web addresses, the first with two media sources.
  void StoreDevices() {
    Store(Insert("device", {{"id", "1"}, {"service_uri", "'http://s1'"}, {"http_uri", "'http://h1'"}}) +
          Insert("device", {{"id", "2"}, {"service_uri", "'rs232://s2'"}, {"http_uri", "'http://h2'"}}) +
          Insert("media", {{"id", "11"}, {"device", "1"}, {"url", "'rtsp://m11'"}}) +
          Insert("media", {{"id", "12"}, {"device", "1"}, {"url", "'rtsp://m12'"}}));
  }

  std::vector<CVptzDevice>& Registry() { return vptz::ClientAccess::Devices(client); }

  // What is sent while the registry is built anew.
  static std::vector<std::string> Loading() {
    return {"query_nat_uri 1 2 http://s1", "query_nat_uri 1 3 http://h1", "query_nat_uri 1 1 rtsp://m11",
            "query_nat_uri 1 1 rtsp://m12"};
  }

  // What is sent by a change of that method, then while loading, then `more`.
  static std::vector<std::string> Sentences(const std::string& change, const std::vector<std::string>& more) {
    std::vector<std::string> all = {change};
    const std::vector<std::string> loading = Loading();
    all.insert(all.end(), loading.begin(), loading.end());
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  int status_of_change = 0;
  int query_status = 0;
  int query_failure = 0;
};

// ---- one query -------------------------------------------------------------

TEST_F(NATTest, AnAnswerReplacesTheAddress) {
  std::string uri = "rtsp://in";
  EXPECT_EQ(client.QueryNATuri(1, NAT_MEDIA, uri), 0);
  EXPECT_EQ(uri, "out 1:rtsp://in");
}

TEST_F(NATTest, ARefusalsTextReplacesTheAddressToo) {
  query_status = -1004;
  std::string uri = "rtsp://in";
  EXPECT_EQ(client.QueryNATuri(1, NAT_MEDIA, uri), -1004);
  EXPECT_EQ(uri, "out 1:rtsp://in");
}

TEST_F(NATTest, AnAnswerWithoutATextEmptiesTheAddress) {
  bus.on_call = nullptr;
  for (const int status_code : {0, -1004}) {
    bus.ReplyWith(StatusReply(status_code));
    std::string uri = "rtsp://in";
    EXPECT_EQ(client.QueryNATuri(1, NAT_MEDIA, uri), status_code);
    EXPECT_EQ(uri, "");
  }
}

TEST_F(NATTest, AFailedCallLeavesTheAddressAlone) {
  query_failure = -110;
  std::string uri = "rtsp://in";
  EXPECT_EQ(client.QueryNATuri(1, NAT_MEDIA, uri), -110);
  EXPECT_EQ(uri, "rtsp://in");
}

TEST_F(NATTest, AnAddressOf100kBIsSentWhole) {
  std::string uri(100000, '%');
  bus.on_call = nullptr;
  bus.ReplyWith(AddressReply("short"));
  client.QueryNATuri(1, NAT_MEDIA, uri);
  EXPECT_EQ(SentCommand().nat_command().address(), std::string(100000, '%'));
  EXPECT_EQ(uri, "short");
}

using UnconnectedNATTest = ClientTest;

TEST_F(UnconnectedNATTest, WithoutABusClientTheAddressIsLeftAlone) {
  VptzClient client;
  std::string uri = "rtsp://in";
  EXPECT_EQ(client.QueryNATuri(1, NAT_MEDIA, uri), -1);
  EXPECT_EQ(uri, "rtsp://in");
}

TEST_F(UnconnectedNATTest, WithoutABusClientTheRegistryIsLeftAloneAndNothingIsLogged) {
  Store(Insert("device", {{"id", "1"}}));
  VptzClient client;
  client.LoadDevices();
  std::vector<CVptzDevice>& registry = vptz::ClientAccess::Devices(client);
  registry.at(0).nat_http_uri = "kept";
  log.lines.clear();
  EXPECT_EQ(client.EnableNAT(1, NAT_ALL, nullptr), -1);
  EXPECT_EQ(client.DisableNAT(1, NAT_ALL), -1);
  EXPECT_EQ(client.ClearNAT(), -1);
  EXPECT_EQ(registry.at(0).nat_http_uri, "kept");
  EXPECT_THAT(log.lines, IsEmpty());
}

// ---- media profiles of a handle --------------------------------------------

TEST_F(NATTest, SetMediaInfoNATAsksForEachStreamInOrderWithTheSameDeviceTypeAndTimeout) {
  CVptzDevice device;
  device.media_list.resize(2);
  device.media_list[0].url = "a";
  device.media_list[0].nat_url = "older";
  device.media_list[1].url = "b";
  EXPECT_EQ(client.SetMediaInfoNAT(&device, -1, NAT_HTTP, 7), 0);
  EXPECT_THAT(Sent(), ElementsAre("query_nat_uri 4294967295 3 a", "query_nat_uri 4294967295 3 b"));
  EXPECT_EQ(bus.calls.at(0).timeout, 7);
  EXPECT_EQ(bus.calls.at(1).timeout, 7);
  EXPECT_EQ(device.media_list[0].nat_url, "out 3:a");
  EXPECT_EQ(device.media_list[1].nat_url, "out 3:b");
  EXPECT_EQ(device.media_list[0].url, "a");
}

TEST_F(NATTest, SetMediaInfoNATReturnsZeroWhateverTheQueriesReturn) {
  CVptzDevice device;
  device.media_list.resize(1);
  device.media_list[0].url = "a";
  query_status = -1004;
  EXPECT_EQ(client.SetMediaInfoNAT(&device, 1, NAT_MEDIA), 0);
  EXPECT_EQ(device.media_list[0].nat_url, "out 1:a");
  query_failure = -110;
  EXPECT_EQ(client.SetMediaInfoNAT(&device, 1, NAT_MEDIA), 0);
  EXPECT_EQ(device.media_list[0].nat_url, "a");
}

TEST_F(NATTest, SetMediaInfoNATOfADeviceWithoutMediaSendsNothing) {
  CVptzDevice device;
  EXPECT_EQ(client.SetMediaInfoNAT(&device, 1, NAT_MEDIA), 0);
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(NATTest, SetMediaInfoNATOfANullHandleReturnsMinusOneAndSendsNothing) {
  EXPECT_EQ(client.SetMediaInfoNAT(nullptr, 1, NAT_MEDIA), -1);
  EXPECT_THAT(Sent(), IsEmpty());
}

// ---- enabling and disabling ------------------------------------------------

TEST_F(NATTest, EnablingAllAsksForTheStreamsThenTheServiceThenTheWebPage) {
  StoreDevices();
  std::vector<VptzNATData> mappings = Mappings();
  EXPECT_EQ(client.EnableNAT(1, NAT_ALL, &mappings, 7), 0);
  EXPECT_EQ(Sent(),
            Sentences("enable_nat 1 0 ", {"query_nat_uri 1 1 rtsp://m11", "query_nat_uri 1 1 rtsp://m12",
                                          "query_nat_uri 1 2 http://s1", "query_nat_uri 1 3 http://h1"}));
  const CVptzDevice& device = Registry().at(0);
  EXPECT_EQ(device.media_list.at(0).nat_url, "out 1:rtsp://m11");
  EXPECT_EQ(device.media_list.at(1).nat_url, "out 1:rtsp://m12");
  EXPECT_EQ(device.nat_service_uri, "out 2:http://s1");
  EXPECT_EQ(device.nat_http_uri, "out 3:http://h1");
}

// What builds the registry uses the configured time-out, what refreshes the
// caller's.
TEST_F(NATTest, TheCallersTimeoutIsUsedForTheChangeAndForTheRefresh) {
  StoreDevices();
  client.EnableNAT(1, NAT_ALL, nullptr, 7);
  std::vector<int> timeouts;
  for (const BusCall& call : bus.calls) timeouts.push_back(call.timeout);
  EXPECT_THAT(timeouts, ElementsAre(7, 4, 4, 4, 4, 7, 7, 7, 7));
}

TEST_F(NATTest, EnablingOneKindAsksForThatKindAlone) {
  StoreDevices();
  client.EnableNAT(1, NAT_MEDIA, nullptr);
  EXPECT_EQ(Sent(),
            Sentences("enable_nat 1 1 ", {"query_nat_uri 1 1 rtsp://m11", "query_nat_uri 1 1 rtsp://m12"}));
  bus.calls.clear();
  client.EnableNAT(1, NAT_SERVICE, nullptr);
  EXPECT_EQ(Sent(), Sentences("enable_nat 1 2 ", {"query_nat_uri 1 2 http://s1"}));
  bus.calls.clear();
  client.EnableNAT(1, NAT_HTTP, nullptr);
  EXPECT_EQ(Sent(), Sentences("enable_nat 1 3 ", {"query_nat_uri 1 3 http://h1"}));
}

TEST_F(NATTest, DisablingRefreshesAsEnablingDoes) {
  StoreDevices();
  const std::vector<std::string> media = {"query_nat_uri 1 1 rtsp://m11", "query_nat_uri 1 1 rtsp://m12"};
  const std::vector<std::string> all = {media[0], media[1], "query_nat_uri 1 2 http://s1",
                                        "query_nat_uri 1 3 http://h1"};
  EXPECT_EQ(client.DisableNAT(1, NAT_ALL), 0);
  EXPECT_EQ(Sent(), Sentences("disable_nat 1 0 ", all));
  bus.calls.clear();
  client.DisableNAT(1, NAT_MEDIA);
  EXPECT_EQ(Sent(), Sentences("disable_nat 1 1 ", media));
  bus.calls.clear();
  client.DisableNAT(1, NAT_SERVICE);
  EXPECT_EQ(Sent(), Sentences("disable_nat 1 2 ", {all[2]}));
  bus.calls.clear();
  client.DisableNAT(1, NAT_HTTP);
  EXPECT_EQ(Sent(), Sentences("disable_nat 1 3 ", {all[3]}));
}

// A service address that is no web address is not asked for while loading, but
// it is here.
TEST_F(NATTest, ADeviceWithoutWebServiceIsRefreshedToo) {
  StoreDevices();
  client.EnableNAT(2, NAT_SERVICE, nullptr);
  EXPECT_EQ(Sent(), Sentences("enable_nat 2 2 ", {"query_nat_uri 2 2 rs232://s2"}));
  EXPECT_EQ(Registry().at(1).nat_service_uri, "out 2:rs232://s2");
}

TEST_F(NATTest, ARefusedChangeComesBackAndTheAddressesAreRefreshedAllTheSame) {
  StoreDevices();
  status_of_change = -1007;
  EXPECT_EQ(client.EnableNAT(1, NAT_HTTP, nullptr), -1007);
  EXPECT_EQ(Sent().back(), "query_nat_uri 1 3 http://h1");
  EXPECT_EQ(Sent().size(), 6u);
  bus.calls.clear();
  EXPECT_EQ(client.DisableNAT(1, NAT_HTTP), -1007);
  EXPECT_EQ(Sent().size(), 6u);
}

TEST_F(NATTest, AChangeThatFailsAtTheBusRefreshesNothing) {
  StoreDevices();
  bus.on_call = nullptr;
  bus.FailCalls(-110);
  EXPECT_EQ(client.EnableNAT(1, NAT_ALL, nullptr), -110);
  EXPECT_EQ(client.DisableNAT(1, NAT_ALL), -110);
  EXPECT_THAT(Sent(), ElementsAre("enable_nat 1 0 ", "disable_nat 1 0 "));
  EXPECT_THAT(Registry(), IsEmpty());
}

TEST_F(NATTest, HowTheRefreshEndsDoesNotChangeTheResult) {
  StoreDevices();
  status_of_change = 3;
  query_status = -1004;
  EXPECT_EQ(client.EnableNAT(1, NAT_ALL, nullptr), 3);
  query_failure = -110;
  EXPECT_EQ(client.DisableNAT(1, NAT_ALL), 3);
  const CVptzDevice& device = Registry().at(0);
  EXPECT_EQ(device.media_list.at(0).nat_url, "rtsp://m11");
  EXPECT_EQ(device.nat_service_uri, "http://s1");
  EXPECT_EQ(device.nat_http_uri, "http://h1");
}

TEST_F(NATTest, ADeviceThatIsNotStoredIsNotRefreshed) {
  StoreDevices();
  status_of_change = 3;
  EXPECT_EQ(client.EnableNAT(99, NAT_ALL, nullptr), 3);
  EXPECT_EQ(Sent(), Sentences("enable_nat 99 0 ", {}));
  log.lines.clear();
  EXPECT_EQ(client.DisableNAT(99, static_cast<NATType>(7)), 3);
  EXPECT_THAT(log.lines, IsEmpty());
}

void ExpectNATLine(const vptz_test::LogLine& line, const std::string& function, const std::string& message) {
  EXPECT_EQ(line.module, 42);
  EXPECT_EQ(line.level, 2);
  EXPECT_EQ(line.file, "vptz_client.cc");
  EXPECT_EQ(line.function, function);
  EXPECT_EQ(line.message, message);
}

TEST_F(NATTest, AnUnknownTypeIsSentAndLoggedAndItsResultComesBack) {
  StoreDevices();
  status_of_change = -1002;
  std::vector<VptzNATData> mappings;
  EXPECT_EQ(client.EnableNAT(1, static_cast<NATType>(7), &mappings), -1002);
  EXPECT_EQ(Sent(), Sentences("enable_nat 1 7 ", {}));
  EXPECT_EQ(client.DisableNAT(1, static_cast<NATType>(INT_MIN)), -1002);
  ASSERT_EQ(log.lines.size(), 2u);
  ExpectNATLine(log.lines[0], "EnableNAT", "Unknow nat_type : 7");
  ExpectNATLine(log.lines[1], "DisableNAT", "Unknow nat_type : -2147483648");
}

TEST_F(NATTest, NullMappingsAreLoggedAndSentAsNone) {
  EXPECT_EQ(client.EnableNAT(1, NAT_ALL, nullptr), 0);
  EXPECT_EQ(SentCommand().nat_command().params_size(), 0);
  ASSERT_EQ(log.lines.size(), 1u);
  ExpectNATLine(log.lines[0], "EnableNAT", "EnableNAT parameter results is NULL");
}

TEST_F(NATTest, MappingsAreOnlyRead) {
  std::vector<VptzNATData> mappings = Mappings();
  client.EnableNAT(1, NAT_ALL, &mappings);
  ASSERT_EQ(mappings.size(), 2u);
  EXPECT_EQ(mappings[0].text6, "t6");
  EXPECT_EQ(mappings[0].number1, -8);
}

TEST_F(NATTest, ManyMappingsAreSentInTheirOrder) {
  std::vector<VptzNATData> mappings(1000);
  for (std::size_t i = 0; i < mappings.size(); ++i) mappings[i].number1 = static_cast<int>(i);
  client.EnableNAT(1, NAT_ALL, &mappings);
  const tutorial::NATCommand nat = SentCommand().nat_command();
  ASSERT_EQ(nat.params_size(), 1000);
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(nat.params(i).number1(), i);
}

// ---- clearing --------------------------------------------------------------

class ClearNATTest : public NATTest {
 protected:
  ClearNATTest() {
    StoreDevices();
    client.LoadDevices();
    Registry().at(1).nat_http_uri = "older";
    bus.calls.clear();
  }
};

TEST_F(ClearNATTest, EmptiesEveryOutsideAddressOfTheRegistryInOneCall) {
  EXPECT_EQ(client.ClearNAT(), 0);
  EXPECT_THAT(Sent(), ElementsAre("clear_nat"));
  ASSERT_EQ(Registry().size(), 2u);
  for (const CVptzDevice& device : Registry()) {
    EXPECT_EQ(device.nat_service_uri + device.nat_http_uri, "");
    for (const VptzMediaData& media : device.media_list) EXPECT_EQ(media.nat_url, "");
  }
  EXPECT_EQ(Registry()[0].service_uri, "http://s1");
  EXPECT_EQ(Registry()[0].media_list.at(1).url, "rtsp://m12");
}

TEST_F(ClearNATTest, EmptiesThemAlsoWhenTheServiceRefuses) {
  status_of_change = -1004;
  EXPECT_EQ(client.ClearNAT(), -1004);
  EXPECT_EQ(Registry().at(0).nat_service_uri, "");
  EXPECT_EQ(Registry().at(1).nat_http_uri, "");
}

TEST_F(ClearNATTest, LeavesThemAloneWhenTheCallFails) {
  bus.on_call = nullptr;
  bus.FailCalls(-110);
  EXPECT_EQ(client.ClearNAT(), -110);
  EXPECT_EQ(Registry().at(0).nat_service_uri, "out 2:http://s1");
  EXPECT_EQ(Registry().at(1).nat_http_uri, "older");
}

}  // namespace
