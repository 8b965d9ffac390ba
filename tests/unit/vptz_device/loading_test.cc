#include <gmock/gmock.h>

#include <vptz/model/vptzmodel.h>

#include <cerrno>

#include "vptz_device/device_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vptz_test::BusCall;
using vptz_test::ExpectRange;
using vptz_test::ExpectValue;
using vptz_test::Insert;
using vptz_test::InsertMediaParameter;
using vptz_test::LoadingTest;
using vptz_test::StatusReply;

// ---- the device's record ---------------------------------------------------

std::string FullDevice(const std::string& service_uri) {
  return Insert("device_type", {{"id", "2"}, {"name", "'dome'"}}) +
         Insert("protocol", {{"id", "3"}, {"name", "'NDIHX'"}}) +
         Insert("device", {{"id", "7"},
                           {"device_type", "2"},
                           {"service_uri", "'" + service_uri + "'"},
                           {"address", "'address'"},
                           {"http_uri", "'http://web'"},
                           {"mac", "'mac'"},
                           {"uuid", "'uuid'"},
                           {"authorization", "'authorization'"},
                           {"authorized", "1"},
                           {"is_alive", "0"},
                           {"protocol", "3"},
                           {"host_name", "'host_name'"},
                           {"manufacture", "'manufacture'"},
                           {"model_name", "'model_name'"},
                           {"firmware_version", "'firmware_version'"},
                           {"deletable", "1"},
                           {"is_setting_applied", "0"},
                           {"tracking", "1"}});
}

TEST_F(LoadingTest, EveryColumnOfTheDeviceLandsInItsField) {
  Store(FullDevice("rs232://ttyS1"));
  EXPECT_EQ(device.LoadDeviceInfo(), 0);
  EXPECT_EQ(device.id, 7u);
  EXPECT_EQ(device.device_type, "dome");
  EXPECT_EQ(device.service_uri, "rs232://ttyS1");
  EXPECT_EQ(device.address, "address");
  EXPECT_EQ(device.http_uri, "http://web");
  EXPECT_EQ(device.mac, "mac");
  EXPECT_EQ(device.uuid, "uuid");
  EXPECT_EQ(device.authorization, "authorization");
  EXPECT_TRUE(device.authorized);
  EXPECT_FALSE(device.is_alive);
  EXPECT_EQ(device.protocol, "NDIHX");
  EXPECT_EQ(device.host_name, "host_name");
  EXPECT_EQ(device.manufacture, "manufacture");
  EXPECT_EQ(device.model_name, "model_name");
  EXPECT_EQ(device.firmware_version, "firmware_version");
  EXPECT_TRUE(device.deletable);
  EXPECT_FALSE(device.is_setting_applied);
  EXPECT_TRUE(device.tracking);
}

TEST_F(LoadingTest, FlagsThatAreSetInOneRowAndNotInAnotherFollowTheRow) {
  Store(Insert("device", {{"id", "7"}, {"is_alive", "1"}, {"is_setting_applied", "1"}}));
  device.authorized = device.deletable = device.tracking = true;
  EXPECT_EQ(device.LoadDeviceInfo(), 0);
  EXPECT_TRUE(device.is_alive);
  EXPECT_TRUE(device.is_setting_applied);
  EXPECT_FALSE(device.authorized || device.deletable || device.tracking);
}

TEST_F(LoadingTest, ADeviceThatIsNotStoredLeavesTheRecordAloneAndSendsNothing) {
  Store(Insert("device", {{"id", "8"}}));
  device.service_uri = "http://kept";
  device.device_type = "kept";
  device.nat_http_uri = "kept";
  EXPECT_EQ(device.LoadDeviceInfo(), -1);
  EXPECT_EQ(device.id, 7u);
  EXPECT_EQ(device.service_uri, "http://kept");
  EXPECT_EQ(device.device_type, "kept");
  EXPECT_EQ(device.nat_http_uri, "kept");
  EXPECT_THAT(bus.calls, IsEmpty());
}

TEST_F(LoadingTest, WithoutADatabaseTheRecordIsLeftAlone) {
  Store(FullDevice("http://s"));
  VptzModel::Instance().Release();
  EXPECT_EQ(device.LoadDeviceInfo(), -1);
  EXPECT_EQ(device.LoadPtzInfo(), 0);
  EXPECT_EQ(device.LoadMediaInfo(), 0);
  EXPECT_EQ(device.mac, "");
  EXPECT_THAT(bus.calls, IsEmpty());
}

