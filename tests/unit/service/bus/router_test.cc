#include "bus/router.h"

#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "bus/methods.h"
#include "simulation.h"

namespace vptz_test {
namespace {

class DispatcherTest : public testing::Test {
 protected:
  int Dispatch(const std::string& method, const std::string& bytes) {
    return simulation_.Dispatch(method, bytes.data(), static_cast<int>(bytes.size())).status_code();
  }

  Simulation simulation_;
};

std::string MoveBytes() {
  tutorial::VptzCommand command;
  command.set_method_name("absolute_move");
  command.mutable_ptz_command()->set_ptz_id(1);
  command.mutable_ptz_command()->set_pan_position(10.0);
  return command.SerializeAsString();
}

TEST_F(DispatcherTest, RefusesUnknownMethods) {
  for (const std::string method :
       {"", "absolute_moves", "Absolute_move", "enable_reset2p0", "absolute_move "}) {
    EXPECT_EQ(simulation_.Status(method), -1001) << method;
  }
  EXPECT_EQ(simulation_.Status(std::string("get_status\0", 11)), -1001);
  EXPECT_EQ(simulation_.Status(std::string(100000, 'x')), -1001);
}

TEST_F(DispatcherTest, UnknownMethodIsToldBeforeUnreadableBytes) { EXPECT_EQ(Dispatch("nod", "\xff"), -1001); }

TEST_F(DispatcherTest, RefusesACommandWithoutBytes) {
  EXPECT_EQ(simulation_.Dispatch("get_status", nullptr, 0).status_code(), -1002);
}

TEST_F(DispatcherTest, RefusesACommandWithoutAMethodName) {
  tutorial::VptzCommand command;
  command.mutable_ptz_command()->set_ptz_id(1);
  EXPECT_EQ(Dispatch("ptz_stop", command.SerializeAsString()), -1002);
}

TEST_F(DispatcherTest, RefusesEveryCutCommandAndMovesNothing) {
  const std::string bytes = MoveBytes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_EQ(Dispatch("absolute_move", bytes.substr(0, length)), -1002) << length;
  }
  simulation_.Wait(1s);
  EXPECT_EQ(simulation_.Look().pan().position(), 0.0);
  EXPECT_EQ(Dispatch("absolute_move", bytes), 0);
}

TEST_F(DispatcherTest, IgnoresFieldsThatItDoesNotKnow) {
  EXPECT_EQ(Dispatch("absolute_move", MoveBytes() + "\xfa\x3f\x03"
                                                    "abc"),
            0);
}

TEST_F(DispatcherTest, TakesTextsThatAreNotUtf8) {
  tutorial::VptzCommand command;
  command.mutable_usb_tty_device_params()->set_tty_device("\xc3\x28\x80");
  EXPECT_EQ(simulation_.Status("add_usb_tty_device", command), 0);
}

// Every method with thousands of damaged commands: each gets some answer, and
// the cameras stay where cameras can be.
TEST_F(DispatcherTest, AnswersWhateverBytesCome) {
  std::mt19937 generator(7);
  const auto draw = [&](std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(generator);
  };
  for (const vptzd::Method& method : vptzd::Methods()) {
    tutorial::VptzCommand command;
    command.ParseFromString(MoveBytes());
    command.set_method_name(std::string(method.name));
    command.mutable_device_command()->set_token("main");
    for (int i = 0; i < 500; ++i) {
      std::string bytes = command.SerializeAsString();
      for (int flip = 0; flip < 3; ++flip) bytes[draw(bytes.size())] = static_cast<char>(draw(256));
      const int status = Dispatch(std::string(method.name), bytes);
      ASSERT_TRUE(status == 0 || status == 1 || (status <= -1001 && status >= -1014)) << status;
    }
  }
  simulation_.Wait(1s);
  EXPECT_GE(simulation_.Look().pan().position(), -170.0);
  EXPECT_LE(simulation_.Look().pan().position(), 170.0);
}

TEST_F(DispatcherTest, MayBeCalledFromSeveralThreads) {
  const auto work = [this] {
    for (int i = 0; i < 500; ++i) {
      EXPECT_EQ(Dispatch("absolute_move", MoveBytes()), 0);
      EXPECT_LE(simulation_.Look().pan().position(), 10.0);
    }
  };
  std::thread other(work);
  work();
  other.join();
}

}  // namespace
}  // namespace vptz_test
