#include <string>

#include <gtest/gtest.h>

#include "simulation.h"

namespace vptz_test {
namespace {

using tutorial::VptzCommand;

constexpr char kMedia[] = "rtsp://192.0.2.1/main";
constexpr char kService[] = "http://192.0.2.1/onvif/device_service";

class NatTest : public testing::Test {
 protected:
  static VptzCommand Nat(unsigned device, int type, const std::string& address = "") {
    VptzCommand command;
    command.mutable_nat_command()->set_device_id(device);
    command.mutable_nat_command()->set_nat_type(type);
    command.mutable_nat_command()->set_address(address);
    return command;
  }
  static VptzCommand WithPort(unsigned device, int type, int port, int kind = 0) {
    VptzCommand command = Nat(device, type);
    command.mutable_nat_command()->add_params()->set_number1(port);
    command.mutable_nat_command()->mutable_params(0)->set_number2(kind);
    return command;
  }
  std::string Outside(unsigned device, int type, const std::string& address) {
    const auto response = simulation_.Call("query_nat_uri", Nat(device, type, address));
    EXPECT_EQ(response.status_code(), 0);
    EXPECT_TRUE(response.has_nat_address());
    return response.nat_address();
  }

  Simulation simulation_;
};

TEST_F(NatTest, NothingIsReachableAtFirst) {
  for (const int type : {0, 1, 2, 3}) EXPECT_EQ(Outside(1, type, kMedia), "");
}

TEST_F(NatTest, EnabledAddressesHaveAnOutsideFormEach) {
  EXPECT_EQ(simulation_.Status("enable_nat", Nat(1, 0)), 0);
  EXPECT_EQ(Outside(1, 1, kMedia), "rtsp://203.0.113.1:40000/main");
  EXPECT_EQ(Outside(1, 2, kService), "http://203.0.113.1:40001/onvif/device_service");
  EXPECT_EQ(Outside(1, 3, "http://192.0.2.1"), "http://203.0.113.1:40002");
  EXPECT_EQ(Outside(1, 1, "192.0.2.1:554"), "203.0.113.1:40000");
  EXPECT_EQ(Outside(1, 0, kMedia), "rtsp://203.0.113.1:40000/main");
  EXPECT_EQ(Outside(1, 1, ""), "");
  EXPECT_EQ(Outside(2, 1, kMedia), "");
}

TEST_F(NatTest, KindsAreEnabledAndDisabledApart) {
  EXPECT_EQ(simulation_.Status("enable_nat", Nat(1, 1)), 0);
  EXPECT_EQ(simulation_.Status("enable_nat", Nat(2, 1)), 0);
  EXPECT_EQ(Outside(1, 2, kService), "");
  EXPECT_EQ(Outside(2, 1, "rtsp://192.0.2.2/sub"), "rtsp://203.0.113.1:40001/sub");
  EXPECT_EQ(simulation_.Status("disable_nat", Nat(1, 0)), 0);
  EXPECT_EQ(Outside(1, 1, kMedia), "");
  EXPECT_EQ(simulation_.Status("disable_nat", Nat(1, 0)), 0);
  EXPECT_NE(Outside(2, 1, kMedia), "");
  EXPECT_EQ(simulation_.Status("clear_nat"), 0);
  EXPECT_EQ(Outside(2, 1, kMedia), "");
}

TEST_F(NatTest, EnablingAgainKeepsThePort) {
  EXPECT_EQ(simulation_.Status("enable_nat", Nat(1, 1)), 0);
  EXPECT_EQ(simulation_.Status("enable_nat", Nat(1, 0)), 0);
  EXPECT_EQ(Outside(1, 1, kMedia), "rtsp://203.0.113.1:40000/main");
}

TEST_F(NatTest, MappingsChooseTheirPortsAndHosts) {
  VptzCommand command = WithPort(1, 0, 8554, 1);
  command.mutable_nat_command()->mutable_params(0)->set_text1("cameras.example");
  EXPECT_EQ(simulation_.Status("enable_nat", command), 0);
  EXPECT_EQ(Outside(1, 1, kMedia), "rtsp://cameras.example:8554/main");
  EXPECT_EQ(Outside(1, 2, kService), "");
}

TEST_F(NatTest, ImpossibleMappingsAreRefusedWhole) {
  EXPECT_EQ(simulation_.Status("enable_nat", WithPort(1, 1, 8554)), 0);
  EXPECT_EQ(simulation_.Status("enable_nat", WithPort(2, 1, 8554)), -1008);
  EXPECT_EQ(simulation_.Status("enable_nat", WithPort(2, 1, 65536)), -1006);
  EXPECT_EQ(simulation_.Status("enable_nat", WithPort(2, 1, -1)), -1006);
  EXPECT_EQ(simulation_.Status("enable_nat", WithPort(2, 1, 0, 9)), -1006);
  EXPECT_EQ(simulation_.Status("enable_nat", WithPort(2, 0, 8555)), -1002);
  VptzCommand two = WithPort(2, 1, 9000);
  two.mutable_nat_command()->add_params()->set_number1(8554);
  EXPECT_EQ(simulation_.Status("enable_nat", two), -1008);
  EXPECT_EQ(Outside(2, 1, kMedia), "");
}

TEST_F(NatTest, UnknownDevicesAndKindsAreRefused) {
  for (const char* method : {"enable_nat", "disable_nat", "query_nat_uri"}) {
    EXPECT_EQ(simulation_.Status(method, Nat(9, 0)), -1004) << method;
    EXPECT_EQ(simulation_.Status(method, Nat(1, 7)), -1006) << method;
    EXPECT_EQ(simulation_.Status(method), -1002) << method;
  }
}

}  // namespace
}  // namespace vptz_test