TEST_F(LoadingTest, AWebServiceIsAskedForAndThenTheWebPageWithTheConfiguredTimeout) {
  Store(FullDevice("http://service"));
  AnswerQueries();
  EXPECT_EQ(device.LoadDeviceInfo(), 0);
  EXPECT_THAT(Sent(), ElementsAre("query_nat_uri 7 2 http://service", "query_nat_uri 7 3 http://web"));
  EXPECT_EQ(bus.calls.at(0).timeout, 4);
  EXPECT_EQ(device.nat_service_uri, "out http://service");
  EXPECT_EQ(device.nat_http_uri, "out http://web");
}

TEST_F(LoadingTest, HttpAnywhereInTheServiceAddressMakesItAWebService) {
  Store(FullDevice("over https or http"));
  device.LoadDeviceInfo();
  EXPECT_EQ(Sent().size(), 2u);
}

TEST_F(LoadingTest, WithoutHttpInItsServiceAddressNothingIsAskedAndOlderAddressesStay) {
  for (const char* const uri : {"rs232://ttyS1", "HTTP://upper", "htt p", ""}) {
    Store("DELETE FROM device; DELETE FROM device_type; DELETE FROM protocol;" + FullDevice(uri));
    device.nat_service_uri = "older";
    device.nat_http_uri = "older still";
    EXPECT_EQ(device.LoadDeviceInfo(), 0);
    EXPECT_EQ(device.nat_service_uri, "older");
    EXPECT_EQ(device.nat_http_uri, "older still");
  }
  EXPECT_THAT(bus.calls, IsEmpty());
}

TEST_F(LoadingTest, HowTheQueriesEndDoesNotChangeTheResultOfLoadDeviceInfo) {
  Store(FullDevice("http://service"));
  device.nat_service_uri = device.nat_http_uri = "older";
  bus.FailCalls(-ESRCH);
  EXPECT_EQ(device.LoadDeviceInfo(), 0);
  EXPECT_EQ(bus.calls.size(), 2u);
  EXPECT_EQ(device.nat_service_uri, "http://service");
  EXPECT_EQ(device.nat_http_uri, "http://web");
  AnswerQueries(-1004);
  EXPECT_EQ(device.LoadDeviceInfo(), 0);
  EXPECT_EQ(device.nat_http_uri, "out http://web");
}

// ---- media profiles --------------------------------------------------------

std::string FullMedia() {
  std::string rows = Insert(
      "media", {{"id", "41"}, {"device", "7"}, {"node", "'main'"}, {"url", "'rtsp://in'"}, {"is_enable", "1"}});
  int first = 10;
  for (const char* name : {"width", "height", "frame_rate", "bit_rate", "brightness", "contrast", "sharpness",
                           "auto_focus", "backlight_mode"}) {
    rows += InsertMediaParameter(
        41, name, std::to_string(first + 1) + "," + std::to_string(first) + "," + std::to_string(first + 2));
    first += 10;
  }
  return rows;
}

TEST_F(LoadingTest, EveryMediaParameterLandsInItsPlace) {
  Store(FullMedia());
  EXPECT_EQ(device.LoadMediaInfo(), 0);
  ASSERT_EQ(device.media_list.size(), 1u);
  const VptzMediaData& media = device.media_list[0];
  EXPECT_EQ(media.id, 41u);
  EXPECT_EQ(media.node, "main");
  EXPECT_EQ(media.url, "rtsp://in");
  EXPECT_TRUE(media.is_enable);
  ExpectValue(media.width, 1, 11);
  ExpectValue(media.height, 1, 21);
  ExpectValue(media.frame_rate, 1, 31);
  ExpectRange(media.frame_rate_range, 1, 30, 32);
  ExpectValue(media.bit_rate, 1, 41);
  ExpectRange(media.bit_rate_range, 1, 40, 42);
  ExpectValue(media.brightness, 1, 51);
  ExpectRange(media.brightness_range, 1, 50, 52);
  ExpectValue(media.contrast, 1, 61);
  ExpectRange(media.contrast_range, 1, 60, 62);
  ExpectValue(media.sharpness, 1, 71);
  ExpectRange(media.sharpness_range, 1, 70, 72);
  ExpectValue(media.auto_focus, 1, 81);
  ExpectValue(media.backlight_mode, 1, 91);
  EXPECT_TRUE(media.width_ok && media.height_ok && media.frame_rate_ok && media.bit_rate_ok &&
              media.brightness_ok && media.contrast_ok && media.sharpness_ok);
}

