#include <gmock/gmock.h>

#include <vptz/model/vptzmodel.h>
#include <vptz/utils.h>

#include <cerrno>
#include <cstdio>

#include "vptz_client/command_test.h"
#include "vptz_client/exchange.h"
#include "vptz_device/rows.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz::ClientAccess;
using vptz_test::BusCall;
using vptz_test::ClientTest;
using vptz_test::Insert;
using vptz_test::LogLine;
using vptz_test::RemoveConfigFile;
using vptz_test::WriteConfigFile;

using ConnectionTest = ClientTest;

// A line of the client itself: its source name and module are always these.
void ExpectClientLine(const LogLine& line, int level, const std::string& function, const std::string& message) {
  EXPECT_EQ(line.module, 42);
  EXPECT_EQ(line.level, level);
  EXPECT_EQ(line.file, "vptz_client.cc");
  EXPECT_GT(line.line, 0);
  EXPECT_EQ(line.function, function);
  EXPECT_EQ(line.message, message);
}

// ---- construction and destruction ------------------------------------------

TEST_F(ConnectionTest, AClientIsBornAndDiesWithoutTouchingTheBusButForItsLibrary) {
  { VptzClient client; }
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_init", "bus_cleanup"));
}

TEST_F(ConnectionTest, TheConstructorPreparesTheBusLibraryAndThenLoadsTheConfiguration) {
  bus.on_call = [this](const BusCall&) { EXPECT_THAT(log.lines, IsEmpty()); };
  VptzClient client;
  bus.on_call = nullptr;
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_init"));
  ASSERT_FALSE(log.lines.empty());
  EXPECT_EQ(log.lines[0].message, std::string("Complete load config file: ") + vptz::ConfigFile());
}

TEST_F(ConnectionTest, TheConstructorOpensTheDatabaseAfterTheConfiguration) {
  VptzClient client;
  EXPECT_TRUE(VptzModel::Instance().IsConnected());
  EXPECT_EQ(VptzModel::Instance().SchemaVersion("vptz"), 10);
  ASSERT_EQ(log.lines.size(), 2u);
  EXPECT_EQ(log.lines[1].level, 2);
  EXPECT_EQ(log.lines[1].function, "Connect");
  EXPECT_EQ(log.lines[1].message, std::string("Connect database: ") + vptz::DatabaseFile());
}

TEST_F(ConnectionTest, WithoutAConfigurationTheDatabaseIsNotOpened) {
  RemoveConfigFile();
  VptzClient client;
  EXPECT_FALSE(VptzModel::Instance().IsConnected());
}

TEST_F(ConnectionTest, ADatabaseThatCannotBeOpenedIsLoggedAndTheClientWorksWithoutIt) {
  std::remove(vptz::DatabaseFile());
  VptzClient client;
  EXPECT_FALSE(VptzModel::Instance().IsConnected());
  EXPECT_FALSE(IsFile(vptz::DatabaseFile()));
  ASSERT_EQ(log.lines.size(), 3u);
  EXPECT_EQ(log.lines[2].level, 0);
  EXPECT_THAT(log.lines[2].message, testing::StartsWith("Failed to connect to the database! ("));
  EXPECT_EQ(client.GetVptzTimeout(0), 4);
  EXPECT_EQ(client.Connect("camera-app", nullptr), 0);
}

TEST_F(ConnectionTest, TheDestructorClosesTheDatabaseAfterTheBusLibraryForEveryClient) {
  VptzClient survivor;
  {
    VptzClient client;
    bus.on_call = [](const BusCall&) { EXPECT_TRUE(VptzModel::Instance().IsConnected()); };
  }
  bus.on_call = nullptr;
  EXPECT_FALSE(VptzModel::Instance().IsConnected());
}

TEST_F(ConnectionTest, TheConstructorReadsTheTimeoutAndThePresetShift) {
  WriteConfigFile("[MQTT]\ntimeout=9\n[VPTZ]\nndi_preset_shift=-3\n");
  VptzClient client;
  EXPECT_EQ(client.GetVptzTimeout(0), 9);
  EXPECT_EQ(ClientAccess::NdiPresetShift(client), -3);
}

TEST_F(ConnectionTest, WithoutKeyOrFileThereIsNoPresetShift) {
  WriteConfigFile("[MQTT]\ntimeout=9\nndi_preset_shift=5\n");
  EXPECT_EQ(ClientAccess::NdiPresetShift(VptzClient()), 0);
  RemoveConfigFile();
  EXPECT_EQ(ClientAccess::NdiPresetShift(VptzClient()), 0);
}

