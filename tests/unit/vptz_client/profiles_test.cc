#include <google/protobuf/text_format.h>

#include <cmath>
#include <limits>

#include "vptz_client/command_test.h"

namespace {

using vptz_test::ClientTest;
using vptz_test::CommandCase;
using vptz_test::CommandTest;
using vptz_test::ConnectedClientTest;
using vptz_test::StatusReply;

constexpr double kNotKnown = -9999999.0;

const CommandCase kProfiles[] = {
    {"QueryPtzProfiles", "get_ptz_profiles", "device_command { token: 'ptz0' device_id: 4294967295 }",
     [](VptzClient& client, int timeout) {
       VptzPtzData profile;
       return client.QueryPtzProfiles(4294967295u, "ptz0", &profile, timeout);
     }},
    {"QueryMediaProfiles", "get_media_profiles", "device_command { token: '' device_id: 0 }",
     [](VptzClient& client, int timeout) {
       VptzMediaData profile;
       return client.QueryMediaProfiles(0, "", &profile, timeout);
     }},
};

INSTANTIATE_TEST_SUITE_P(Profiles, CommandTest, testing::ValuesIn(kProfiles), vptz_test::CommandName);

void ExpectValue(const VptzValue& value, int valid, double number) {
  EXPECT_EQ(value.valid, valid);
  EXPECT_EQ(value.value, number);
}

void ExpectRange(const VptzRange& range, int valid, double min, double max) {
  EXPECT_EQ(range.valid, valid);
  EXPECT_EQ(range.min, min);
  EXPECT_EQ(range.max, max);
}

// A record in which every number and flag holds something odd.
VptzAxisData OddAxis() {
  return {true, true, true, {7, 77}, {7, 77}, {7, 77, 777}, {7, 77, 777}, {7, 77, 777}};
}

VptzPtzData OddPtz() {
  VptzPtzData profile;
  profile.id = 12;
  profile.node = "ptz0";
  profile.is_enable = true;
  profile.pan = profile.tilt = profile.zoom = OddAxis();
  profile.preset_count = 34;
  profile.track_mode = 56;
  profile.presets.resize(3);
  return profile;
}

VptzMediaData OddMedia() {
  VptzMediaData profile;
  profile.id = 12;
  profile.node = "main";
  profile.url = "rtsp://198.51.100.4/main";
  profile.nat_url = "rtsp://203.0.113.7/main";
  profile.width = profile.height = profile.frame_rate = profile.bit_rate = {7, 77};
  profile.brightness = profile.contrast = profile.sharpness = {7, 77};
  profile.auto_focus = profile.backlight_mode = {7, 77};
  profile.frame_rate_range = profile.bit_rate_range = {7, 77, 777};
  profile.brightness_range = profile.contrast_range = profile.sharpness_range = {7, 77, 777};
  profile.is_enable = true;
  return profile;
}

class PtzProfilesTest : public ConnectedClientTest {
 protected:
  int Query(VptzPtzData* profile) { return client.QueryPtzProfiles(1, "ptz0", profile); }

  // Answers the query with a PtzInfo in text format.
  int QueryReplying(const std::string& ptz_info, VptzPtzData* profile, int status_code = 0) {
    tutorial::VptzResponse response = StatusReply(status_code);
    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(ptz_info, response.mutable_ptz_info()));
    bus.ReplyWith(response);
    return Query(profile);
  }
};

class MediaProfilesTest : public ConnectedClientTest {
 protected:
  int Query(VptzMediaData* profile) { return client.QueryMediaProfiles(1, "main", profile); }

  int QueryReplying(const std::string& media_info, VptzMediaData* profile, int status_code = 0) {
    tutorial::VptzResponse response = StatusReply(status_code);
    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(media_info, response.mutable_media_info()));
    bus.ReplyWith(response);
    return Query(profile);
  }
};

constexpr char kFullPtz[] =
    "track_mode: 2 "
    "pan { position: 10 speed: 11 position_range { min: 12 max: 13 }"
    "      speed_range { min: 14 max: 15 } spare_range { min: 16 max: 17 } } "
    "tilt { position: 20 speed: 21 position_range { min: 22 max: 23 }"
    "       speed_range { min: 24 max: 25 } spare_range { min: 26 max: 27 } } "
    "zoom { position: 30 speed: 31 position_range { min: 32 max: 33 }"
    "       speed_range { min: 34 max: 35 } spare_range { min: 36 max: 37 } }";

