#include "properties.h"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace dorv {

const char* MissingFeature(const mosquitto_property* properties) {
  constexpr struct {
    int property;  // 0 tells that it is missing; without the property it is there
    const char* name;
  } kFeatures[] = {{MQTT_PROP_MAXIMUM_QOS, "QoS 1"},
                   {MQTT_PROP_RETAIN_AVAILABLE, "retained messages"},
                   {MQTT_PROP_WILDCARD_SUB_AVAILABLE, "subscriptions with wildcards"},
                   {MQTT_PROP_SUBSCRIPTION_ID_AVAILABLE, "subscription identifiers"}};
  for (const auto& feature : kFeatures) {
    std::uint8_t offered = 1;
    mosquitto_property_read_byte(properties, feature.property, &offered, false);
    if (offered == 0) {
      return feature.name;
    }
  }
  return nullptr;
}

namespace {

// Decimal text, nothing before or behind it; 0 for any other.
int NumberIn(const char* text) {
  int number = 0;
  const char* const end = text + std::strlen(text);
  const auto [rest, error] = std::from_chars(text, end, number);
  return error == std::errc() && rest == end ? number : 0;
}

}  // namespace

int ReadError(const mosquitto_property* properties) {
  char* name = nullptr;
  char* value = nullptr;
  if (mosquitto_property_read_string_pair(properties, MQTT_PROP_USER_PROPERTY, &name, &value, false) ==
      nullptr) {
    // There is none, or memory ran out. Without texts to copy it only tells which.
    const bool none = mosquitto_property_read_string_pair(properties, MQTT_PROP_USER_PROPERTY, nullptr, nullptr,
                                                          false) == nullptr;
    return none ? 0 : -ENOMEM;
  }
  int error = 0;
  if (name != nullptr && std::strcmp(name, kErrorProperty) == 0) {
    const int number = value == nullptr ? 0 : NumberIn(value);
    error = number >= 1 && number <= 4095 ? -number : -EPROTO;
  }
  std::free(name);
  std::free(value);
  return error;
}

}  // namespace dorv
