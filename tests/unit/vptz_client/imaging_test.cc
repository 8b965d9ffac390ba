#include <gmock/gmock.h>

#include <vptz/model/vptzmodel.h>

#include "model/raw_database.h"
#include "vptz_client/command_test.h"
#include "vptz_device/rows.h"

namespace {

using testing::Each;
using testing::IsEmpty;
using vptz_test::ClientTest;
using vptz_test::CommandCase;
using vptz_test::CommandTest;
using vptz_test::ConnectedClientTest;
using vptz_test::Insert;

const std::string& StoredMedia() {
  static const std::string statement = Insert("media", {{"id", "8"}});
  return statement;
}

const CommandCase kImaging[] = {
    {"UpdateCapabilities", "get_capabilities", "device_command { device_id: 8 }",
     [](VptzClient& client, int timeout) { return client.UpdateCapabilities(8, timeout); }},
    {"SetImagingSettings", "set_imaging_settings",
     "media_command { media_id: 8 brightness: 1 contrast: 2.5 sharpness: -3 backlight_mode: 4 auto_focus: 5"
     " auto_focus_mode: 'ONCE' }",
     [](VptzClient& client, int timeout) {
       return client.SetImagingSettings(8, 1, 2.5, -3, 4, 5, "ONCE", timeout);
     },
     StoredMedia()},
    {"SetBrightness", "set_imaging_settings",
     "media_command { media_id: 8 brightness: 40 contrast: -9999999 sharpness: -9999999"
     " backlight_mode: -9999999 auto_focus: -9999999 auto_focus_mode: 'DEFAULT' }",
     [](VptzClient& client, int timeout) { return client.SetBrightness(8, 40, timeout); }, StoredMedia()},
    {"SetContrast", "set_imaging_settings",
     "media_command { media_id: 8 brightness: -9999999 contrast: 40 sharpness: -9999999"
     " backlight_mode: -9999999 auto_focus: -9999999 auto_focus_mode: 'DEFAULT' }",
     [](VptzClient& client, int timeout) { return client.SetContrast(8, 40, timeout); }, StoredMedia()},
    {"SetSharpness", "set_imaging_settings",
     "media_command { media_id: 8 brightness: -9999999 contrast: -9999999 sharpness: 40"
     " backlight_mode: -9999999 auto_focus: -9999999 auto_focus_mode: 'DEFAULT' }",
     [](VptzClient& client, int timeout) { return client.SetSharpness(8, 40, timeout); }, StoredMedia()},
    {"SetBacklightMode", "set_imaging_settings",
     "media_command { media_id: 8 brightness: -9999999 contrast: -9999999 sharpness: -9999999"
     " backlight_mode: 40 auto_focus: -9999999 auto_focus_mode: 'DEFAULT' }",
     [](VptzClient& client, int timeout) { return client.SetBacklightMode(8, 40, timeout); }, StoredMedia()},
    {"SetAutoFocusMode", "set_imaging_settings",
     "media_command { media_id: 8 brightness: -9999999 contrast: -9999999 sharpness: -9999999"
     " backlight_mode: -9999999 auto_focus: 40 auto_focus_mode: 'DEFAULT' }",
     [](VptzClient& client, int timeout) { return client.SetAutoFocusMode(8, 40, timeout); }, StoredMedia()},
    {"SwitchFocusMode", "switch_focus_mode", "media_command { media_id: 8 }",
     [](VptzClient& client, int timeout) { return client.SwitchFocusMode(8, timeout); }, StoredMedia()},
    {"FocusFar", "focus_far", "device_command { token: 'slow' device_id: 8 }",
     [](VptzClient& client, int timeout) { return client.FocusFar(8, "slow", timeout); }, StoredMedia()},
    {"FocusNear", "focus_near", "device_command { token: 'fast' device_id: 8 }",
     [](VptzClient& client, int timeout) { return client.FocusNear(8, "fast", timeout); }, StoredMedia()},
    {"FocusStop", "focus_stop", "device_command { token: '' device_id: 8 }",
     [](VptzClient& client, int timeout) { return client.FocusStop(8, "", timeout); }, StoredMedia()},
};

INSTANTIATE_TEST_SUITE_P(Imaging, CommandTest, testing::ValuesIn(kImaging), vptz_test::CommandName);

// What the operations that address a media source return.
std::vector<int> CallAll(VptzClient& client, unsigned int media_id) {
  return {client.SetImagingSettings(media_id, 1, 2, 3, 4, 5, "ONCE"),
          client.SetBrightness(media_id, 1),
          client.SetContrast(media_id, 1),
          client.SetSharpness(media_id, 1),
          client.SetBacklightMode(media_id, 1),
          client.SetAutoFocusMode(media_id, 1),
          client.SwitchFocusMode(media_id),
          client.FocusFar(media_id, "slow"),
          client.FocusNear(media_id, "slow"),
          client.FocusStop(media_id, "slow")};
}

using ImagingTest = ConnectedClientTest;

TEST_F(ImagingTest, AMediaSourceThatTheDatabaseDoesNotKnowReturnsMinusOneAndSendsNothing) {
  Store(StoredMedia());
  EXPECT_THAT(CallAll(client, 9), Each(-1));
  EXPECT_THAT(Sent(), IsEmpty());
  for (const vptz_test::LogLine& line : log.lines) EXPECT_EQ(line.level, 3) << line;
}

TEST_F(ImagingTest, UpdateCapabilitiesNeverConsultsTheDatabase) {
  VptzModel::Instance().Release();
  EXPECT_EQ(client.UpdateCapabilities(99), 0);
  EXPECT_EQ(SentCommand().device_command().device_id(), 99u);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(ImagingTest, WithoutADatabaseEveryMediaSourceIsUnknown) {
  Store(StoredMedia());
  VptzModel::Instance().Release();
  EXPECT_THAT(CallAll(client, 8), Each(-1));
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(ImagingTest, AllSevenFieldsAreSentEvenWhenNothingIsCommanded) {
  Store(StoredMedia());
  const double leave = kVptzNotCommanded;
  client.SetImagingSettings(8, leave, leave, leave, leave, leave, "");
  const tutorial::MediaCommand media = SentCommand().media_command();
  EXPECT_TRUE(media.has_media_id());
  EXPECT_TRUE(media.has_brightness());
  EXPECT_TRUE(media.has_contrast());
  EXPECT_TRUE(media.has_sharpness());
  EXPECT_TRUE(media.has_backlight_mode());
  EXPECT_TRUE(media.has_auto_focus());
  EXPECT_TRUE(media.has_auto_focus_mode());
}

TEST_F(ImagingTest, NothingIsWrittenToTheDatabase) {
  Store(StoredMedia());
  const std::string before = vptz_test::RawDatabase(vptz::DatabaseFile()).Value("SELECT * FROM media");
  EXPECT_THAT(CallAll(client, 8), Each(0));
  EXPECT_EQ(vptz_test::RawDatabase(vptz::DatabaseFile()).Value("SELECT * FROM media"), before);
}

TEST_F(ImagingTest, DriveTextsAndModesAreSentByteForByte) {
  Store(StoredMedia());
  const std::string odd = std::string(100000, '%') + std::string("\0\xff", 2);
  client.FocusFar(8, odd);
  EXPECT_EQ(SentCommand().device_command().token(), odd);
  bus.calls.clear();
  client.SetImagingSettings(8, 1, 2, 3, 4, 5, odd);
  EXPECT_EQ(SentCommand().media_command().auto_focus_mode(), odd);
}

using UnconnectedImagingTest = ClientTest;

// What cannot be read is logged, so an empty log shows that nothing was.
TEST_F(UnconnectedImagingTest, WithoutABusClientTheDatabaseIsNotRead) {
  VptzClient client;
  VptzModel::Instance().Release();
  log.lines.clear();
  EXPECT_THAT(CallAll(client, 8), Each(-1));
  EXPECT_THAT(log.lines, IsEmpty());
}

}  // namespace
