#include "vptz_client/command_test.h"

#include <google/protobuf/text_format.h>
#include <vptz/model/vptzmodel.h>

#include <cerrno>
#include <climits>
#include <cstdio>

#include "model/raw_database.h"

namespace vptz_test {
namespace {

std::string Sentence(const tutorial::VptzCommand& command) {
  const std::string& method = command.method_name();
  if (command.has_nat_command()) {
    const tutorial::NATCommand& nat = command.nat_command();
    return method + " " + std::to_string(nat.device_id()) + " " + std::to_string(nat.nat_type()) + " " +
           nat.address();
  }
  tutorial::VptzCommand fields = command;
  fields.clear_method_name();
  const std::string text = fields.ShortDebugString();
  return text.empty() ? method : method + " " + text;
}

}  // namespace

ClientTest::ClientTest() {
  WriteConfigFile("[MQTT]\ntimeout=4\n[VPTZ]\nndi_preset_shift=0\n");
  std::remove(vptz::DatabaseFile());
  EXPECT_EQ(VptzModel::Instance().Initialize(vptz::DatabaseFile(), "vptz", ""), 0);
  VptzModel::Instance().Release();
  log.lines.clear();
}

void ClientTest::Store(const std::string& statements) {
  RawDatabase(vptz::DatabaseFile()).Execute("PRAGMA foreign_keys=OFF; BEGIN;" + statements + "COMMIT;");
}

std::vector<std::string> ClientTest::Sent() const {
  std::vector<std::string> sentences;
  for (const BusCall& call : bus.CallsOf("bus_method_call_sync"))
    sentences.push_back(Sentence(CommandOf(call)));
  return sentences;
}

BusCall ClientTest::OnlyCall() const {
  const std::vector<BusCall> calls = bus.CallsOf("bus_method_call_sync");
  EXPECT_EQ(calls.size(), 1u);
  return calls.empty() ? BusCall() : calls.back();
}

tutorial::VptzCommand ClientTest::SentCommand() const { return CommandOf(OnlyCall()); }

ConnectedClientTest::ConnectedClientTest() {
  EXPECT_EQ(client.Connect("test", nullptr), 0);
  bus.calls.clear();
  log.lines.clear();
}

std::ostream& operator<<(std::ostream& out, const CommandCase& row) { return out << row.operation; }

CommandTest::CommandTest() { Store(GetParam().rows); }

int CommandTest::CallConnected(int timeout) {
  VptzClient client;
  EXPECT_EQ(client.Connect("test", nullptr), 0);
  log.lines.clear();
  return GetParam().call(client, timeout);
}

std::string CommandName(const testing::TestParamInfo<CommandCase>& info) { return info.param.operation; }

tutorial::VptzResponse StatusReply(int status_code) {
  tutorial::VptzResponse response;
  response.set_status_code(status_code);
  return response;
}

tutorial::VptzResponse AddressReply(const std::string& address, int status_code) {
  tutorial::VptzResponse response = StatusReply(status_code);
  response.set_nat_address(address);
  return response;
}

tutorial::VptzCommand CommandOf(const BusCall& call) {
  tutorial::VptzCommand command;
  EXPECT_TRUE(command.ParseFromString(call.request));
  EXPECT_EQ(command.method_name(), call.name);
  return command;
}

TEST_P(CommandTest, SendsItsMethodToTheServiceOverItsBusClient) {
  CallConnected();
  EXPECT_EQ(OnlyCall().service, "vptz");
  EXPECT_EQ(OnlyCall().name, GetParam().method);
  EXPECT_NE(OnlyCall().client, nullptr);
  EXPECT_EQ(OnlyCall().client, bus.CallsOf("bus_client_new").front().client);
}

TEST_P(CommandTest, SendsExactlyItsFields) {
  tutorial::VptzCommand expected;
  ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(GetParam().fields, &expected));
  expected.set_method_name(GetParam().method);
  CallConnected();
  EXPECT_EQ(SentCommand().DebugString(), expected.DebugString());
  EXPECT_EQ(OnlyCall().request, expected.SerializeAsString());
}

