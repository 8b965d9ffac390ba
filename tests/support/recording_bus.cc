#include "support/recording_bus.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

struct bus_client {
  std::string name;
};

namespace vptz_test {
namespace {

RecordingBus* current = nullptr;

RecordingBus& Current() {
  if (current == nullptr) {
    std::fputs("recording_bus: a bus function is called while no RecordingBus lives\n", stderr);
    std::abort();
  }
  return *current;
}

std::string Text(const char* text) { return text != nullptr ? text : ""; }

std::string Bytes(const void* bytes, int length) {
  return length > 0 ? std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(length)) : "";
}

BusCall Call(const char* function, bus_client* client) {
  BusCall call;
  call.function = function;
  call.client = client;
  return call;
}

BusCall SignalCall(const char* function, bus_client* client, const char* service, const char* signal,
                   bus_callback callback) {
  BusCall call = Call(function, client);
  call.service = Text(service);
  call.name = Text(signal);
  call.callback = callback;
  return call;
}

}  // namespace

RecordingBus::RecordingBus() {
  if (current != nullptr) std::abort();
  current = this;
}

RecordingBus::~RecordingBus() { current = nullptr; }

void RecordingBus::Record(const BusCall& call) {
  calls.push_back(call);
  if (on_call) on_call(call);
}

std::vector<std::string> RecordingBus::Functions() const {
  std::vector<std::string> names;
  for (const BusCall& call : calls) names.push_back(call.function);
  return names;
}

std::vector<BusCall> RecordingBus::CallsOf(const std::string& function) const {
  std::vector<BusCall> found;
  std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
               [&](const BusCall& call) { return call.function == function; });
  return found;
}

void RecordingBus::ReplyWith(const google::protobuf::MessageLite& message) {
  ReplyWithBytes(message.SerializeAsString());
}

void RecordingBus::ReplyWithBytes(const std::string& bytes) {
  ReplyWithLength(bytes, static_cast<int>(bytes.size()));
}

void RecordingBus::ReplyWithLength(const std::string& bytes, int length) {
  call_result = 0;
  reply = bytes;
  reply_length = length;
}

void RecordingBus::FailCalls(int result) { call_result = result; }

}  // namespace vptz_test

using vptz_test::BusCall;
using vptz_test::RecordingBus;

int bus_init() {
  RecordingBus& bus = vptz_test::Current();
  bus.Record(vptz_test::Call("bus_init", nullptr));
  return bus.init_result;
}

void bus_cleanup() { vptz_test::Current().Record(vptz_test::Call("bus_cleanup", nullptr)); }

bus_client* bus_client_new(const char* name) {
  RecordingBus& bus = vptz_test::Current();
  bus_client* const client = bus.client_new_fails ? nullptr : new bus_client{vptz_test::Text(name)};
  BusCall call = vptz_test::Call("bus_client_new", client);
  call.name = vptz_test::Text(name);
  bus.Record(call);
  if (client != nullptr) ++bus.live_clients;
  return client;
}

void bus_client_free(bus_client* client) {
  RecordingBus& bus = vptz_test::Current();
  bus.Record(vptz_test::Call("bus_client_free", client));
  if (client != nullptr) --bus.live_clients;
  delete client;
}

int bus_connect(bus_client* client, const char* address) {
  RecordingBus& bus = vptz_test::Current();
  BusCall call = vptz_test::Call("bus_connect", client);
  if (address != nullptr) call.address = address;
  bus.Record(call);
  return bus.connect_result;
}

int bus_disconnect(bus_client* client) {
  RecordingBus& bus = vptz_test::Current();
  bus.Record(vptz_test::Call("bus_disconnect", client));
  return bus.disconnect_result;
}

int bus_method_call_sync(bus_client* client, const char* service, const char* method, const void* request,
                         int request_length, void* reply, int* reply_length, int timeout) {
  RecordingBus& bus = vptz_test::Current();
  BusCall call = vptz_test::SignalCall("bus_method_call_sync", client, service, method, nullptr);
  call.request = vptz_test::Bytes(request, request_length);
  call.capacity = *reply_length;
  call.timeout = timeout;
  bus.Record(call);
  if (bus.call_result < 0) return bus.call_result;
  std::memcpy(reply, bus.reply.data(), std::min(bus.reply.size(), static_cast<std::size_t>(call.capacity)));
  *reply_length = bus.reply_length;
  return bus.call_result;
}

int bus_method_call_async(bus_client* client, const char* service, const char* method, const void* request,
                          int request_length, bus_callback callback, int timeout) {
  RecordingBus& bus = vptz_test::Current();
  BusCall call = vptz_test::SignalCall("bus_method_call_async", client, service, method, callback);
  call.request = vptz_test::Bytes(request, request_length);
  call.timeout = timeout;
  bus.Record(call);
  return bus.async_result;
}

int bus_signal_subscribe(bus_client* client, const char* service, const char* signal, bus_callback callback) {
  RecordingBus& bus = vptz_test::Current();
  bus.Record(vptz_test::SignalCall("bus_signal_subscribe", client, service, signal, callback));
  return bus.signal_result;
}

int bus_signal_subscribe_all(bus_client* client, const char* service, bus_callback callback) {
  RecordingBus& bus = vptz_test::Current();
  bus.Record(vptz_test::SignalCall("bus_signal_subscribe_all", client, service, nullptr, callback));
  return bus.signal_result;
}

int bus_signal_unsubscribe(bus_client* client, const char* service, const char* signal) {
  RecordingBus& bus = vptz_test::Current();
  bus.Record(vptz_test::SignalCall("bus_signal_unsubscribe", client, service, signal, nullptr));
  return bus.signal_result;
}