TEST_F(ConnectionTest, ABusLibraryThatCannotBePreparedDoesNotStopTheConstructor) {
  bus.init_result = -ENOMEM;
  VptzClient client;
  EXPECT_EQ(client.GetVptzTimeout(0), 4);
}

TEST_F(ConnectionTest, EveryClientLoadsTheConfigurationAnew) {
  VptzClient before;
  WriteConfigFile("[MQTT]\ntimeout=9\n");
  VptzClient after;
  EXPECT_EQ(before.GetVptzTimeout(0), 4);
  EXPECT_EQ(after.GetVptzTimeout(0), 9);
}

TEST_F(ConnectionTest, AConfigurationThatCannotBeLoadedIsLoggedAndTheClientWorksWithItsDefaults) {
  RemoveConfigFile();
  VptzClient client;
  EXPECT_EQ(client.GetVptzTimeout(0), 2);
  ASSERT_EQ(log.lines.size(), 2u);
  ExpectClientLine(log.lines[1], 0, "VptzClient",
                   std::string("Failed to load the config file: ") + vptz::ConfigFile());
  EXPECT_EQ(client.Connect("camera-app", nullptr), 0);
}

TEST_F(ConnectionTest, AConfigurationThatIsNoKeyFileGivesTheDefaultsEvenWhereItsBeginningIsGood) {
  WriteConfigFile("[MQTT]\ntimeout=9\nthis is no key file\n");
  VptzClient client;
  EXPECT_EQ(client.GetVptzTimeout(0), 2);
}

TEST_F(ConnectionTest, AConfigurationWithoutTheKeysGivesTheDefaultsAndLogsNothingForThem) {
  WriteConfigFile("[OTHER]\nkey=1\n");
  VptzClient client;
  EXPECT_EQ(client.GetVptzTimeout(0), 2);
  EXPECT_EQ(log.lines.size(), 2u);  // that the file was loaded and the database opened
}

TEST_F(ConnectionTest, ATimeoutThatIsNoNumberIsLoggedAndTheDefaultStays) {
  WriteConfigFile("[MQTT]\ntimeout=abc\n");
  VptzClient client;
  EXPECT_EQ(client.GetVptzTimeout(0), 2);
  ASSERT_EQ(log.lines.size(), 3u);  // the third tells of the database
  EXPECT_EQ(log.lines[1].message, "Failed to get config value: Unkown error!");
}

TEST_F(ConnectionTest, ANegativeConfiguredTimeoutIsHandedToTheBusUnchanged) {
  WriteConfigFile("[MQTT]\ntimeout=-6\n");
  VptzClient client;
  client.Connect("camera-app", nullptr);
  client.PowerOnDevices();
  EXPECT_EQ(OnlyCall().timeout, -6);
}

TEST_F(ConnectionTest, TheDestructorFreesTheBusClientWithoutDisconnectingAndThenCleansUp) {
  {
    VptzClient client;
    client.Connect("camera-app", nullptr);
    bus.calls.clear();
  }
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_client_free", "bus_cleanup"));
  EXPECT_EQ(bus.live_clients, 0);
}

TEST_F(ConnectionTest, TwoClientsInOneProcessKeepTheirOwnBusClients) {
  VptzClient first;
  VptzClient second;
  first.Connect("first", nullptr);
  second.Connect("second", nullptr);
  const std::vector<BusCall> made = bus.CallsOf("bus_client_new");
  ASSERT_EQ(made.size(), 2u);
  EXPECT_NE(made[0].client, made[1].client);
}

// ---- version and time-outs -------------------------------------------------

TEST_F(ConnectionTest, VersionIsTheSameInEveryState) {
  VptzClient client;
  EXPECT_STREQ(client.Version(), "0.1.0");
  client.Connect("camera-app", nullptr);
  EXPECT_STREQ(client.Version(), "0.1.0");
  client.Disconnect();
  EXPECT_STREQ(client.Version(), "0.1.0");
  RemoveConfigFile();
  EXPECT_STREQ(VptzClient().Version(), "0.1.0");
}

TEST_F(ConnectionTest, GetVptzTimeoutKeepsAPositiveValueAndReplacesEveryOther) {
  VptzClient client;
  EXPECT_EQ(client.GetVptzTimeout(5), 5);
  EXPECT_EQ(client.GetVptzTimeout(1), 1);
  EXPECT_EQ(client.GetVptzTimeout(0), 4);
  EXPECT_EQ(client.GetVptzTimeout(-3), 4);
}

