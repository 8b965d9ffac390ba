#include "payload.h"

#include <cstdint>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include <vptz/vptz.pb.h>

namespace {

using vptzctl::ChangedDevice;
using vptzctl::NumberIn;
using vptzctl::SearchOutcome;
using vptzctl::TextIn;

std::string Bytes(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text += static_cast<char>(byte);
  return text;
}

TEST(PayloadTest, TellsHowASearchEnded) {
  tutorial::VptzResponse response;
  for (const int outcome : {0, 3, 300, -1011, INT32_MAX, INT32_MIN}) {
    response.set_status_code(outcome);
    EXPECT_EQ(SearchOutcome(response.SerializeAsString()), outcome);
  }
}

TEST(PayloadTest, TellsWhichDeviceHasChanged) {
  tutorial::DeviceCommand command;
  command.set_name("Stage");
  command.set_device_id(4294967295U);
  EXPECT_EQ(ChangedDevice(command.SerializeAsString()), 4294967295U);
  command.set_device_id(3);
  EXPECT_EQ(ChangedDevice(command.SerializeAsString()), 3U);
  command.clear_device_id();
  EXPECT_EQ(ChangedDevice(command.SerializeAsString()), std::nullopt);
  EXPECT_EQ(ChangedDevice(""), std::nullopt);
}

TEST(PayloadTest, OtherFieldsAreSkipped) {
  // a fixed64, a text, a fixed32, and then field 1
  const std::string message =
      Bytes({0x11, 1, 2, 3, 4, 5, 6, 7, 8, 0x1a, 2, 'a', 'b', 0x25, 1, 2, 3, 4, 0x08, 5});
  EXPECT_EQ(NumberIn(message, 1), 5u);
  EXPECT_EQ(NumberIn(message, 2), std::nullopt);
  EXPECT_EQ(NumberIn(message, 3), std::nullopt);
}

TEST(PayloadTest, TheLastNumberOfAFieldCounts) { EXPECT_EQ(NumberIn(Bytes({0x08, 1, 0x08, 2}), 1), 2u); }

TEST(PayloadTest, BytesThatAreNoMessageMeanNothing) {
  const std::string begun = Bytes({0x08, 5});
  for (const std::string& rest : {
           Bytes({0x08}),                                // a key without a value
           Bytes({0x80}),                                // half a key
           Bytes({0x0a, 0xff, 0xff, 0xff, 0xff, 0x0f}),  // a text that is longer than the rest
           Bytes({0x0a, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x01}),
           Bytes({0x11, 1, 2, 3}),  // half a fixed64
           Bytes({0x0d, 1}),        // half a fixed32
           Bytes({0x00, 1}),        // field 0
           Bytes({0x0b, 0x0c}),     // a group
           Bytes({0x0e, 1}),        // a type that there is not
           Bytes({0x08, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x02}),  // 65 bits
           Bytes({0x08, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01}),
           Bytes({0x88, 0x80, 0x80, 0x80, 0x80, 0x01, 1}),  // a key of 36 bits
       }) {
    EXPECT_EQ(NumberIn(begun + rest, 1), std::nullopt) << rest.size();
  }
}

TEST(PayloadTest, NumbersThatAreNoDeviceMeanNone) {
  EXPECT_EQ(ChangedDevice(Bytes({0x48, 0})), std::nullopt);
  EXPECT_EQ(ChangedDevice(Bytes({0x48, 0xff, 0xff, 0xff, 0xff, 0x1f})), std::nullopt);
}

TEST(PayloadTest, TextsAreReadToo) {
  tutorial::VptzResponse response;
  response.set_status_code(-1002);
  response.set_nat_address("why");
  EXPECT_EQ(TextIn(response.SerializeAsString(), 2), "why");
  EXPECT_EQ(TextIn(response.SerializeAsString(), 3), std::nullopt);
  EXPECT_EQ(TextIn(response.SerializeAsString() + "\x12", 2), std::nullopt);
}

// Under the sanitizers this also shows that nothing is read beyond the end.
TEST(PayloadTest, AnyBytesAreReadToTheirEnd) {
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string bytes(random() % 24, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    NumberIn(bytes, 1);
    TextIn(bytes, 2);
    ChangedDevice(bytes);
  }
}

}  // namespace
