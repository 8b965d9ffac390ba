#include "properties.h"

#include <cerrno>
#include <cstring>

namespace dorv {

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
    const long number = value == nullptr ? 0 : std::strtol(value, nullptr, 10);
    error = number >= 1 && number <= 4095 ? -static_cast<int>(number) : -EPROTO;
  }
  std::free(name);
  std::free(value);
  return error;
}

}  // namespace dorv
