#include "vptz_client/exchange.h"

#include <cerrno>

#include <vptz/method_names.h>
#include "allocations.h"
#include "vptz_client/command_test.h"

namespace {

using vptz_test::AllocationLimit;
using vptz_test::Allocations;
using vptz_test::ClientTest;
using vptz_test::ConnectedClientTest;
using vptz_test::StatusReply;

using ExchangeTest = ConnectedClientTest;
using UnconnectedExchangeTest = ClientTest;

void FillNothing(tutorial::VptzCommand&) {}

TEST_F(UnconnectedExchangeTest, NothingIsBuiltOrReadBeforeConnect) {
  VptzClient client;
  bool touched = false;
  const int result = vptz::Exchange(
      client, "any_method", 7, [&](tutorial::VptzCommand&) { touched = true; },
      [&](const tutorial::VptzResponse&) { touched = true; });
  EXPECT_EQ(result, -1);
  EXPECT_FALSE(touched);
}

TEST_F(UnconnectedExchangeTest, ACommandIsSentOnceTheBusClientExistsThoughConnectFailed) {
  VptzClient client;
  bus.connect_result = -ECONNREFUSED;
  client.Connect("camera-app", nullptr);
  bus.FailCalls(-ENOTCONN);
  EXPECT_EQ(vptz::Exchange(client, "any_method", 0), -ENOTCONN);
}

TEST_F(ExchangeTest, ACommandWithoutParametersCarriesItsMethodNameAlone) {
  vptz::Exchange(client, "any_method", 0);
  EXPECT_EQ(SentCommand().ShortDebugString(), "method_name: \"any_method\"");
}

TEST_F(ExchangeTest, AFailedCallIsNotRead) {
  bus.ReplyWith(StatusReply(0));
  bus.FailCalls(-5);
  bool read = false;
  const int result =
      vptz::Exchange(client, "any_method", 0, FillNothing, [&](const tutorial::VptzResponse&) { read = true; });
  EXPECT_EQ(result, -5);
  EXPECT_FALSE(read);
}

TEST_F(ExchangeTest, ARefusalIsReadWithItsStatusCode) {
  bus.ReplyWith(StatusReply(-1004));
  int seen = 0;
  vptz::Exchange(client, "any_method", 0, FillNothing,
                 [&](const tutorial::VptzResponse& response) { seen = response.status_code(); });
  EXPECT_EQ(seen, -1004);
}

TEST_F(ExchangeTest, AReplyThatFillsTheWholeBufferIsReadWhole) {
  tutorial::VptzResponse reply = StatusReply(3);
  reply.set_nat_address(std::string(507, 'x'));
  ASSERT_EQ(reply.ByteSizeLong(), 512u);
  bus.ReplyWith(reply);
  std::string address;
  const int result =
      vptz::Exchange(client, "any_method", 0, FillNothing,
                     [&](const tutorial::VptzResponse& response) { address = response.nat_address(); });
  EXPECT_EQ(result, 3);
  EXPECT_EQ(address, reply.nat_address());
}

TEST_F(ExchangeTest, AReplyThatCannotBeParsedReadsAsAnEmptyOne) {
  for (const std::string& bytes : {std::string("\xff"), std::string("\x0f", 1), std::string("nonsense")}) {
    bus.ReplyWithBytes(bytes);
    const int result = vptz::Exchange(
        client, "any_method", 0, FillNothing,
        [](const tutorial::VptzResponse& response) { EXPECT_EQ(response.ShortDebugString(), ""); });
    EXPECT_EQ(result, 0);
  }
}

TEST_F(ExchangeTest, ARefusalStaysOneWhenTheRestOfTheReplyIsDamaged) {
  tutorial::VptzResponse reply = StatusReply(3);
  reply.set_nat_address("rtsp://203.0.113.7/main");
  const std::string whole = reply.SerializeAsString();
  for (const std::string& bytes : {whole + "\xff", whole.substr(0, whole.size() - 1)}) {
    bus.ReplyWithBytes(bytes);
    EXPECT_EQ(vptz::Exchange(client, "any_method", 0), 3);
  }
}

TEST_F(ExchangeTest, FieldsOfANewerServiceDoNotMatter) {
  bus.ReplyWithBytes(StatusReply(3).SerializeAsString() + "\xf2\x3f\x03new");
  EXPECT_EQ(vptz::Exchange(client, "any_method", 0), 3);
}

TEST_F(ExchangeTest, KeepsNothingFromOneCallToTheNext) {
  bus.ReplyWith(StatusReply(9));
  EXPECT_EQ(vptz::Exchange(client, "any_method", 0), 9);
  bus.ReplyWithBytes("");
  EXPECT_EQ(vptz::Exchange(client, "any_method", 0), 0);
}

TEST_F(ExchangeTest, RequestsOfAnyLengthArrive) {
  const std::string path(100000, 'p');
  client.AddUSBttyDevice(path);
  EXPECT_EQ(SentCommand().usb_tty_device_params().tty_device(), path);
}

// Lets each allocation of a call fail in turn, until there are enough.
template <class Operation>
int FailuresUntilSuccess(Operation operation) {
  for (int allowed = 0; allowed < 1000; ++allowed) {
    int result;
    {
      const AllocationLimit limit(static_cast<std::size_t>(allowed));
      result = operation();
    }
    if (result == 0) return allowed;
    EXPECT_EQ(result, -1);
  }
  ADD_FAILURE() << "still failing with 1000 allocations";
  return -1;
}

TEST_F(ExchangeTest, WhereverMemoryRunsOutAnOperationReturnsMinusOne) {
  const std::string token = "a token that needs memory of its own";
  VptzPtzData profile;
  EXPECT_GT(FailuresUntilSuccess([&] { return client.QueryPtzProfiles(1, token, &profile); }), 0);
  EXPECT_GT(FailuresUntilSuccess([&] { return client.AbsoluteMove(1, 2, 3, 4, 5, 6, 7); }), 0);
  EXPECT_GT(FailuresUntilSuccess([&] { return client.PowerOnDevices(); }), 0);
}

// The same exchange written by hand on the bus library.
int AbsoluteMoveByHand(bus_client* bus_client) {
  tutorial::VptzCommand command;
  tutorial::PtzCommand& ptz = *command.mutable_ptz_command();
  ptz.set_ptz_id(1);
  ptz.set_pan_position(2);
  ptz.set_tilt_position(3);
  ptz.set_zoom_position(4);
  ptz.set_pan_speed(5);
  ptz.set_tilt_speed(6);
  ptz.set_zoom_speed(7);
  command.set_method_name(vptz::method::kAbsoluteMove);
  std::string request;
  command.SerializeToString(&request);
  char reply[512];
  int length = sizeof(reply);
  bus_method_call_sync(bus_client, "vptz", vptz::method::kAbsoluteMove, request.data(),
                       static_cast<int>(request.size()), reply, &length, 4);
  tutorial::VptzResponse response;
  response.ParseFromArray(reply, length);
  return response.status_code();
}

TEST_F(ExchangeTest, AnOperationAllocatesNoMoreThanTheSameWrittenByHand) {
  bus.ReplyWith(StatusReply(0));
  bus.calls.reserve(4);  // so that both pay the same for being recorded
  client.AbsoluteMove(1, 2, 3, 4, 5, 6, 7);
  bus_client* const bus_client = OnlyCall().client;

  std::size_t before = Allocations();
  AbsoluteMoveByHand(bus_client);
  const std::size_t by_hand = Allocations() - before;

  before = Allocations();
  client.AbsoluteMove(1, 2, 3, 4, 5, 6, 7);
  EXPECT_EQ(Allocations() - before, by_hand);
}

}  // namespace
