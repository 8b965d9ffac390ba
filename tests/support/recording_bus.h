// Stands in for the bus library in unit tests: keeps every call of its functions
// and answers as told.
#ifndef VPTZ_TESTS_SUPPORT_RECORDING_BUS_H
#define VPTZ_TESTS_SUPPORT_RECORDING_BUS_H

#include <dorv_bus.h>

#include <google/protobuf/message_lite.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vptz_test {

// One call of a bus function. Members that the function has no argument for
// keep their defaults.
struct BusCall {
  std::string function;  // such as "bus_connect"
  bus_client* client = nullptr;
  std::string service;
  std::string name;                    // the client's, method's or signal's
  std::optional<std::string> address;  // none when null
  std::string request;
  int capacity = 0;  // *reply_length before the call
  int timeout = 0;
  bus_callback callback = nullptr;
};

// Answers and keeps the calls that are made while it lives. One at a time; a
// call that is made when there is none ends the test program.
class RecordingBus {
 public:
  RecordingBus();
  ~RecordingBus();
  RecordingBus(const RecordingBus&) = delete;
  RecordingBus& operator=(const RecordingBus&) = delete;

  // What the bus functions call.
  void Record(const BusCall& call);

  // The names of the functions called so far, in order.
  std::vector<std::string> Functions() const;

  // The calls of one function.
  std::vector<BusCall> CallsOf(const std::string& function) const;

  // What synchronous calls answer from now on.
  void ReplyWith(const google::protobuf::MessageLite& message);
  void ReplyWithBytes(const std::string& bytes);
  // Bytes together with a length that need not be theirs.
  void ReplyWithLength(const std::string& bytes, int length);
  void FailCalls(int result);

  std::vector<BusCall> calls;

  // Called in the middle of each call, when set.
  std::function<void(const BusCall&)> on_call;

  // What the functions return; a client is made unless told otherwise.
  int init_result = 0;
  bool client_new_fails = false;
  int connect_result = 0;
  int disconnect_result = 0;
  int call_result = 0;
  int async_result = 0;
  int signal_result = 0;

  // Clients made and not freed yet.
  int live_clients = 0;

  std::string reply;
  int reply_length = 0;
};

}  // namespace vptz_test

#endif