// A profile in which every number and flag holds something odd.
VptzMediaData OddMedia(std::uint32_t id) {
  VptzMediaData media;
  media.id = id;
  media.width = media.height = media.frame_rate = media.bit_rate = {7, 77};
  media.brightness = media.contrast = media.sharpness = media.auto_focus = media.backlight_mode = {7, 77};
  media.frame_rate_range = media.bit_rate_range = {7, 77, 777};
  media.brightness_range = media.contrast_range = media.sharpness_range = {7, 77, 777};
  media.width_ok = media.height_ok = media.frame_rate_ok = media.bit_rate_ok = true;
  media.brightness_ok = media.contrast_ok = media.sharpness_ok = true;
  return media;
}

TEST_F(LoadingTest, MissingMediaParametersClearTheFlagsAndKeepTheNumbers) {
  Store(Insert("media", {{"id", "41"}, {"device", "7"}}) + InsertMediaParameter(42, "width", "1, 1, 1") +
        InsertMediaParameter(41, "Width", "1, 1, 1"));
  device.media_list = {OddMedia(41)};
  device.LoadMediaInfo();
  ASSERT_EQ(device.media_list.size(), 1u);
  const VptzMediaData& media = device.media_list[0];
  for (const VptzValue* value :
       {&media.width, &media.height, &media.frame_rate, &media.bit_rate, &media.brightness, &media.contrast,
        &media.sharpness, &media.auto_focus, &media.backlight_mode}) {
    ExpectValue(*value, 0, 77);
  }
  for (const VptzRange* range : {&media.frame_rate_range, &media.bit_rate_range, &media.brightness_range,
                                 &media.contrast_range, &media.sharpness_range}) {
    ExpectRange(*range, 0, 77, 777);
  }
  EXPECT_FALSE(media.width_ok || media.height_ok || media.frame_rate_ok || media.bit_rate_ok ||
               media.brightness_ok || media.contrast_ok || media.sharpness_ok);
}

TEST_F(LoadingTest, OfTwoParametersOfOneNameTheFirstRowCounts) {
  Store(Insert("media", {{"id", "41"}, {"device", "7"}}) + InsertMediaParameter(41, "width", "1, 0, 2") +
        InsertMediaParameter(41, "width", "5, 0, 9"));
  device.LoadMediaInfo();
  ExpectValue(device.media_list.at(0).width, 1, 1);
}

TEST_F(LoadingTest, ADeviceWithoutMediaReturnsZeroAndKeepsItsList) {
  Store(Insert("media", {{"id", "41"}, {"device", "8"}}));
  device.media_list = {OddMedia(41)};
  bus.FailCalls(-ESRCH);
  EXPECT_EQ(device.LoadMediaInfo(), 0);
  ASSERT_EQ(device.media_list.size(), 1u);
  EXPECT_TRUE(device.media_list[0].width_ok);
  EXPECT_THAT(bus.calls, IsEmpty());
}

std::string TwoMedia() {
  return Insert("media", {{"id", "42"}, {"device", "7"}, {"url", "'b'"}}) +
         Insert("media", {{"id", "41"}, {"device", "7"}, {"url", "'a'"}});
}

TEST_F(LoadingTest, EachStreamIsAskedForInTheOrderOfItsRow) {
  Store(TwoMedia());
  AnswerQueries();
  device.LoadMediaInfo();
  EXPECT_THAT(Sent(), ElementsAre("query_nat_uri 7 1 a", "query_nat_uri 7 1 b"));
  EXPECT_EQ(bus.calls.at(0).timeout, 4);
  EXPECT_EQ(device.media_list.at(0).nat_url, "out a");
  EXPECT_EQ(device.media_list.at(1).nat_url, "out b");
}

