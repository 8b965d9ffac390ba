#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include <vptz/vptz_data.h>

namespace {

VptzPresetData Preset(std::uint32_t id, const std::string& name) {
  VptzPresetData preset;
  preset.preset_id = id;
  preset.token = "token " + std::to_string(id);
  preset.name = name;
  return preset;
}

TEST(VptzDataTest, CopyingAPtzRecordCopiesItsWholePresetList) {
  auto original = std::make_unique<VptzPtzData>();
  original->presets = {Preset(1, "door"), Preset(2, "a name that needs memory of its own")};
  original->zoom.spare_range = {1, 2.0, 3.0};
  const VptzPtzData copy = *original;
  original->presets[0].name = "changed";
  original.reset();  // takes its own presets with it, not those of the copy
  ASSERT_EQ(copy.presets.size(), 2u);
  EXPECT_EQ(copy.presets[0].name, "door");
  EXPECT_EQ(copy.presets[1].name, "a name that needs memory of its own");
  EXPECT_EQ(copy.presets[1].token, "token 2");
  EXPECT_EQ(copy.zoom.spare_range.max, 3.0);
}

TEST(VptzDataTest, AFreshRecordHoldsEmptyTextsAndNoPresets) {
  const VptzDeviceData device;
  EXPECT_EQ(device.device_type + device.service_uri + device.address + device.http_uri +
                device.nat_service_uri + device.nat_http_uri + device.mac + device.uuid + device.authorization +
                device.protocol + device.host_name + device.manufacture + device.model_name +
                device.firmware_version,
            "");
  const VptzPtzData ptz;
  EXPECT_EQ(ptz.node, "");
  EXPECT_TRUE(ptz.presets.empty());
  const VptzMediaData media;
  EXPECT_EQ(media.node + media.url + media.nat_url, "");
  const VptzPresetData preset;
  EXPECT_EQ(preset.token + preset.name, "");
  const VptzNATData nat;
  EXPECT_EQ(nat.text1 + nat.text2 + nat.text3 + nat.text4 + nat.text5 + nat.text6, "");
}

TEST(VptzDataTest, InAFreshRecordNothingCountsAsKnown) {
  const VptzPtzData ptz;
  for (const VptzAxisData* axis : {&ptz.pan, &ptz.tilt, &ptz.zoom}) {
    EXPECT_EQ(axis->position.valid, 0);
    EXPECT_EQ(axis->speed.valid, 0);
    EXPECT_EQ(axis->position_range.valid, 0);
    EXPECT_EQ(axis->speed_range.valid, 0);
    EXPECT_EQ(axis->spare_range.valid, 0);
  }
  const VptzMediaData media;
  EXPECT_EQ(media.width.valid, 0);
  EXPECT_FALSE(media.width_ok);
  EXPECT_EQ(media.brightness.valid, 0);
  EXPECT_FALSE(media.brightness_ok);
}

TEST(VptzDataTest, NatTypesHaveTheNumbersOfTheService) {
  EXPECT_EQ(NAT_ALL, 0);
  EXPECT_EQ(NAT_MEDIA, 1);
  EXPECT_EQ(NAT_SERVICE, 2);
  EXPECT_EQ(NAT_HTTP, 3);
  static_assert(sizeof(NATType) == 4, "travels as 32 bits");
  static_assert(std::is_same<decltype(VptzValue::valid), std::int32_t>::value, "a flag of 32 bits");
}

}  // namespace