TEST_F(ConnectionTest, GetVptzTimeoutIsTwoWhenTheFileLacksTheKey) {
  WriteConfigFile("[MQTT]\n");
  VptzClient client;
  EXPECT_EQ(client.GetVptzTimeout(0), 2);
  EXPECT_EQ(client.GetVptzTimeout(-3), 2);
}

// ---- connecting ------------------------------------------------------------

TEST_F(ConnectionTest, ConnectMakesABusClientOfThatNameAndConnectsItToThatAddress) {
  VptzClient client;
  bus.calls.clear();
  EXPECT_EQ(client.Connect("camera-app", "unix:/run/bus.sock"), 0);
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_client_new", "bus_connect"));
  EXPECT_EQ(bus.calls[0].name, "camera-app");
  EXPECT_EQ(bus.calls[1].address, "unix:/run/bus.sock");
  EXPECT_EQ(bus.calls[1].client, bus.calls[0].client);
}

TEST_F(ConnectionTest, ConnectHandsOnANullAddress) {
  VptzClient client;
  client.Connect("camera-app", nullptr);
  EXPECT_EQ(bus.CallsOf("bus_connect").at(0).address, std::nullopt);
}

TEST_F(ConnectionTest, ConnectWithoutABusClientIsLoggedAndDoesNotConnect) {
  VptzClient client;
  bus.client_new_fails = true;
  log.lines.clear();
  EXPECT_EQ(client.Connect("camera-app", nullptr), -1);
  EXPECT_THAT(bus.CallsOf("bus_connect"), IsEmpty());
  ASSERT_EQ(log.lines.size(), 1u);
  ExpectClientLine(log.lines[0], 0, "Connect", "vptz_client: Failed to create a bus client!");
  bus.client_new_fails = false;
  EXPECT_EQ(client.Connect("camera-app", nullptr), 0);
}

TEST_F(ConnectionTest, AFailedConnectIsLoggedWithTheBusCodeAndReturnsMinusOne) {
  VptzClient client;
  bus.connect_result = -111;
  log.lines.clear();
  EXPECT_EQ(client.Connect("camera-app", nullptr), -1);
  ASSERT_EQ(log.lines.size(), 1u);
  ExpectClientLine(log.lines[0], 0, "Connect", "vptz_client: Failed to connect to dorv bus. (-111)");
}

TEST_F(ConnectionTest, APositiveBusResultOfConnectIsSuccess) {
  VptzClient client;
  bus.connect_result = 3;
  EXPECT_EQ(client.Connect("camera-app", nullptr), 0);
}

TEST_F(ConnectionTest, ConnectAfterAFailedOneDoesNotCreateASecondBusClient) {
  VptzClient client;
  bus.connect_result = -111;
  client.Connect("camera-app", nullptr);
  bus.connect_result = 0;
  bus.calls.clear();
  EXPECT_EQ(client.Connect("another-name", "mqtt://broker"), 0);
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_connect"));
  EXPECT_EQ(bus.calls[0].address, "mqtt://broker");
}

TEST_F(ConnectionTest, ASecondConnectReusesTheBusClientAndConnectsAgain) {
  VptzClient client;
  client.Connect("camera-app", nullptr);
  bus_client* const made = bus.CallsOf("bus_client_new").at(0).client;
  bus.calls.clear();
  EXPECT_EQ(client.Connect("another-name", nullptr), 0);
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_connect"));
  EXPECT_EQ(bus.calls[0].client, made);
}

// ---- disconnecting ---------------------------------------------------------

TEST_F(ConnectionTest, DisconnectBeforeAnyConnectIsLoggedAndReturnsMinusOne) {
  VptzClient client;
  bus.calls.clear();
  log.lines.clear();
  EXPECT_EQ(client.Disconnect(), -1);
  EXPECT_THAT(bus.calls, IsEmpty());
  ASSERT_EQ(log.lines.size(), 1u);
  ExpectClientLine(log.lines[0], 0, "Disconnect", "vptz_client: NULL bus client!");
}

TEST_F(ConnectionTest, ReleaseBeforeAnyConnectReturnsZero) {
  VptzClient client;
  log.lines.clear();
  EXPECT_EQ(client.Release(), 0);
  ASSERT_EQ(log.lines.size(), 1u);
  ExpectClientLine(log.lines[0], 0, "Disconnect", "vptz_client: NULL bus client!");
}

