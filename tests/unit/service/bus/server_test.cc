#include "bus/server.h"

#include <cerrno>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "bus/fake_bus_service.h"
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
  vptzd::Fleet fleet_{1, clock_};
  vptzd::Agenda agenda_{clock_};
  vptzd::Context context_{fleet_, agenda_};
};

std::string PowerStatusRequest() {
  tutorial::VptzCommand command;
  command.set_method_name("get_devices_power_status");
  return command.SerializeAsString();
}

TEST_F(ServerTest, ServesItsNameAtTheAddress) {
  Server server(context_);
  ASSERT_EQ(server.Start("unix:/run/bus.sock"), 0);
  EXPECT_EQ(bus_.name, "vptz");
  EXPECT_EQ(bus_.address, "unix:/run/bus.sock");
}

TEST_F(ServerTest, LeavesTheAddressToTheBusLibrary) {
  Server server(context_);
  ASSERT_EQ(server.Start(nullptr), 0);
  EXPECT_FALSE(bus_.address.has_value());
}

TEST_F(ServerTest, TellsWhyItCannotStart) {
  bus_.start_result = -ECONNREFUSED;
  Server server(context_);
  EXPECT_EQ(server.Start(nullptr), -ECONNREFUSED);
}

TEST_F(ServerTest, StopsServingAtItsEnd) {
  {
    Server server(context_);
    ASSERT_EQ(server.Start(nullptr), 0);
    EXPECT_NE(bus_.service, nullptr);
  }
  EXPECT_EQ(bus_.service, nullptr);
}

TEST_F(ServerTest, RepliesToARequest) {
  Server server(context_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  EXPECT_EQ(bus_.ended, 1);
  EXPECT_EQ(Reply().status_code(), 1);
}

TEST_F(ServerTest, RepliesToRefusedRequests) {
  Server server(context_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.Request("no_such_method", "");
  EXPECT_EQ(Reply().status_code(), -1001);
  bus_.Request("get_status", "");
  EXPECT_EQ(Reply().status_code(), -1002);
  bus_.Request("get_status", std::string(100000, '\xff'));
  EXPECT_EQ(Reply().status_code(), -1002);
  EXPECT_EQ(bus_.ended, 3);
}

std::string SearchRequest() {
  tutorial::VptzCommand command;
  command.set_method_name("search_device");
  command.mutable_device_command();
  return command.SerializeAsString();
}

TEST_F(ServerTest, LeavesWhatMayTakeTimeToTheAgenda) {
  Server server(context_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.Request("search_device", SearchRequest());
  EXPECT_EQ(bus_.ended, 0);
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  EXPECT_EQ(bus_.ended, 1);
  agenda_.RunDue();
  EXPECT_EQ(bus_.ended, 2);
  EXPECT_EQ(Reply().status_code(), 0);
}

TEST_F(ServerTest, SendsSignals) {
  context_.search_time = {};
  Server server(context_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.Request("search_device", SearchRequest());
  agenda_.RunDue();
  ASSERT_EQ(bus_.signals.size(), 1u);
  EXPECT_EQ(bus_.signals[0].first, "finish/search_device");
}

TEST_F(ServerTest, FailsWhatHasNotBegunWhenTheServiceEnds) {
  Server server(context_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.Request("search_device", SearchRequest());
  agenda_.Close();
  EXPECT_EQ(bus_.ended, 1);
  EXPECT_EQ(bus_.failure, -ECANCELED);
  bus_.Request("search_device", SearchRequest());
  EXPECT_EQ(bus_.ended, 2);
}

TEST_F(ServerTest, GarblesEnlargesAndKeepsRepliesOnDemand) {
  Server server(context_);
  ASSERT_EQ(server.Start(nullptr), 0);
  const auto answer_with = [&](vptzd::FaultKind kind) {
    fleet_.SetFaults({{kind, 0, "", "get_devices_power_status", {}}});
    bus_.reply.clear();
    bus_.Request("get_devices_power_status", PowerStatusRequest());
    return bus_.reply;
  };
  EXPECT_FALSE(tutorial::VptzResponse().ParseFromString(answer_with(vptzd::FaultKind::kGarble)));
  EXPECT_GT(answer_with(vptzd::FaultKind::kOversize).size(), 512u);
  EXPECT_EQ(bus_.ended, 2);
  EXPECT_EQ(answer_with(vptzd::FaultKind::kDrop), "");
  EXPECT_EQ(bus_.ended, 2);
}

TEST_F(ServerTest, GoesOnAfterALostAnswer) {
  Server server(context_);
  ASSERT_EQ(server.Start(nullptr), 0);
  bus_.reply_result = -ETIMEDOUT;
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  bus_.reply_result = 0;
  bus_.Request("get_devices_power_status", PowerStatusRequest());
  EXPECT_EQ(bus_.ended, 2);
}

TEST_F(ServerTest, FailsTheRequestWhenAnsweringItFailsAndGoesOn) {
  Server server(context_);
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