// The axis whose numbers begin at `first` in kFullPtz.
void ExpectAxis(const VptzAxisData& axis, double first) {
  ExpectValue(axis.position, 1, first);
  ExpectValue(axis.speed, 1, first + 1);
  ExpectRange(axis.position_range, 1, first + 2, first + 3);
  ExpectRange(axis.speed_range, 1, first + 4, first + 5);
  ExpectRange(axis.spare_range, 1, first + 6, first + 7);
}

// ---- PTZ profiles ----------------------------------------------------------

TEST_F(PtzProfilesTest, EveryNumberOfTheReplyLandsInItsPlace) {
  VptzPtzData profile;
  EXPECT_EQ(QueryReplying(kFullPtz, &profile), 0);
  EXPECT_EQ(profile.track_mode, 2);
  ExpectAxis(profile.pan, 10);
  ExpectAxis(profile.tilt, 20);
  ExpectAxis(profile.zoom, 30);
}

TEST_F(PtzProfilesTest, WhatTheServiceDoesNotTellKeepsWhatTheRecordHeld) {
  VptzPtzData profile = OddPtz();
  QueryReplying(kFullPtz, &profile);
  EXPECT_EQ(profile.id, 12u);
  EXPECT_EQ(profile.node, "ptz0");
  EXPECT_TRUE(profile.is_enable);
  EXPECT_EQ(profile.preset_count, 34);
  EXPECT_EQ(profile.presets.size(), 3u);
  for (const VptzAxisData* axis : {&profile.pan, &profile.tilt, &profile.zoom}) {
    EXPECT_TRUE(axis->have_absolute_move);
    EXPECT_TRUE(axis->have_continues_move);
    EXPECT_TRUE(axis->have_relative_move);
  }
}

TEST_F(PtzProfilesTest, APanPositionThatIsNotKnownIsZeroAndNotValid) {
  VptzPtzData profile = OddPtz();
  QueryReplying("pan { position: -9999999 speed: -9999999 }", &profile);
  ExpectValue(profile.pan.position, 0, 0.0);
  ExpectValue(profile.pan.speed, 0, 0.0);
}

TEST_F(PtzProfilesTest, ARangeWhoseMinimumIsNotKnownIsNotValidWhateverItsMaximum) {
  VptzPtzData profile = OddPtz();
  QueryReplying("tilt { position_range { min: -9999999 max: 10 } }", &profile);
  ExpectRange(profile.tilt.position_range, 0, 0.0, 0.0);
}

TEST_F(PtzProfilesTest, ARangeWhoseMaximumAloneIsNotKnownIsValid) {
  VptzPtzData profile = OddPtz();
  QueryReplying("zoom { speed_range { min: 0 max: -9999999 } }", &profile);
  ExpectRange(profile.zoom.speed_range, 1, 0.0, kNotKnown);
}

TEST_F(PtzProfilesTest, ATrackModeOfZeroIsCopied) {
  VptzPtzData profile = OddPtz();
  QueryReplying("track_mode: 0", &profile);
  EXPECT_EQ(profile.track_mode, 0);
}

TEST_F(PtzProfilesTest, ATrackModeIsCopiedBitForBit) {
  VptzPtzData profile;
  QueryReplying("track_mode: 4284967297", &profile);  // as a signed number -9999999
  EXPECT_EQ(profile.track_mode, -9999999);
}

