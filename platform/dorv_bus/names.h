// What callers hand in: names of services, methods and signals, and bytes; and the
// topics made of names. Every topic that the bus uses is built here and nowhere
// else.
#ifndef DORV_BUS_NAMES_H
#define DORV_BUS_NAMES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace dorv {

constexpr std::size_t kMaxNameLength = 255;

// The method under which a service half answers by itself that it is there.
constexpr char kPingMethod[] = "dorv/ping";

// 1 to 255 bytes of UTF-8 without control characters, '+' and '#', not
// beginning with '$'. Null is no name.
bool IsName(const char* text);

// A name without '/', since a service takes one level of a topic.
bool IsServiceName(const char* text);

// Bytes may be null when there are none.
inline bool IsBytes(const void* data, int length) { return length >= 0 && (data != nullptr || length == 0); }

// A topic in a buffer of its own, so that a call allocates nothing for it.
class Topic {
 public:
  static Topic Call(std::string_view service, std::string_view method);
  static Topic Calls(std::string_view service);
  static Topic Signal(std::string_view service, std::string_view signal);
  static Topic Signals(std::string_view service);
  static Topic Presence(std::string_view service);
  static Topic Reply(std::string_view client_id);

  const char* c_str() const { return text_; }

 private:
  void Append(std::string_view part);

  char text_[2 * kMaxNameLength + 32];
  std::size_t length_ = 0;
};

// What follows "dorv/call/SERVICE/" in a topic; empty when it is no such topic.
std::string_view MethodOf(std::string_view topic, std::string_view service);

// Splits "dorv/signal/SERVICE/SIGNAL"; the signal is empty when it is none.
std::string_view SignalOf(std::string_view topic);

// The service of "dorv/presence/SERVICE"; empty when it is no such topic.
std::string_view PresenceOf(std::string_view topic);

bool IsReplyTopic(std::string_view topic);

// `name` made fit for a client id, with a random part: two connections with
// one id would throw each other out.
std::string MakeClientId(std::string_view name);

}  // namespace dorv

#endif