TEST_P(CommandTest, TellsTheBusThatTheReplyMayHave512Bytes) {
  CallConnected();
  EXPECT_EQ(OnlyCall().capacity, 512);
}

TEST_P(CommandTest, SendsAPositiveTimeoutUnchanged) {
  CallConnected(7);
  EXPECT_EQ(OnlyCall().timeout, 7);
}

TEST_P(CommandTest, SendsTheConfiguredTimeoutForZero) {
  CallConnected(0);
  EXPECT_EQ(OnlyCall().timeout, 4);
}

TEST_P(CommandTest, SendsTheConfiguredTimeoutForANegativeOne) {
  CallConnected(-3);
  EXPECT_EQ(OnlyCall().timeout, 4);
}

TEST_P(CommandTest, WithoutABusClientReturnsMinusOneAndTouchesNoBus) {
  VptzClient client;
  bus.calls.clear();
  log.lines.clear();
  EXPECT_EQ(GetParam().call(client, 7), -1);
  EXPECT_TRUE(bus.calls.empty());
  EXPECT_TRUE(log.lines.empty());
}

TEST_P(CommandTest, IsSentAfterDisconnectSoThatTheBusReportsTheFailure) {
  VptzClient client;
  client.Connect("test", nullptr);
  client.Disconnect();
  bus.FailCalls(-ENOTCONN);
  EXPECT_EQ(GetParam().call(client, 0), -ENOTCONN);
  EXPECT_EQ(OnlyCall().name, GetParam().method);
}

TEST_P(CommandTest, ReturnsANegativeBusCodeUnchangedWithoutLookingAtTheReply) {
  for (const int code : {-5, -ETIMEDOUT, -ESRCH, -ECONNRESET, INT_MIN}) {
    bus.ReplyWith(StatusReply(77));
    bus.FailCalls(code);
    EXPECT_EQ(CallConnected(), code);
  }
}

TEST_P(CommandTest, ReturnsEveryStatusCodeUnchanged) {
  for (const int status_code : {0, 1, -1, 42, -1004, INT_MAX, INT_MIN}) {
    bus.ReplyWith(StatusReply(status_code));
    EXPECT_EQ(CallConnected(), status_code);
  }
}

TEST_P(CommandTest, APositiveBusResultIsSuccessAndTheStatusCodeCounts) {
  bus.ReplyWith(StatusReply(-1006));
  bus.call_result = 5;
  EXPECT_EQ(CallConnected(), -1006);
}

TEST_P(CommandTest, AnEmptyReplyGivesZero) {
  bus.ReplyWithBytes("");
  EXPECT_EQ(CallConnected(), 0);
}

TEST_P(CommandTest, AnUnparsableReplyGivesZero) {
  bus.ReplyWithBytes("\xff\xff\xff\xff");
  EXPECT_EQ(CallConnected(), 0);
}

TEST_P(CommandTest, AReplyCutOffAfterItsStatusCodeGivesTheCode) {
  tutorial::VptzResponse response = StatusReply(55);
  response.set_nat_address("rtsp://203.0.113.7/main");
  std::string bytes = response.SerializeAsString();
  bytes.pop_back();
  bus.ReplyWithBytes(bytes);
  EXPECT_EQ(CallConnected(), 55);
}

// That nothing beyond the buffer is read is what the address sanitizer watches.
TEST_P(CommandTest, AReplyLengthThatNoReplyCanHaveGivesZero) {
  const std::string bytes = StatusReply(55).SerializeAsString();
  for (const int length : {-1, 513, INT_MIN, INT_MAX}) {
    bus.ReplyWithLength(bytes, length);
    EXPECT_EQ(CallConnected(), 0) << length;
  }
}

TEST_P(CommandTest, LogsNothing) {
  for (const int status_code : {0, -1004}) {
    bus.ReplyWith(StatusReply(status_code));
    CallConnected();
    EXPECT_TRUE(log.lines.empty());
  }
  bus.FailCalls(-ETIMEDOUT);
  CallConnected();
  EXPECT_TRUE(log.lines.empty());
}

}  // namespace vptz_test