TEST_F(PtzProfilesTest, NumbersNextToTheNotKnownOneAndOddOnesAreKnown) {
  const double next = std::nextafter(kNotKnown, 0.0);
  tutorial::VptzResponse response;
  tutorial::PtzInfo& info = *response.mutable_ptz_info();
  info.mutable_pan()->set_position(next);
  info.mutable_pan()->set_speed(std::numeric_limits<double>::quiet_NaN());
  info.mutable_tilt()->set_position(-std::numeric_limits<double>::infinity());
  info.mutable_tilt()->mutable_position_range()->set_min(std::numeric_limits<double>::quiet_NaN());
  bus.ReplyWith(response);
  VptzPtzData profile;
  EXPECT_EQ(Query(&profile), 0);
  ExpectValue(profile.pan.position, 1, next);
  EXPECT_EQ(profile.pan.speed.valid, 1);
  EXPECT_TRUE(std::isnan(profile.pan.speed.value));
  ExpectValue(profile.tilt.position, 1, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(profile.tilt.position_range.valid, 1);
  EXPECT_TRUE(std::isnan(profile.tilt.position_range.min));
}

void ExpectZeroAxis(const VptzAxisData& axis) {
  ExpectValue(axis.position, 1, 0.0);
  ExpectValue(axis.speed, 1, 0.0);
  ExpectRange(axis.position_range, 1, 0.0, 0.0);
  ExpectRange(axis.speed_range, 1, 0.0, 0.0);
  ExpectRange(axis.spare_range, 1, 0.0, 0.0);
}

TEST_F(PtzProfilesTest, AReplyWithoutThePtzPartReadsAsKnownZeros) {
  for (const std::string& bytes : {StatusReply(0).SerializeAsString(), std::string(), std::string("\xff")}) {
    bus.ReplyWithBytes(bytes);
    VptzPtzData profile = OddPtz();
    EXPECT_EQ(Query(&profile), 0);
    EXPECT_EQ(profile.track_mode, 0);
    ExpectZeroAxis(profile.pan);
    ExpectZeroAxis(profile.tilt);
    ExpectZeroAxis(profile.zoom);
  }
}

TEST_F(PtzProfilesTest, APositiveStatusIsASuccessAndComesBack) {
  VptzPtzData profile;
  EXPECT_EQ(QueryReplying("pan { position: 5 }", &profile, 3), 3);
  ExpectValue(profile.pan.position, 1, 5.0);
}

TEST_F(PtzProfilesTest, ARefusalLeavesTheRecordAlone) {
  VptzPtzData profile = OddPtz();
  EXPECT_EQ(QueryReplying(kFullPtz, &profile, -1004), -1004);
  ExpectValue(profile.pan.position, 7, 77);
  EXPECT_EQ(profile.track_mode, 56);
}

TEST_F(PtzProfilesTest, AFailedCallLeavesTheRecordAlone) {
  VptzPtzData profile = OddPtz();
  bus.FailCalls(-5);
  EXPECT_EQ(Query(&profile), -5);
  ExpectValue(profile.pan.position, 7, 77);
  EXPECT_EQ(profile.track_mode, 56);
}

TEST_F(PtzProfilesTest, ARefusalOrFailureMayComeWithANullRecord) {
  bus.ReplyWith(StatusReply(-1004));
  EXPECT_EQ(Query(nullptr), -1004);
  bus.FailCalls(-5);
  EXPECT_EQ(Query(nullptr), -5);
}

TEST_F(PtzProfilesTest, ThreeFullAxesFitTheReplyBuffer) {
  tutorial::VptzResponse response = StatusReply(std::numeric_limits<int>::min());
  ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(kFullPtz, response.mutable_ptz_info()));
  response.mutable_ptz_info()->set_track_mode(4294967295u);
  EXPECT_LE(response.ByteSizeLong(), 512u);
}

using UnconnectedProfilesTest = ClientTest;

TEST_F(UnconnectedProfilesTest, WithoutABusClientTheRecordsStayAlone) {
  VptzClient client;
  VptzPtzData ptz = OddPtz();
  VptzMediaData media = OddMedia();
  EXPECT_EQ(client.QueryPtzProfiles(1, "ptz0", &ptz), -1);
  EXPECT_EQ(client.QueryMediaProfiles(1, "main", &media), -1);
  ExpectValue(ptz.pan.position, 7, 77);
  ExpectValue(media.width, 7, 77);
}

// ---- media profiles --------------------------------------------------------

constexpr char kFullMedia[] =
    "video_encoder { width: 1920 height: 1080 frame_rate: 25 bit_rate: 4096 } "
    "image_settings { brightness: 1 contrast: 2 sharpness: 3 auto_focus: 4 backlight_mode: 5 }";

constexpr char kUnknownMedia[] =
    "video_encoder { width: -9999999 height: -9999999 frame_rate: -9999999 bit_rate: -9999999 } "
    "image_settings { brightness: -9999999 contrast: -9999999 sharpness: -9999999"
    "                 auto_focus: -9999999 backlight_mode: -9999999 }";

void ExpectOkFlags(const VptzMediaData& profile, bool expected) {
  EXPECT_EQ(profile.width_ok, expected);
  EXPECT_EQ(profile.height_ok, expected);
  EXPECT_EQ(profile.frame_rate_ok, expected);
  EXPECT_EQ(profile.bit_rate_ok, expected);
  EXPECT_EQ(profile.brightness_ok, expected);
  EXPECT_EQ(profile.contrast_ok, expected);
  EXPECT_EQ(profile.sharpness_ok, expected);
}

