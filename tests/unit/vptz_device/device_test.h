#ifndef VPTZ_TESTS_UNIT_VPTZ_DEVICE_DEVICE_TEST_H
#define VPTZ_TESTS_UNIT_VPTZ_DEVICE_DEVICE_TEST_H

#include <cstdint>
#include <string>

#include <vptz/vptz_device.h>

#include "vptz_client/command_test.h"
#include "vptz_device/rows.h"

namespace vptz_test {

// A connected client and handles of it.
class DeviceTest : public ConnectedClientTest {
 protected:
  CVptzDevice Handle(std::uint32_t id) {
    CVptzDevice device;
    device.SetVptzClient(&client);
    device.id = id;
    return device;
  }
};

// A handle with two PTZ profiles and two media profiles. The database knows
// these, and the media source and preset of the id that no profile has, so that
// commands to it are sent.
class TwoProfilesTest : public DeviceTest {
 protected:
  TwoProfilesTest() {
    device = Handle(7);
    device.ptz_list.resize(2);
    device.ptz_list[0].id = 31;
    device.ptz_list[1].id = 32;
    device.media_list.resize(2);
    device.media_list[0].id = 41;
    device.media_list[1].id = 42;
    std::string rows;
    for (const char* id : {"41", "42", "4294967295"}) rows += Insert("media", {{"id", id}});
    for (const char* ptz : {"31", "32", "4294967295"}) rows += InsertPreset(ptz, "5", "token5");
    Store(rows);
  }

  static std::string InsertPreset(const std::string& ptz, const std::string& preset_id,
                                  const std::string& token) {
    return Insert("preset",
                  {{"ptz", ptz}, {"preset_id", preset_id}, {"token", "'" + token + "'"}, {"name", "'door'"}});
  }

  CVptzDevice device;
};

// Handles of device 7.
class LoadingTest : public DeviceTest {
 protected:
  LoadingTest() { device = Handle(7); }

  // Has every query for an address answered with "out ADDRESS".
  void AnswerQueries(int status_code = 0) {
    bus.on_call = [this, status_code](const BusCall& call) {
      bus.ReplyWith(AddressReply("out " + CommandOf(call).nat_command().address(), status_code));
    };
  }

  CVptzDevice device;
};

inline void ExpectValue(const VptzValue& value, int valid, double number) {
  EXPECT_EQ(value.valid, valid);
  EXPECT_EQ(value.value, number);
}

inline void ExpectRange(const VptzRange& range, int valid, double min, double max) {
  EXPECT_EQ(range.valid, valid);
  EXPECT_EQ(range.min, min);
  EXPECT_EQ(range.max, max);
}

}  // namespace vptz_test

#endif
