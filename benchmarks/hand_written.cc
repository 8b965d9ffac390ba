#include "hand_written.h"

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <poll.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace {

constexpr char kRequestTopic[] = "hand/call/echo";

}  // namespace

struct HandWritten::Message {
  static void OnConnect(mosquitto* instance, void* self, int) {
    auto* one = static_cast<HandWritten*>(self);
    mosquitto_subscribe(instance, nullptr, one->topic_.c_str(), 0);
  }

  static void OnSubscribe(mosquitto*, void* self, int, int, const int*) {
    static_cast<HandWritten*>(self)->subscribed_ = true;
  }

  static void OnMessage(mosquitto*, void* self, const mosquitto_message* message,
                        const mosquitto_property* properties) {
    auto* one = static_cast<HandWritten*>(self);
    char* topic = nullptr;
    void* correlation = nullptr;
    std::uint16_t size = 0;
    mosquitto_property_read_string(properties, MQTT_PROP_RESPONSE_TOPIC, &topic, false);
    mosquitto_property_read_binary(properties, MQTT_PROP_CORRELATION_DATA, &correlation, &size, false);
    one->response_topic_ = topic == nullptr ? "" : topic;
    one->correlation_.assign(static_cast<const char*>(correlation), size);
    one->payload_.assign(static_cast<const char*>(message->payload),
                         static_cast<std::size_t>(message->payloadlen));
    one->received_ = true;
    std::free(topic);
    std::free(correlation);
  }
};

HandWritten::HandWritten(const std::string& socket_path, const std::string& client_id, const std::string& topic,
                         int qos)
    : instance_(mosquitto_new(client_id.c_str(), true, this)), topic_(topic), qos_(qos) {
  mosquitto_int_option(instance_, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
  mosquitto_connect_callback_set(instance_, Message::OnConnect);
  mosquitto_subscribe_callback_set(instance_, Message::OnSubscribe);
  mosquitto_message_v5_callback_set(instance_, Message::OnMessage);
  if (mosquitto_connect(instance_, socket_path.c_str(), 0, 600) != MOSQ_ERR_SUCCESS) {
    throw std::runtime_error("cannot connect to " + socket_path);
  }
  while (!subscribed_) Turn();
}

HandWritten::~HandWritten() { mosquitto_destroy(instance_); }

void HandWritten::Turn() {
  const bool writes = mosquitto_want_write(instance_);
  pollfd polled{mosquitto_socket(instance_), static_cast<short>(writes ? POLLIN | POLLOUT : POLLIN), 0};
  poll(&polled, 1, 2000);
  if (polled.revents & POLLIN) mosquitto_loop_read(instance_, 1);
  if (mosquitto_want_write(instance_)) mosquitto_loop_write(instance_, 1);
}

void HandWritten::Call(const void* request, int length) {
  ++sequence_;
  mosquitto_property* properties = nullptr;
  mosquitto_property_add_string(&properties, MQTT_PROP_RESPONSE_TOPIC, topic_.c_str());
  mosquitto_property_add_binary(&properties, MQTT_PROP_CORRELATION_DATA, &sequence_, sizeof sequence_);
  mosquitto_publish_v5(instance_, nullptr, kRequestTopic, length, request, qos_, false, properties);
  mosquitto_property_free_all(&properties);
  do {
    received_ = false;
    while (!received_) Turn();
  } while (correlation_.compare(0, std::string::npos, reinterpret_cast<const char*>(&sequence_),
                                sizeof sequence_) != 0);
}

void HandWritten::Serve() {
  for (;;) {
    received_ = false;
    while (!received_) Turn();
    mosquitto_property* properties = nullptr;
    mosquitto_property_add_binary(&properties, MQTT_PROP_CORRELATION_DATA, correlation_.data(),
                                  static_cast<std::uint16_t>(correlation_.size()));
    mosquitto_publish_v5(instance_, nullptr, response_topic_.c_str(), static_cast<int>(payload_.size()),
                         payload_.data(), 0, false, properties);
    mosquitto_property_free_all(&properties);
  }
}
