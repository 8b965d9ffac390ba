#include <malloc.h>

#include <gmock/gmock.h>

#include <vptz/model/vptzmodel.h>

#include <cerrno>

#include "model/raw_database.h"
#include "vptz_client/command_test.h"
#include "vptz_client/exchange.h"
#include "vptz_device/rows.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz_test::AddressReply;
using vptz_test::BusCall;
using vptz_test::ClientTest;
using vptz_test::ConnectedClientTest;
using vptz_test::Insert;
using vptz_test::TwoDevicesWithEverything;

std::string InsertDevice(int id, const std::string& protocol = "NULL") {
  return Insert("device", {{"id", std::to_string(id)}, {"protocol", protocol}});
}

std::vector<std::uint32_t> Ids(const std::vector<CVptzDevice>& devices) {
  std::vector<std::uint32_t> ids;
  for (const CVptzDevice& device : devices) ids.push_back(device.id);
  return ids;
}

class RegistryTest : public ConnectedClientTest {
 protected:
  std::vector<CVptzDevice>& Registry() { return vptz::ClientAccess::Devices(client); }
};

// ---- lookups ---------------------------------------------------------------

TEST_F(RegistryTest, AnEmptyDeviceTableGivesNoDeviceAndAnEmptyList) {
  EXPECT_EQ(client.QueryDeviceById(1), nullptr);
  ASSERT_NE(client.QueryDeviceAll(), nullptr);
  EXPECT_THAT(*client.QueryDeviceAll(), IsEmpty());
  EXPECT_THAT(client.QueryDeviceByProtocol(""), IsEmpty());
  EXPECT_THAT(bus.calls, IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(RegistryTest, DevicesComeInTheOrderOfTheirRows) {
  Store(InsertDevice(30) + InsertDevice(10) + InsertDevice(20));
  EXPECT_EQ(client.LoadDevices(), 0);
  EXPECT_THAT(Ids(Registry()), ElementsAre(10, 20, 30));
}

TEST_F(RegistryTest, ATableThatCannotBeReadHidesNothingOfTheOthers) {
  Store(InsertDevice(1) + Insert("ptz", {{"id", "5"}, {"device", "1"}}) +
        Insert("media", {{"id", "6"}, {"device", "1"}}));
  for (const std::string table : {"preset", "media_parameter", "protocol"}) {
    Store("ALTER TABLE \"" + table + "\" RENAME TO \"gone\";");
    log.lines.clear();
    const CVptzDevice* const device = client.QueryDeviceById(1);
    ASSERT_NE(device, nullptr) << table;
    EXPECT_EQ(device->ptz_list.size(), 1u);
    EXPECT_EQ(device->media_list.size(), 1u);
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_EQ(log.lines[0].level, 0);
    EXPECT_THAT(log.lines[0].message, testing::HasSubstr("Database exception! ("));
    EXPECT_THAT(log.lines[0].message, testing::HasSubstr(table));
    Store("ALTER TABLE \"gone\" RENAME TO \"" + table + "\";");
  }
}

TEST_F(RegistryTest, QueryDeviceAllGivesTheClientsOwnList) {
  Store(InsertDevice(1));
  EXPECT_EQ(client.QueryDeviceAll(), &Registry());
}

TEST_F(RegistryTest, QueryDeviceByIdGivesTheHandleInTheRegistry) {
  Store(InsertDevice(1) + InsertDevice(2));
  CVptzDevice* const device = client.QueryDeviceById(2);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device, &Registry().at(1));
  EXPECT_EQ(device->id, 2u);
  EXPECT_EQ(client.QueryDeviceById(3), nullptr);
}

TEST_F(RegistryTest, QueryDeviceByIdComparesItsArgumentAsAnUnsignedNumber) {
  Store(Insert("device", {{"id", "4294967295"}}));
  const CVptzDevice* const device = client.QueryDeviceById(-1);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->id, 4294967295u);
}

// Row ids are unique, so handles with equal ids come from outside the 32 bits
// that a handle has for them.
TEST_F(RegistryTest, OfTwoDevicesWithEqualIdsTheFirstRowWins) {
  Store(Insert("device", {{"id", "4294967297"}, {"mac", "'second'"}}) +
        Insert("device", {{"id", "1"}, {"mac", "'first'"}}));
  const CVptzDevice* const device = client.QueryDeviceById(1);
  EXPECT_THAT(Ids(Registry()), ElementsAre(1, 1));
  ASSERT_EQ(device, &Registry()[0]);
  EXPECT_EQ(device->mac, "first");
}