void ExpectNothingKnown(const VptzMediaData& profile) {
  ExpectValue(profile.width, 0, 0.0);
  ExpectValue(profile.height, 0, 0.0);
  ExpectValue(profile.frame_rate, 0, 0.0);
  ExpectValue(profile.bit_rate, 0, 0.0);
  ExpectValue(profile.brightness, 0, 0.0);
  ExpectValue(profile.contrast, 0, 0.0);
  ExpectValue(profile.sharpness, 0, 0.0);
  ExpectValue(profile.auto_focus, 0, 0.0);
  ExpectValue(profile.backlight_mode, 0, 0.0);
}

TEST_F(MediaProfilesTest, EveryNumberOfTheReplyLandsInItsPlace) {
  VptzMediaData profile;
  EXPECT_EQ(QueryReplying(kFullMedia, &profile), 0);
  ExpectValue(profile.width, 1, 1920);
  ExpectValue(profile.height, 1, 1080);
  ExpectValue(profile.frame_rate, 1, 25);
  ExpectValue(profile.bit_rate, 1, 4096);
  ExpectValue(profile.brightness, 1, 1);
  ExpectValue(profile.contrast, 1, 2);
  ExpectValue(profile.sharpness, 1, 3);
  ExpectValue(profile.auto_focus, 1, 4);
  ExpectValue(profile.backlight_mode, 1, 5);
  ExpectOkFlags(profile, true);
}

TEST_F(MediaProfilesTest, WhatTheServiceDoesNotTellKeepsWhatTheRecordHeld) {
  VptzMediaData profile = OddMedia();
  QueryReplying(kFullMedia, &profile);
  EXPECT_EQ(profile.id, 12u);
  EXPECT_EQ(profile.node, "main");
  EXPECT_EQ(profile.url, "rtsp://198.51.100.4/main");
  EXPECT_EQ(profile.nat_url, "rtsp://203.0.113.7/main");
  EXPECT_TRUE(profile.is_enable);
  for (const VptzRange* range : {&profile.frame_rate_range, &profile.bit_rate_range, &profile.brightness_range,
                                 &profile.contrast_range, &profile.sharpness_range}) {
    ExpectRange(*range, 7, 77, 777);
  }
}

TEST_F(MediaProfilesTest, BrightnessThatBecomesUnknownIsZeroAndNotValidButStaysOk) {
  VptzMediaData profile;
  QueryReplying("image_settings { brightness: 50 }", &profile);
  ExpectValue(profile.brightness, 1, 50);
  EXPECT_TRUE(profile.brightness_ok);
  QueryReplying("image_settings { brightness: -9999999 }", &profile);
  ExpectValue(profile.brightness, 0, 0.0);
  EXPECT_TRUE(profile.brightness_ok);
}

TEST_F(MediaProfilesTest, NoOkFlagIsEverCleared) {
  VptzMediaData profile;
  QueryReplying(kFullMedia, &profile);
  QueryReplying(kUnknownMedia, &profile);
  ExpectNothingKnown(profile);
  ExpectOkFlags(profile, true);
}

TEST_F(MediaProfilesTest, UnknownValuesSetNoOkFlag) {
  VptzMediaData profile = OddMedia();
  QueryReplying(kUnknownMedia, &profile);
  ExpectNothingKnown(profile);
  ExpectOkFlags(profile, false);
}

TEST_F(MediaProfilesTest, AReplyWithoutTheMediaPartReadsAsKnownZeros) {
  bus.ReplyWithBytes("");
  VptzMediaData profile = OddMedia();
  EXPECT_EQ(Query(&profile), 0);
  ExpectValue(profile.width, 1, 0.0);
  ExpectValue(profile.backlight_mode, 1, 0.0);
  ExpectOkFlags(profile, true);
}

TEST_F(MediaProfilesTest, APositiveStatusIsASuccessAndComesBack) {
  VptzMediaData profile;
  EXPECT_EQ(QueryReplying(kFullMedia, &profile, 3), 3);
  ExpectOkFlags(profile, true);
}

TEST_F(MediaProfilesTest, ARefusalOrFailureLeavesTheRecordAlone) {
  VptzMediaData profile = OddMedia();
  EXPECT_EQ(QueryReplying(kFullMedia, &profile, -1004), -1004);
  ExpectValue(profile.width, 7, 77);
  bus.FailCalls(-5);
  EXPECT_EQ(Query(&profile), -5);
  ExpectValue(profile.width, 7, 77);
  ExpectOkFlags(profile, false);
}

}  // namespace
