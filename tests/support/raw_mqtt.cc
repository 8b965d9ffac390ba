#include "support/raw_mqtt.h"

#include <mqtt_protocol.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include "support/wait_until.h"

namespace vptz_test {
namespace {

constexpr std::chrono::seconds kPatience{10};

// Properties in the making, freed with the object.
class PropertyList {
 public:
  explicit PropertyList(const RawMessage& message) {
    if (!message.response_topic.empty()) {
      mosquitto_property_add_string(&list_, MQTT_PROP_RESPONSE_TOPIC, message.response_topic.c_str());
    }
    if (!message.correlation.empty()) {
      mosquitto_property_add_binary(&list_, MQTT_PROP_CORRELATION_DATA, message.correlation.data(),
                                    static_cast<std::uint16_t>(message.correlation.size()));
    }
  }
  ~PropertyList() { mosquitto_property_free_all(&list_); }
  PropertyList(const PropertyList&) = delete;
  PropertyList& operator=(const PropertyList&) = delete;

  const mosquitto_property* get() const { return list_; }

 private:
  mosquitto_property* list_ = nullptr;
};

std::string ResponseTopic(const mosquitto_property* properties) {
  char* text = nullptr;
  mosquitto_property_read_string(properties, MQTT_PROP_RESPONSE_TOPIC, &text, false);
  std::string topic = text == nullptr ? "" : text;
  std::free(text);
  return topic;
}

std::string Correlation(const mosquitto_property* properties) {
  void* bytes = nullptr;
  std::uint16_t length = 0;
  mosquitto_property_read_binary(properties, MQTT_PROP_CORRELATION_DATA, &bytes, &length, false);
  std::string correlation = bytes == nullptr ? "" : std::string(static_cast<const char*>(bytes), length);
  std::free(bytes);
  return correlation;
}

const char* OrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

}  // namespace

RawMqtt::RawMqtt(const std::string& socket_path, const std::string& filter, const RawIdentity& identity)
    : mosquitto_((mosquitto_lib_init(), mosquitto_new(OrNull(identity.client_id), true, this))),
      filter_(filter) {
  mosquitto_int_option(mosquitto_, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
  mosquitto_username_pw_set(mosquitto_, OrNull(identity.user), OrNull(identity.password));
  if (!identity.will_topic.empty()) {
    mosquitto_will_set_v5(mosquitto_, identity.will_topic.c_str(), 0, nullptr, 1, false, nullptr);
  }
  mosquitto_connect_v5_callback_set(mosquitto_, &OnConnect);
  mosquitto_disconnect_v5_callback_set(mosquitto_, &OnDisconnect);
  mosquitto_subscribe_v5_callback_set(mosquitto_, &OnSubscribe);
  mosquitto_message_v5_callback_set(mosquitto_, &OnMessage);
  mosquitto_publish_v5_callback_set(mosquitto_, &OnPublish);
  mosquitto_threaded_set(mosquitto_, true);
  const bool begun = mosquitto_connect(mosquitto_, socket_path.c_str(), 0, 60) == MOSQ_ERR_SUCCESS;
  if (begun) thread_ = std::thread([this] { Run(); });
  std::unique_lock<std::mutex> lock(mutex_);
  const int& awaited = filter_.empty() ? connected_ : subscribed_;
  const bool answered =
      begun && changed_.wait_for(lock, kPatience * Patience(), [&] { return awaited > 0 || refusal_ != 0; });
  if (answered && refusal_ == 0) return;
  const int refusal = refusal_;
  lock.unlock();
  Free();
  throw std::runtime_error("no raw connection to the broker: reason " + std::to_string(refusal));
}

RawMqtt::~RawMqtt() { Free(); }

// Ends with the connection.
void RawMqtt::Run() {
  while (mosquitto_loop(mosquitto_, 100, 1) == MOSQ_ERR_SUCCESS) continue;
}

void RawMqtt::LeaveWithWill() {
  mosquitto_disconnect_v5(mosquitto_, MQTT_RC_DISCONNECT_WITH_WILL_MSG, nullptr);
}

void RawMqtt::Free() {
  mosquitto_disconnect(mosquitto_);
  if (thread_.joinable()) thread_.join();
  mosquitto_destroy(mosquitto_);
  mosquitto_lib_cleanup();
}

RawMessage RawMqtt::WaitFor(const std::string& text, std::size_t count) {
  std::unique_lock<std::mutex> lock(mutex_);
  RawMessage found;
  const bool came = changed_.wait_for(lock, kPatience * Patience(), [&] {
    std::size_t left = count;
    for (const RawMessage& message : messages_) {
      if (message.topic.find(text) == std::string::npos) continue;
      found = message;
      if (--left == 0) return true;
    }
    return false;
  });
  if (!came) throw std::runtime_error("no message with \"" + text + "\" in its topic");
  return found;
}

std::vector<RawMessage> RawMqtt::All() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return messages_;
}

void RawMqtt::Clear() {
  const std::lock_guard<std::mutex> lock(mutex_);
  messages_.clear();
}

void RawMqtt::Subscribe(const std::string& filter) {
  std::unique_lock<std::mutex> lock(mutex_);
  const int before = subscribed_;
  lock.unlock();
  mosquitto_subscribe(mosquitto_, nullptr, filter.c_str(), 0);
  lock.lock();
  if (!changed_.wait_for(lock, kPatience * Patience(), [&] { return subscribed_ > before; })) {
    throw std::runtime_error("the broker does not answer a raw subscription");
  }
}

void RawMqtt::Send(const RawMessage& message, bool retain) {
  std::unique_lock<std::mutex> lock(mutex_);
  const int before = confirmed_;
  lock.unlock();
  const PropertyList properties(message);
  mosquitto_publish_v5(mosquitto_, nullptr, message.topic.c_str(), static_cast<int>(message.payload.size()),
                       message.payload.data(), 1, retain, properties.get());
  lock.lock();
  if (!changed_.wait_for(lock, kPatience * Patience(), [&] { return confirmed_ > before; })) {
    throw std::runtime_error("the broker does not confirm a raw message");
  }
}

void RawMqtt::OnConnect(mosquitto* mosquitto, void* self, int reason, int, const mosquitto_property*) {
  auto* raw = static_cast<RawMqtt*>(self);
  if (reason == 0 && !raw->filter_.empty()) {
    mosquitto_subscribe(mosquitto, nullptr, raw->filter_.c_str(), 0);
  }
  raw->NoteRefusal(reason);
  raw->CountAnswer(raw->connected_);
}

void RawMqtt::OnDisconnect(mosquitto*, void* self, int reason, const mosquitto_property*) {
  static_cast<RawMqtt*>(self)->NoteRefusal(reason);
}

void RawMqtt::OnSubscribe(mosquitto*, void* self, int, int, const int*, const mosquitto_property*) {
  auto* raw = static_cast<RawMqtt*>(self);
  raw->CountAnswer(raw->subscribed_);
}

void RawMqtt::OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                        const mosquitto_property* properties) {
  auto* raw = static_cast<RawMqtt*>(self);
  const std::lock_guard<std::mutex> lock(raw->mutex_);
  raw->messages_.push_back(
      {message->topic,
       std::string(static_cast<const char*>(message->payload), static_cast<std::size_t>(message->payloadlen)),
       ResponseTopic(properties), Correlation(properties)});
  raw->changed_.notify_all();
}

void RawMqtt::OnPublish(mosquitto*, void* self, int, int, const mosquitto_property*) {
  auto* raw = static_cast<RawMqtt*>(self);
  raw->CountAnswer(raw->confirmed_);
}

void RawMqtt::NoteRefusal(int reason) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (connected_ == 0) refusal_ = reason;
  changed_.notify_all();
}

void RawMqtt::CountAnswer(int& answers) {
  const std::lock_guard<std::mutex> lock(mutex_);
  ++answers;
  changed_.notify_all();
}

}  // namespace vptz_test