TEST_F(RegistryTest, EveryLookupShowsWhatIsStoredNow) {
  Store(InsertDevice(1));
  EXPECT_THAT(Ids(*client.QueryDeviceAll()), ElementsAre(1));
  Store("DELETE FROM device;" + InsertDevice(2) + InsertDevice(3));
  EXPECT_EQ(client.QueryDeviceById(1), nullptr);
  EXPECT_THAT(Ids(Registry()), ElementsAre(2, 3));
  Store("DELETE FROM device;" + InsertDevice(4));
  client.QueryDeviceByProtocol("any");
  EXPECT_THAT(Ids(Registry()), ElementsAre(4));
  Store("DELETE FROM device;");
  EXPECT_THAT(*client.QueryDeviceAll(), IsEmpty());
}

TEST_F(RegistryTest, AHandleThatAnEarlierLookupGaveIsNoLongerInTheRegistry) {
  Store(InsertDevice(1));
  client.QueryDeviceById(1)->mac = "changed by the caller";
  EXPECT_EQ(client.QueryDeviceById(1)->mac, "");
}

TEST_F(RegistryTest, QueryDeviceByProtocolWantsTheExactName) {
  Store(Insert("protocol", {{"id", "1"}, {"name", "'ONVIF'"}}) +
        Insert("protocol", {{"id", "2"}, {"name", "'NDI'"}}) + InsertDevice(1, "1") + InsertDevice(2, "2") +
        InsertDevice(3, "1") + InsertDevice(4));
  const std::vector<CVptzDevice*> found = client.QueryDeviceByProtocol("ONVIF");
  EXPECT_THAT(found, ElementsAre(&Registry().at(0), &Registry().at(2)));
  for (const char* const name : {"onvif", "ONVIF ", "ONVI", "OnVIF"}) {
    EXPECT_THAT(client.QueryDeviceByProtocol(name), IsEmpty()) << name;
  }
  EXPECT_THAT(client.QueryDeviceByProtocol(std::string("ONVIF\0", 6)), IsEmpty());
}

TEST_F(RegistryTest, QueryDeviceByProtocolTakesTheTextOfAHandle) {
  Store(Insert("protocol", {{"id", "1"}, {"name", "'ONVIF'"}}));
  for (int id = 1; id <= 20; ++id) Store(InsertDevice(id, "1"));
  const CVptzDevice& handle = *client.QueryDeviceById(10);
  for (int id = 21; id <= 50; ++id) Store(InsertDevice(id, "1"));
  mallopt(M_PERTURB, 0x5a);  // what is freed does not keep its bytes
  EXPECT_EQ(client.QueryDeviceByProtocol(handle.protocol).size(), 50u);
  mallopt(M_PERTURB, 0);
}

TEST_F(RegistryTest, ADeviceWithoutProtocolHasTheEmptyName) {
  Store(InsertDevice(1) + InsertDevice(2, "99"));
  EXPECT_EQ(client.QueryDeviceByProtocol("").size(), 2u);
}

// ---- loading and clearing --------------------------------------------------

TEST_F(RegistryTest, LoadingTwiceDoublesTheRegistryUntilTheNextLookup) {
  Store(InsertDevice(1) + InsertDevice(2));
  client.LoadDevices();
  EXPECT_EQ(client.LoadDevices(), 0);
  EXPECT_THAT(Ids(Registry()), ElementsAre(1, 2, 1, 2));
  client.QueryDeviceById(1);
  EXPECT_THAT(Ids(Registry()), ElementsAre(1, 2));
}

TEST_F(RegistryTest, ClearDevicesLeavesNoneAndReturnsZeroAlsoWhenThereWereNone) {
  Store(InsertDevice(1) + InsertDevice(2));
  client.LoadDevices();
  EXPECT_EQ(client.ClearDevices(), 0);
  EXPECT_THAT(Registry(), IsEmpty());
  EXPECT_EQ(client.ClearDevices(), 0);
}

TEST_F(RegistryTest, ALoadedHandleIsAttachedToItsClient) {
  Store(InsertDevice(7));
  CVptzDevice device = client.QueryDeviceAll()->at(0);
  EXPECT_EQ(device.Logout(), 0);
  EXPECT_THAT(Sent(), ElementsAre("logout device_command { device_id: 7 }"));
}

TEST_F(RegistryTest, ADeviceWhoseOtherRowsAreMissingIsStillThere) {
  Store(Insert("device", {{"id", "1"}, {"device_type", "9"}, {"protocol", "9"}}) +
        Insert("ptz", {{"id", "11"}, {"device", "1"}, {"pan", "9"}}) +
        Insert("media", {{"id", "12"}, {"device", "1"}}));
  const CVptzDevice* const device = client.QueryDeviceById(1);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->device_type + device->protocol, "");
  ASSERT_EQ(device->ptz_list.size(), 1u);
  EXPECT_EQ(device->ptz_list[0].pan.position.valid, 0);
  ASSERT_EQ(device->media_list.size(), 1u);
  EXPECT_FALSE(device->media_list[0].width_ok);
}

