// The raw calls and the signals: what is handed to the bus library as it is.
#include <gmock/gmock.h>

#include <cerrno>
#include <ostream>
#include <type_traits>
#include <utility>

#include "vptz_client/command_test.h"

namespace {

using testing::IsEmpty;
using vptz_test::BusCall;

using RawCallTest = vptz_test::ConnectedClientTest;
using SignalTest = vptz_test::ConnectedClientTest;
using UnconnectedBusTest = vptz_test::ClientTest;

void OnSignal(bus_client*, void*, const char*, const void*, std::int32_t) {}

// ---- raw calls -------------------------------------------------------------

// 0 means the bus's default time-out there and the configured one elsewhere, so a
// caller says what he wants.
template <class Client, class = void>
struct TimeOutMayBeLeftOut : std::false_type {};
template <class Client>
struct TimeOutMayBeLeftOut<Client,
                           decltype(void(std::declval<Client&>().CallSync("", "", 0, nullptr, nullptr)))>
    : std::true_type {};
template <class Client>
struct TimeOutMayBeLeftOut<Client, decltype(void(std::declval<Client&>().CallAsync("", "", 0, OnSignal)))>
    : std::true_type {};
static_assert(!TimeOutMayBeLeftOut<VptzClient>::value, "raw calls have no default time-out");

TEST_F(RawCallTest, CallSyncHandsEverythingToTheBus) {
  bus.ReplyWithBytes("answer");
  char reply[100] = {};
  int length = sizeof(reply);
  EXPECT_EQ(client.CallSync("any_method", "request", 7, reply, &length, 0), 0);
  EXPECT_EQ(OnlyCall().service, "vptz");
  EXPECT_EQ(OnlyCall().name, "any_method");
  EXPECT_EQ(OnlyCall().request, "request");
  EXPECT_EQ(OnlyCall().capacity, 100);
  EXPECT_EQ(OnlyCall().timeout, 0);  // raw calls don't resolve it
  EXPECT_EQ(std::string(reply, static_cast<std::size_t>(length)), "answer");
}

TEST_F(RawCallTest, CallSyncReturnsTheBusResult) {
  char reply[1];
  int length = 1;
  for (const int result : {0, 3, -5}) {
    bus.call_result = result;
    EXPECT_EQ(client.CallSync("any_method", nullptr, 0, reply, &length, 1), result);
  }
}

TEST_F(RawCallTest, CallAsyncHandsEverythingToTheBusAndReturnsItsResult) {
  bus.async_result = -ESRCH;
  EXPECT_EQ(client.CallAsync("any_method", "request", 7, OnSignal, -2), -ESRCH);
  const BusCall call = bus.CallsOf("bus_method_call_async").at(0);
  EXPECT_EQ(call.service, "vptz");
  EXPECT_EQ(call.name, "any_method");
  EXPECT_EQ(call.request, "request");
  EXPECT_EQ(call.callback, &OnSignal);
  EXPECT_EQ(call.timeout, -2);
  EXPECT_NE(call.client, nullptr);
}

TEST_F(UnconnectedBusTest, RawCallsAndSignalsHandANullBusClientToTheBus) {
  VptzClient client;
  bus.call_result = bus.async_result = bus.signal_result = -EINVAL;
  char reply[1];
  int length = 1;
  bus.calls.clear();
  EXPECT_EQ(client.CallSync("any_method", "", 0, reply, &length, 1), -EINVAL);
  EXPECT_EQ(client.CallAsync("any_method", "", 0, OnSignal, 1), -EINVAL);
  EXPECT_EQ(client.SubscribeSignal("signal", OnSignal), -EINVAL);
  EXPECT_EQ(client.SubscribeAllSignal(OnSignal), -EINVAL);
  EXPECT_EQ(client.UnsubscribeSignal("signal"), -EINVAL);
  ASSERT_EQ(bus.calls.size(), 5u);
  for (const BusCall& call : bus.calls) EXPECT_EQ(call.client, nullptr) << call.function;
}

// ---- signals ---------------------------------------------------------------

struct SignalCase {
  std::string operation;
  std::string function;
  std::string signal;
  bus_callback callback;
  std::function<int(VptzClient&)> call;
};

std::ostream& operator<<(std::ostream& out, const SignalCase& one) { return out << one.operation; }

const SignalCase kSignals[] = {
    {"SubscribeSignal", "bus_signal_subscribe", "any", OnSignal,
     [](VptzClient& client) { return client.SubscribeSignal("any", OnSignal); }},
    {"SubscribeAllSignal", "bus_signal_subscribe_all", "", OnSignal,
     [](VptzClient& client) { return client.SubscribeAllSignal(OnSignal); }},
    {"SubscribeSearchDeviceFinishSignal", "bus_signal_subscribe", "finish/search_device", OnSignal,
     [](VptzClient& client) { return client.SubscribeSearchDeviceFinishSignal(OnSignal); }},
    {"SubscribeUpdateDevicesSignal", "bus_signal_subscribe", "update_devices", OnSignal,
     [](VptzClient& client) { return client.SubscribeUpdateDevicesSignal(OnSignal); }},
    {"UnsubscribeSignal", "bus_signal_unsubscribe", "any", nullptr,
     [](VptzClient& client) { return client.UnsubscribeSignal("any"); }},
    {"UnSubscribeSearchDeviceFinishSignal", "bus_signal_unsubscribe", "finish/search_device", nullptr,
     [](VptzClient& client) { return client.UnSubscribeSearchDeviceFinishSignal(); }},
    {"UnSubscribeUpdateDevicesSignal", "bus_signal_unsubscribe", "update_devices", nullptr,
     [](VptzClient& client) { return client.UnSubscribeUpdateDevicesSignal(); }},
};

class SignalOperationTest : public SignalTest, public testing::WithParamInterface<SignalCase> {};

TEST_P(SignalOperationTest, HandsTheSignalAndTheCallersOwnCallbackToTheBus) {
  GetParam().call(client);
  ASSERT_EQ(bus.calls.size(), 1u);
  const BusCall& call = bus.calls[0];
  EXPECT_EQ(call.function, GetParam().function);
  EXPECT_NE(call.client, nullptr);
  EXPECT_EQ(call.service, "vptz");
  EXPECT_EQ(call.name, GetParam().signal);
  EXPECT_EQ(call.callback, GetParam().callback);
}

TEST_P(SignalOperationTest, ReturnsTheBusResultAndLogsNothing) {
  for (const int result : {0, 2, -ENOTCONN}) {
    bus.signal_result = result;
    EXPECT_EQ(GetParam().call(client), result);
  }
  EXPECT_THAT(log.lines, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalOperationTest, testing::ValuesIn(kSignals),
                         [](const testing::TestParamInfo<SignalCase>& info) { return info.param.operation; });

TEST_F(SignalTest, HandleUpdateSignalDoesNothing) {
  EXPECT_EQ(client.HandleUpdateSignal(), 0);
  EXPECT_THAT(bus.calls, IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

}  // namespace
