#include "reliability/hostile_service.h"

#include <mqtt_protocol.h>

#include <cstdlib>
#include <stdexcept>

namespace vptz_test {
namespace {

constexpr char kMethods[] = "dorv/call/vptz/";

// Calls that are not answered take one second and a little.
constexpr std::chrono::seconds kLongerThanACall{3};

// Where the request's number ends, behind the caller's.
constexpr std::size_t kSequenceEnd = 16;

std::string TakeText(char* text) {
  std::string taken = text == nullptr ? "" : text;
  std::free(text);
  return taken;
}

std::string ReplyTopic(const mosquitto_property* properties) {
  char* text = nullptr;
  mosquitto_property_read_string(properties, MQTT_PROP_RESPONSE_TOPIC, &text, false);
  return TakeText(text);
}

std::string Correlation(const mosquitto_property* properties) {
  void* bytes = nullptr;
  std::uint16_t length = 0;
  mosquitto_property_read_binary(properties, MQTT_PROP_CORRELATION_DATA, &bytes, &length, false);
  std::string correlation(static_cast<const char*>(bytes), length);
  std::free(bytes);
  return correlation;
}

void Flip(char& byte, std::size_t bit) { byte = static_cast<char>(byte ^ (1 << bit)); }

}  // namespace

HostileService::HostileService(const std::string& socket_path)
    : mosquitto_((mosquitto_lib_init(), mosquitto_new(nullptr, true, this))) {
  mosquitto_int_option(mosquitto_, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
  mosquitto_connect_v5_callback_set(mosquitto_, &OnConnect);
  mosquitto_subscribe_v5_callback_set(mosquitto_, &OnSubscribe);
  mosquitto_message_v5_callback_set(mosquitto_, &OnMessage);
  const bool connected = mosquitto_connect(mosquitto_, socket_path.c_str(), 0, 60) == MOSQ_ERR_SUCCESS &&
                         mosquitto_loop_start(mosquitto_) == MOSQ_ERR_SUCCESS;
  std::unique_lock<std::mutex> lock(mutex_);
  if (!connected || !changed_.wait_for(lock, std::chrono::seconds(10), [this] { return ready_; })) {
    throw std::runtime_error("the hostile service does not serve");
  }
}

HostileService::~HostileService() {
  mosquitto_disconnect(mosquitto_);
  mosquitto_loop_stop(mosquitto_, false);
  mosquitto_destroy(mosquitto_);
  mosquitto_lib_cleanup();
}

void HostileService::OnConnect(mosquitto* mosquitto, void*, int, int, const mosquitto_property*) {
  mosquitto_publish(mosquitto, nullptr, "dorv/presence/vptz", 7, "hostile", 1, true);
  mosquitto_subscribe(mosquitto, nullptr, (std::string(kMethods) + "#").c_str(), 0);
}

void HostileService::OnSubscribe(mosquitto*, void* self, int, int, const int*, const mosquitto_property*) {
  auto* service = static_cast<HostileService*>(self);
  const std::lock_guard<std::mutex> lock(service->mutex_);
  service->ready_ = true;
  service->changed_.notify_all();
}

void HostileService::OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                               const mosquitto_property* properties) {
  static_cast<HostileService*>(self)->Answer(
      {ReplyTopic(properties), Correlation(properties)},
      std::string(message->topic).substr(sizeof kMethods - 1),
      std::string(static_cast<const char*>(message->payload), static_cast<std::size_t>(message->payloadlen)));
}

void HostileService::Answer(const Address& address, const std::string& method, const std::string& payload) {
  for (int i = 0; i < 3; ++i) SendWrong(address);
  if (method != "silent") {
    Send(address, payload, false);
    Send(address, kWrong, Below(2) == 0);  // once more
    ++wrong_replies_;
  }
  Remember(address, method != "silent");
}

void HostileService::Remember(const Address& address, bool answered) {
  const auto over = std::chrono::steady_clock::now() + (answered ? std::chrono::seconds(0) : kLongerThanACall);
  earlier_.emplace_back(over, address);
  if (earlier_.size() > 100) earlier_.pop_front();
}

const HostileService::Address* HostileService::OneThatIsOver() {
  if (earlier_.empty()) return nullptr;
  const auto& [over, address] = earlier_[Below(earlier_.size())];
  return over <= std::chrono::steady_clock::now() ? &address : nullptr;
}

void HostileService::SendWrong(const Address& address) {
  Send(Mutated(address), kWrong, Below(4) == 0);
  ++wrong_replies_;
}

HostileService::Address HostileService::Mutated(Address address) {
  std::string& bytes = address.correlation;
  switch (Below(8)) {
    case 0:
      if (const Address* over = OneThatIsOver()) return *over;
      bytes.clear();
      break;
    case 1:
      bytes.resize(Below(bytes.size()));
      break;
    case 2:
      bytes.append(1 + Below(100), 'x');
      break;
    case 3:  // perhaps the call that comes next
      bytes[kSequenceEnd - 1] = static_cast<char>(bytes[kSequenceEnd - 1] + 1 + static_cast<int>(Below(3)));
      break;
    case 4:
      for (char& byte : bytes) byte = static_cast<char>(Below(256));
      break;
    default:
      Flip(bytes[Below(bytes.size())], Below(8));
  }
  return address;
}

void HostileService::Send(const Address& address, const std::string& payload, bool as_failure) {
  mosquitto_property* properties = nullptr;
  if (!address.correlation.empty()) {
    mosquitto_property_add_binary(&properties, MQTT_PROP_CORRELATION_DATA, address.correlation.data(),
                                  static_cast<std::uint16_t>(address.correlation.size()));
  }
  if (as_failure) {
    mosquitto_property_add_string_pair(&properties, MQTT_PROP_USER_PROPERTY, "error", "1");
  }
  mosquitto_publish_v5(mosquitto_, nullptr, address.topic.c_str(), static_cast<int>(payload.size()),
                       payload.data(), 0, false, properties);
  mosquitto_property_free_all(&properties);
}

}  // namespace vptz_test