TEST_F(ConnectionTest, DisconnectKeepsTheBusClientForTheNextConnect) {
  VptzClient client;
  client.Connect("camera-app", nullptr);
  bus.calls.clear();
  EXPECT_EQ(client.Disconnect(), 0);
  EXPECT_EQ(client.Connect("camera-app", nullptr), 0);
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_disconnect", "bus_connect"));
}

TEST_F(ConnectionTest, AFailedDisconnectIsLoggedWithTheBusCodeAndReturnsMinusOne) {
  VptzClient client;
  client.Connect("camera-app", nullptr);
  bus.disconnect_result = -107;
  log.lines.clear();
  EXPECT_EQ(client.Disconnect(), -1);
  ASSERT_EQ(log.lines.size(), 1u);
  ExpectClientLine(log.lines[0], 0, "Disconnect", "vptz_client: Failed to disconnect from dorv bus. (-107)");
}

TEST_F(ConnectionTest, ReleaseDisconnectsAndIgnoresItsResult) {
  VptzClient client;
  client.Connect("camera-app", nullptr);
  bus.disconnect_result = -107;
  bus.calls.clear();
  EXPECT_EQ(client.Release(), 0);
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_disconnect"));
}

// ---- Init ------------------------------------------------------------------

TEST_F(ConnectionTest, InitConnectsUnderTheLibrarysNameToTheDefaultAddress) {
  VptzClient client;
  EXPECT_EQ(client.Init(), 0);
  EXPECT_EQ(bus.CallsOf("bus_client_new").at(0).name, "vptz_client");
  EXPECT_EQ(bus.CallsOf("bus_connect").at(0).address, std::nullopt);
}

TEST_F(ConnectionTest, InitReturnsZeroEvenWhenTheBusCannotBeReached) {
  VptzClient client;
  bus.connect_result = -111;
  EXPECT_EQ(client.Init(), 0);
  bus.client_new_fails = true;
  EXPECT_EQ(VptzClient().Init(), 0);
}

const std::string& TwoDevices() {
  static const std::string statements =
      Insert("device", {{"id", "1"}, {"service_uri", "'http://198.51.100.4'"}}) +
      Insert("device", {{"id", "2"}, {"service_uri", "'rs232://ttyS1'"}});
  return statements;
}

TEST_F(ConnectionTest, TheRegistryOfAFreshClientIsEmpty) {
  Store(TwoDevices());
  VptzClient client;
  client.Connect("camera-app", nullptr);
  EXPECT_THAT(ClientAccess::Devices(client), IsEmpty());
}

TEST_F(ConnectionTest, InitConnectsAndThenLoadsTheRegistry) {
  Store(TwoDevices());
  VptzClient client;
  bus.calls.clear();
  client.Init();
  EXPECT_THAT(bus.Functions(),
              ElementsAre("bus_client_new", "bus_connect", "bus_method_call_sync", "bus_method_call_sync"));
  EXPECT_THAT(Sent(), ElementsAre("query_nat_uri 1 2 http://198.51.100.4", "query_nat_uri 1 3 "));
  EXPECT_EQ(ClientAccess::Devices(client).size(), 2u);
}

TEST_F(ConnectionTest, InitLoadsTheRegistryAlsoWhenTheBusCannotBeReached) {
  Store(TwoDevices());
  VptzClient client;
  bus.client_new_fails = true;
  EXPECT_EQ(client.Init(), 0);
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_EQ(ClientAccess::Devices(client).size(), 2u);
}

TEST_F(ConnectionTest, InitWithoutADatabaseReturnsZeroAndLoadsNothing) {
  RemoveConfigFile();
  VptzClient client;
  EXPECT_EQ(client.Init(), 0);
  EXPECT_THAT(ClientAccess::Devices(client), IsEmpty());
}

TEST_F(ConnectionTest, ASecondInitAppendsEveryDeviceAgain) {
  Store(TwoDevices());
  VptzClient client;
  client.Init();
  client.Init();
  EXPECT_EQ(ClientAccess::Devices(client).size(), 4u);
}

// That the handles are destroyed is what the sanitizers watch.
TEST_F(ConnectionTest, TheDestructorOfAClientWithDevicesSendsNothing) {
  Store(TwoDevices());
  {
    VptzClient client;
    client.Init();
    bus.calls.clear();
  }
  EXPECT_THAT(bus.Functions(), ElementsAre("bus_client_free", "bus_cleanup"));
}

}  // namespace