TEST_F(RegistryTest, RowsWithoutAnOwnerBelongToNoDevice) {
  Store(InsertDevice(1) + Insert("ptz", {}) + Insert("media", {}) + Insert("media", {{"device", "0"}}) +
        Insert("ptz", {{"id", "5"}, {"device", "1"}}) + Insert("preset", {}) +
        Insert("preset", {{"ptz", "0"}}));
  const CVptzDevice* const device = client.QueryDeviceById(1);
  ASSERT_NE(device, nullptr);
  EXPECT_THAT(device->media_list, IsEmpty());
  ASSERT_EQ(device->ptz_list.size(), 1u);
  EXPECT_THAT(device->ptz_list[0].presets, IsEmpty());
}

// ---- bus calls while the registry loads ------------------------------------

TEST_F(RegistryTest, EachDevicesWebAddressesAreAskedForAndThenItsStreamsOneDeviceAfterTheOther) {
  Store(TwoDevicesWithEverything());
  client.LoadDevices();
  EXPECT_THAT(Sent(), ElementsAre("query_nat_uri 1 2 http://s1", "query_nat_uri 1 3 http://h1",
                                  "query_nat_uri 1 1 rtsp://m11", "query_nat_uri 1 1 rtsp://m14",
                                  "query_nat_uri 2 1 rtsp://m12", "query_nat_uri 3 2 s3 by https",
                                  "query_nat_uri 3 3 "));
  for (const BusCall& call : bus.calls) {
    EXPECT_EQ(call.service, "vptz");
    EXPECT_EQ(call.timeout, 4);
  }
}

TEST_F(RegistryTest, EveryLookupAsksAnew) {
  Store(TwoDevicesWithEverything());
  client.QueryDeviceById(1);
  client.QueryDeviceAll();
  client.QueryDeviceByProtocol("ONVIF");
  EXPECT_EQ(Sent().size(), 21u);
}

TEST_F(RegistryTest, TheAnswersAreTheOutsideAddresses) {
  bus.on_call = [this](const BusCall& call) {
    bus.ReplyWith(AddressReply("outside " + CommandOf(call).nat_command().address(), -1004));
  };
  Store(TwoDevicesWithEverything());
  const std::vector<CVptzDevice>& devices = *client.QueryDeviceAll();
  ASSERT_EQ(devices.size(), 3u);
  EXPECT_EQ(devices[0].nat_service_uri, "outside http://s1");
  EXPECT_EQ(devices[0].nat_http_uri, "outside http://h1");
  ASSERT_EQ(devices[0].media_list.size(), 2u);
  EXPECT_EQ(devices[0].media_list[1].nat_url, "outside rtsp://m14");
  EXPECT_EQ(devices[1].nat_service_uri + devices[1].nat_http_uri, "");
  EXPECT_EQ(devices[1].media_list.at(0).nat_url, "outside rtsp://m12");
}

TEST_F(RegistryTest, WithoutAServiceTheOutsideAddressesAreTheStoredOnesAndNothingIsAskedTwice) {
  std::string rows;
  for (int id = 1; id <= 64; ++id) {
    rows += Insert("device", {{"id", std::to_string(id)}, {"service_uri", "'http://s'"}}) +
            Insert("media", {{"device", std::to_string(id)}, {"url", "'rtsp://a'"}}) +
            Insert("media", {{"device", std::to_string(id)}, {"url", "'rtsp://b'"}});
  }
  Store(rows);
  bus.FailCalls(-ESRCH);
  const std::vector<CVptzDevice>& devices = *client.QueryDeviceAll();
  ASSERT_EQ(devices.size(), 64u);
  EXPECT_EQ(bus.calls.size(), 64u * 4);
  for (const BusCall& call : bus.calls) EXPECT_EQ(call.timeout, 4);
  EXPECT_EQ(devices[63].nat_service_uri, "http://s");
  EXPECT_EQ(devices[63].media_list.at(1).nat_url, "rtsp://b");
  EXPECT_THAT(log.lines, IsEmpty());
}

// What the registry shows was stored at one moment.
TEST_F(RegistryTest, ADeviceThatIsRemovedWhileTheRegistryLoadsIsStillShownWhole) {
  Store(TwoDevicesWithEverything());
  bus.on_call = [](const BusCall&) { Store("DELETE FROM device; DELETE FROM media; DELETE FROM ptz;"); };
  const std::vector<CVptzDevice>& devices = *client.QueryDeviceAll();
  ASSERT_EQ(devices.size(), 3u);
  EXPECT_EQ(devices[0].ptz_list.size(), 1u);
  EXPECT_EQ(devices[0].media_list.size(), 2u);
  EXPECT_EQ(devices[1].media_list.size(), 1u);
  EXPECT_EQ(devices[1].http_uri, "http://h2");
  bus.on_call = nullptr;
  EXPECT_THAT(*client.QueryDeviceAll(), IsEmpty());
}

