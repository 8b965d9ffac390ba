#include "names.h"

#include <mosquitto.h>

#include <cstdio>
#include <cstring>

#include "random.h"

namespace dorv {
namespace {

constexpr std::string_view kCall = "dorv/call/";
constexpr std::string_view kSignal = "dorv/signal/";
constexpr std::string_view kPresence = "dorv/presence/";
constexpr std::string_view kReply = "dorv/reply/";

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool IsForbidden(unsigned char c) { return c < 0x20 || c == 0x7f || c == '+' || c == '#'; }

// The second half of the control characters, U+0080 to U+009F in UTF-8.
bool HasC1Control(const char* text, std::size_t length) {
  for (std::size_t i = 0; i + 1 < length; ++i) {
    if (static_cast<unsigned char>(text[i]) == 0xc2 && static_cast<unsigned char>(text[i + 1]) < 0xa0) {
      return true;
    }
  }
  return false;
}

bool FitsClientId(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-';
}

}  // namespace

bool IsName(const char* text) {
  if (text == nullptr) {
    return false;
  }
  const std::size_t length = strnlen(text, kMaxNameLength + 1);
  if (length == 0 || length > kMaxNameLength || text[0] == '$') {
    return false;
  }
  for (std::size_t i = 0; i < length; ++i) {
    if (IsForbidden(static_cast<unsigned char>(text[i]))) {
      return false;
    }
  }
  return !HasC1Control(text, length) &&
         mosquitto_validate_utf8(text, static_cast<int>(length)) == MOSQ_ERR_SUCCESS;
}

bool IsServiceName(const char* text) { return IsName(text) && std::strchr(text, '/') == nullptr; }

void Topic::Append(std::string_view part) {
  std::memcpy(text_ + length_, part.data(), part.size());
  length_ += part.size();
  text_[length_] = '\0';
}

Topic Topic::Call(std::string_view service, std::string_view method) {
  Topic topic;
  topic.Append(kCall);
  topic.Append(service);
  topic.Append("/");
  topic.Append(method);
  return topic;
}

Topic Topic::Calls(std::string_view service) { return Call(service, "#"); }

Topic Topic::Signal(std::string_view service, std::string_view signal) {
  Topic topic;
  topic.Append(kSignal);
  topic.Append(service);
  topic.Append("/");
  topic.Append(signal);
  return topic;
}

Topic Topic::Signals(std::string_view service) { return Signal(service, "#"); }

Topic Topic::Presence(std::string_view service) {
  Topic topic;
  topic.Append(kPresence);
  topic.Append(service);
  return topic;
}

Topic Topic::Reply(std::string_view client_id) {
  Topic topic;
  topic.Append(kReply);
  topic.Append(client_id);
  return topic;
}

std::string_view MethodOf(std::string_view topic, std::string_view service) {
  if (!StartsWith(topic, kCall)) {
    return {};
  }
  topic.remove_prefix(kCall.size());
  if (!StartsWith(topic, service) || topic.substr(service.size(), 1) != "/") {
    return {};
  }
  return topic.substr(service.size() + 1);
}

std::string_view SignalOf(std::string_view topic) {
  if (!StartsWith(topic, kSignal)) {
    return {};
  }
  topic.remove_prefix(kSignal.size());
  const std::size_t slash = topic.find('/');
  return slash == std::string_view::npos ? std::string_view() : topic.substr(slash + 1);
}

std::string_view PresenceOf(std::string_view topic) {
  return StartsWith(topic, kPresence) ? topic.substr(kPresence.size()) : std::string_view();
}

bool IsReplyTopic(std::string_view topic) { return StartsWith(topic, kReply); }

std::string MakeClientId(std::string_view name) {
  constexpr std::size_t kShownLength = 40;
  std::string id(name.substr(0, kShownLength));
  for (char& c : id) {
    c = FitsClientId(c) ? c : '_';
  }
  char random_part[20];
  std::snprintf(random_part, sizeof random_part, "-%016llx", static_cast<unsigned long long>(RandomNumber()));
  return id + random_part;
}

}  // namespace dorv
