// What the bundled bus reads from a message's properties.
#include "properties.h"

#include <gtest/gtest.h>
#include <mosquitto.h>
#include <mqtt_protocol.h>

#include <cerrno>
#include <string>

namespace {

// What a reply whose first user property is this pair fails with.
int ErrorOf(const std::string& name, const std::string& value) {
  mosquitto_property* properties = nullptr;
  EXPECT_EQ(
      mosquitto_property_add_string_pair(&properties, MQTT_PROP_USER_PROPERTY, name.c_str(), value.c_str()),
      MOSQ_ERR_SUCCESS);
  const int error = dorv::ReadError(properties);
  mosquitto_property_free_all(&properties);
  return error;
}

TEST(BusErrorProperty, IsAnErrnoValueInDecimalText) {
  EXPECT_EQ(ErrorOf("error", "1"), -1);
  EXPECT_EQ(ErrorOf("error", "16"), -EBUSY);
  EXPECT_EQ(ErrorOf("error", "4095"), -4095);
  EXPECT_EQ(ErrorOf("other", "16"), 0);
  EXPECT_EQ(dorv::ReadError(nullptr), 0);
}

TEST(BusErrorProperty, OfAnyOtherTextIsAProtocolError) {
  for (const char* wrong : {"", "0", "-16", "4096", "12abc", "12 ", " 12", "+12", "0x10", "1e2", "abc", "12.0",
                            "99999999999999999999"}) {
    EXPECT_EQ(ErrorOf("error", wrong), -EPROTO) << wrong;
  }
}

}  // namespace
