#include <cerrno>
#include <cstdlib>
#include <vector>

#include "contract/bus_fixture.h"
#include "support/temp_dir.h"

namespace vptz_test {
namespace {

class BusAddress : public BusContract {
 protected:
  ~BusAddress() override { unsetenv("DORV_BUS_ADDRESS"); }

  static int Connect(bus_client* client, const std::string& address) {
    return bus_connect(client, address.c_str());
  }
};

TEST_F(BusAddress, NullMeansTheEnvironmentVariable) {
  const auto service = Serve();
  const ClientPtr client = NewClient();
  setenv("DORV_BUS_ADDRESS", peer_->address().c_str(), 1);
  EXPECT_EQ(bus_connect(client.get(), nullptr), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
}

TEST_F(BusAddress, GivenAddressGoesBeforeTheEnvironmentVariable) {
  const auto service = Serve();
  const ClientPtr client = NewClient();
  setenv("DORV_BUS_ADDRESS", "unix:/nonexistent/bus.sock", 1);
  EXPECT_EQ(Connect(client.get(), peer_->address()), 0);
  EXPECT_EQ(bus_connect(client.get(), nullptr), -ENOENT);
}

TEST_F(BusAddress, EnvironmentVariableThatCannotBeReadIsRefused) {
  const ClientPtr client = NewClient();
  setenv("DORV_BUS_ADDRESS", "nonsense", 1);
  EXPECT_EQ(bus_connect(client.get(), nullptr), -EINVAL);
}

TEST_F(BusAddress, AddressesThatCannotBeReadAreRefused) {
  const ClientPtr client = NewClient();
  const std::vector<std::string> addresses = {"",
                                              "/run/bus.sock",
                                              "broker",
                                              "http://broker",
                                              "mqtt:broker",
                                              "mqtt://",
                                              "mqtt://:1883",
                                              "mqtt://broker:",
                                              "mqtt://broker:0",
                                              "mqtt://broker:65536",
                                              "mqtt://broker:-1",
                                              "mqtt://broker:1883x",
                                              "mqtt://broker:1883/",
                                              "mqtt://broker/topic",
                                              "mqtt://bro ker",
                                              "mqtt://[::1",
                                              "unix:",
                                              "unix:bus.sock",
                                              "unix:/" + std::string(200, 'p')};
  for (const std::string& address : addresses) {
    EXPECT_EQ(Connect(client.get(), address), -EINVAL) << address;
    EXPECT_EQ(bus_disconnect(client.get()), -ENOTCONN) << "it tries again: " << address;
  }
}

TEST_F(BusAddress, MissingSocketIsTold) {
  const ClientPtr client = NewClient();
  const TempDir folder;
  EXPECT_LT(Took([&] { EXPECT_EQ(Connect(client.get(), "unix:" + folder.path() + "/bus.sock"), -ENOENT); }),
            kAtOnce);
}

TEST_F(BusAddress, SocketWithoutListenerIsTold) {
  const ClientPtr client = NewClient();
  peer_->KillBroker();
  EXPECT_LT(Took([&] { EXPECT_EQ(Connect(client.get(), peer_->address()), -ECONNREFUSED); }), kAtOnce);
}

TEST_F(BusAddress, StoppedBrokerIsNotWaitedForLongerThanTheDefaultTimeOut) {
  const ClientPtr client = NewClient();
  peer_->StopBroker();
  EXPECT_LE(Took([&] { EXPECT_EQ(Connect(client.get(), peer_->address()), -ETIMEDOUT); }),
            kDefaultTimeout + kSlack);
  peer_->ContinueBroker();
}

TEST_F(BusAddress, FailedConnectionLeavesTheOldOneClosed) {
  const auto service = Serve();
  const ClientPtr client = Connected();
  EXPECT_EQ(Connect(client.get(), "unix:/nonexistent/bus.sock"), -ENOENT);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").code, -ENOTCONN);
  EXPECT_EQ(Connect(client.get(), peer_->address()), 0);
  EXPECT_EQ(Call(client.get(), "camera", "echo", "x").reply, "x");
}

}  // namespace
}  // namespace vptz_test