// ---- failures --------------------------------------------------------------

TEST_F(RegistryTest, WithoutADatabaseTheRegistryIsEmptyAndTheFailureIsLogged) {
  VptzModel::Instance().Release();
  EXPECT_EQ(client.LoadDevices(), 0);
  EXPECT_EQ(client.QueryDeviceById(1), nullptr);
  EXPECT_THAT(Registry(), IsEmpty());
  ASSERT_FALSE(log.lines.empty());
  EXPECT_EQ(log.lines[0].level, 0);
  EXPECT_THAT(bus.calls, IsEmpty());
}

TEST_F(RegistryTest, ADatabaseWithoutDevicesTableGivesAnEmptyRegistryAndIsLogged) {
  Store("PRAGMA foreign_keys = OFF; DROP TABLE device;");
  EXPECT_THAT(*client.QueryDeviceAll(), IsEmpty());
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(log.lines[0].level, 0);
  EXPECT_THAT(log.lines[0].message, testing::HasSubstr("no such table: device"));
}

TEST_F(RegistryTest, ADatabaseOfAnotherKindGivesAnEmptyRegistry) {
  VptzModel::Instance().Release();
  std::remove(vptz::DatabaseFile());
  vptz_test::RawDatabase(vptz::DatabaseFile()).Execute("CREATE TABLE device (text TEXT)");
  VptzModel::Instance().Connect(vptz::DatabaseFile());
  EXPECT_THAT(*client.QueryDeviceAll(), IsEmpty());
  EXPECT_EQ(client.QueryDeviceCount(), 0);
}

TEST_F(RegistryTest, WithoutADeviceNoOtherTableIsAskedFor) {
  Store("DROP TABLE preset; DROP TABLE media_parameter; DROP TABLE media;");
  EXPECT_THAT(*client.QueryDeviceAll(), IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(RegistryTest, TextsOf100kBAreLoadedWhole) {
  const std::string text(100000, '%');
  Store(Insert("device", {{"id", "1"}, {"service_uri", "'http" + text + "'"}, {"mac", "'" + text + "'"}}));
  const CVptzDevice* const device = client.QueryDeviceById(1);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->mac, text);
  EXPECT_EQ(Sent().at(0), "query_nat_uri 1 2 http" + text);
}

// ---- counts ----------------------------------------------------------------

TEST_F(RegistryTest, CountsAreThoseOfTheDatabase) {
  Store(InsertDevice(1) + InsertDevice(2) + Insert("ptz", {{"id", "5"}, {"device", "2"}}) +
        Insert("media", {{"device", "2"}}) + Insert("media", {{"device", "2"}}) +
        Insert("preset", {{"ptz", "5"}}) + Insert("preset", {{"ptz", "5"}}) + Insert("preset", {{"ptz", "5"}}));
  EXPECT_EQ(client.QueryDeviceCount(), 2);
  EXPECT_EQ(client.QueryPtzCountByDevice(2), 1);
  EXPECT_EQ(client.QueryMediaCountByDevice(2), 2);
  EXPECT_EQ(client.QueryPresetCountByPtz(5), 3);
  EXPECT_THAT(bus.calls, IsEmpty());
  EXPECT_THAT(Registry(), IsEmpty());
}

TEST_F(RegistryTest, CountsOfWhatIsNotThereAreZero) {
  EXPECT_EQ(client.QueryDeviceCount(), 0);
  EXPECT_EQ(client.QueryPtzCountByDevice(-1), 0);
  EXPECT_EQ(client.QueryMediaCountByDevice(1), 0);
  EXPECT_EQ(client.QueryPresetCountByPtz(0), 0);
}

// ---- without a connection --------------------------------------------------

using UnconnectedRegistryTest = ClientTest;

TEST_F(UnconnectedRegistryTest, TheRegistryNeedsNoBus) {
  Store(TwoDevicesWithEverything());
  VptzClient client;
  bus.calls.clear();
  const CVptzDevice* const device = client.QueryDeviceById(1);
  ASSERT_NE(device, nullptr);
  EXPECT_THAT(bus.calls, IsEmpty());
  EXPECT_EQ(device->nat_service_uri, "http://s1");
  EXPECT_EQ(device->media_list.at(0).nat_url, "rtsp://m11");
  EXPECT_EQ(client.QueryDeviceCount(), 3);
}

}  // namespace
