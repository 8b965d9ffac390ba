// MQTT properties in a holder of their own.
#ifndef DORV_BUS_PROPERTIES_H
#define DORV_BUS_PROPERTIES_H

#include <mosquitto.h>
#include <mqtt_protocol.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "request_identity.h"

namespace dorv {

// The user property of a reply that holds a failure instead of bytes: the
// errno value as a decimal number.
constexpr char kErrorProperty[] = "error";

class Properties {
 public:
  Properties() = default;
  ~Properties() { mosquitto_property_free_all(&list_); }
  Properties(const Properties&) = delete;
  Properties& operator=(const Properties&) = delete;

  bool AddCorrelation(const RequestIdentity::Bytes& bytes) {
    return mosquitto_property_add_binary(&list_, MQTT_PROP_CORRELATION_DATA, bytes.data(),
                                         static_cast<std::uint16_t>(bytes.size())) == MOSQ_ERR_SUCCESS;
  }
  bool AddResponseTopic(const char* topic) {
    return mosquitto_property_add_string(&list_, MQTT_PROP_RESPONSE_TOPIC, topic) == MOSQ_ERR_SUCCESS;
  }
  bool AddError(int error) {
    return mosquitto_property_add_string_pair(&list_, MQTT_PROP_USER_PROPERTY, kErrorProperty,
                                              std::to_string(-error).c_str()) == MOSQ_ERR_SUCCESS;
  }

  const mosquitto_property* get() const { return list_; }

 private:
  mosquitto_property* list_ = nullptr;
};

inline std::optional<RequestIdentity> ReadIdentity(const mosquitto_property* properties) {
  void* data = nullptr;
  std::uint16_t size = 0;
  mosquitto_property_read_binary(properties, MQTT_PROP_CORRELATION_DATA, &data, &size, false);
  const auto identity = RequestIdentity::Decode(data, size);
  std::free(data);
  return identity;
}

inline std::string ReadResponseTopic(const mosquitto_property* properties) {
  char* text = nullptr;
  mosquitto_property_read_string(properties, MQTT_PROP_RESPONSE_TOPIC, &text, false);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  return text == nullptr ? "" : text;
}

// What the bus needs and a broker that answers a connection with these
// properties does not offer; null when it offers everything.
const char* MissingFeature(const mosquitto_property* properties);

// The negative errno value that a reply holds, 0 when it holds bytes.
int ReadError(const mosquitto_property* properties);

}  // namespace dorv

#endif