TEST_F(LoadingTest, TheResultOfLoadMediaInfoIsThatOfTheLastQuery) {
  Store(TwoMedia());
  bus.on_call = [this](const BusCall& call) {
    bus.ReplyWith(StatusReply(CommandOf(call).nat_command().address() == "a" ? -1004 : 5));
  };
  EXPECT_EQ(device.LoadMediaInfo(), 5);
  bus.on_call = nullptr;
  bus.FailCalls(-ESRCH);
  EXPECT_EQ(device.LoadMediaInfo(), -ESRCH);
  EXPECT_EQ(device.media_list.at(1).nat_url, "b");
}

TEST_F(LoadingTest, AReloadChangesMediaProfilesInPlaceAppendsNewOnesAndRemovesNone) {
  device.media_list = {OddMedia(99), OddMedia(42)};
  Store(TwoMedia());
  device.LoadMediaInfo();
  device.LoadMediaInfo();
  ASSERT_EQ(device.media_list.size(), 3u);
  EXPECT_EQ(device.media_list[0].id, 99u);
  EXPECT_TRUE(device.media_list[0].width_ok);
  EXPECT_EQ(device.media_list[1].id, 42u);
  EXPECT_EQ(device.media_list[1].url, "b");
  EXPECT_EQ(device.media_list[2].id, 41u);
}

// ---- without a client ------------------------------------------------------

std::string OnePtz() {
  return Insert("ptz", {{"id", "31"}, {"device", "7"}}) + Insert("preset", {{"ptz", "31"}});
}

TEST_F(LoadingTest, WithoutAClientTheRowsAreLoadedAndNothingIsAsked) {
  Store(FullDevice("http://service") + FullMedia() + OnePtz());
  device.SetVptzClient(nullptr);
  EXPECT_EQ(device.LoadDeviceInfo(), 0);
  EXPECT_EQ(device.LoadPtzInfo(), 1);
  EXPECT_EQ(device.LoadMediaInfo(), 0);
  EXPECT_EQ(device.LoadPtzProfiles(), 1);
  EXPECT_EQ(device.LoadMediaProfiles(), 1);
  EXPECT_EQ(device.mac, "mac");
  EXPECT_EQ(device.ptz_list.at(0).presets.size(), 1u);
  ExpectValue(device.media_list.at(0).width, 1, 11);
  EXPECT_THAT(bus.calls, IsEmpty());
}

TEST_F(LoadingTest, WithAClientThatNeverConnectedNothingIsAskedEither) {
  Store(FullDevice("http://service") + FullMedia());
  VptzClient unconnected;
  bus.calls.clear();
  device.SetVptzClient(&unconnected);
  EXPECT_EQ(device.LoadDeviceInfo(), 0);
  EXPECT_EQ(device.LoadMediaInfo(), -1);
  EXPECT_EQ(device.nat_service_uri, "http://service");
  EXPECT_EQ(device.media_list.at(0).nat_url, "rtsp://in");
  EXPECT_THAT(bus.calls, IsEmpty());
}

// ---- rows that change under the loading ------------------------------------

TEST_F(LoadingTest, ADeviceThatIsRemovedWhileItLoadsKeepsWhatWasReadAndLosesTheRest) {
  Store(FullDevice("http://service") + FullMedia() + OnePtz());
  bus.on_call = [](const BusCall&) { Store("DELETE FROM device; DELETE FROM media; DELETE FROM ptz;"); };
  EXPECT_EQ(device.LoadDeviceInfo(), 0);
  EXPECT_EQ(device.LoadPtzInfo(), 0);
  EXPECT_EQ(device.LoadMediaInfo(), 0);
  EXPECT_EQ(device.mac, "mac");
  EXPECT_THAT(device.ptz_list, IsEmpty());
  EXPECT_THAT(device.media_list, IsEmpty());
  EXPECT_EQ(device.LoadDeviceInfo(), -1);
}

TEST_F(LoadingTest, AMediaSourceThatIsRemovedWhileTheListLoadsIsStillListed) {
  Store(TwoMedia() + InsertMediaParameter(42, "width", "1, 0, 2"));
  bus.on_call = [](const BusCall&) { Store("DELETE FROM media; DELETE FROM media_parameter;"); };
  device.LoadMediaInfo();
  ASSERT_EQ(device.media_list.size(), 2u);
  EXPECT_EQ(device.media_list[1].url, "b");
  EXPECT_EQ(device.media_list[1].width.valid, 0);
}

}  // namespace
