#include "server.h"

#include <cerrno>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "fake_bus_service.h"
#include "simulation.h"

namespace vptz_test {
namespace {

using vptzd::Server;

// A clock that fails stands for whatever may fail while a call is answered.
class FailingClock final : public vptzd::Clock {
 public:
  std::chrono::nanoseconds Now() const override {
    if (failing) throw std::bad_alloc();
    return {};
  }

  bool failing = false;
};

class ServerTest : public testing::Test {
 protected:
  tutorial::VptzResponse Reply() {
    tutorial::VptzResponse response;
    EXPECT_TRUE(response.ParseFromString(bus_.reply));
    return response;
  }

  FakeBusService bus_;
  FailingClock clock_;
  vptzd::World world_{1, clock_};
};

std::string PowerStatusRequest() {
  tutorial::VptzCommand command;
  command.set_method_name("get_devices_power_status");
  return command.SerializeAsString();
}

TEST_F(ServerTest, ServesItsNameAtTheAddress) {
  Server server(world_);
  ASSERT_EQ(server.Start("unix:/run/bus.sock"), 0);
  EXPECT_EQ(bus_.name, "vptz");
  EXPECT_EQ(bus_.address, "unix:/run/bus.sock");
}

TEST_F(ServerTest, LeavesTheAddressToTheBusLibrary) {
  Server server(world_);
  ASSERT_EQ(server.Start(nullptr), 0);
  EXPECT_FALSE(bus_.address.has_value());
}

TEST_F(ServerTest, TellsWhyItCannotStart) {
  bus_.start_result = -ECONNREFUSED;
  Server server(world_);
  EXPECT_EQ(server.Start(nullptr), -ECONNREFUSED);
}

TEST_F(ServerTest, StopsServingAtItsEnd) {
  {
    Server server(world_);
    ASSERT_EQ(server.Start(nullptr), 0);
    EXPECT_NE(bus_.service, nullptr);
  }
  EXPECT_EQ(bus_.service, nullptr);
}

TEST_F(ServerTest, RepliesToARequest) {
  Server server(world_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  EXPECT_EQ(bus_.ended, 1);
  EXPECT_EQ(Reply().status_code(), 1);
}

TEST_F(ServerTest, RepliesToRefusedRequests) {
  Server server(world_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.Request("no_such_method", "");
  EXPECT_EQ(Reply().status_code(), -1001);
  bus_.Request("get_status", "");
  EXPECT_EQ(Reply().status_code(), -1002);
  bus_.Request("get_status", std::string(100000, '\xff'));
  EXPECT_EQ(Reply().status_code(), -1002);
  EXPECT_EQ(bus_.ended, 3);
}

TEST_F(ServerTest, GoesOnAfterALostAnswer) {
  Server server(world_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.reply_result = -ETIMEDOUT;
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  bus_.reply_result = 0;
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  EXPECT_EQ(bus_.ended, 2);
}

TEST_F(ServerTest, FailsTheRequestWhenAnsweringItFailsAndGoesOn) {
  Server server(world_);
  ASSERT_EQ(server.Start(nullptr), 0);
  clock_.failing = true;
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  EXPECT_EQ(bus_.ended, 1);
  EXPECT_EQ(bus_.failure, -EIO);
  clock_.failing = false;
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  EXPECT_EQ(Reply().status_code(), 1);
}

}  // namespace
}  // namespace vptz_test
