// References from one row to another.
#include <vptz/model/device.h>
#include <vptz/model/event_information.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>

#include "model/model_test.h"
#include "model/schema_statements.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using vptz_test::ById;
using vptz_test::ModelTest;
using vptz_test::RawDatabase;

// The rows of an old file, at the current version: device 3 with a type, a
// protocol, media 1 and PTZ node 4, and rows that refer to nothing.
class ReferencesTest : public ModelTest {
 protected:
  ReferencesTest() {
    MakeFile(vptz_test::OldSchema(9) + vptz_test::OldRows() +
             "ALTER TABLE device ADD COLUMN tracking INTEGER NULL;" +
             "UPDATE schema_version SET version = 10;");
    EXPECT_EQ(model().Connect(path), 0);
    log.lines.clear();
  }
};

TEST_F(ReferencesTest, AreLoadedWhenAskedFor) {
  const auto device = ById<Device>(3);
  ASSERT_NE(device, nullptr);
  ASSERT_NE(device->device_type(), nullptr);
  EXPECT_EQ(device->device_type()->name(), "camera");
  EXPECT_EQ(device->device_type()->method(), 3);
  ASSERT_NE(device->protocol(), nullptr);
  EXPECT_EQ(device->protocol()->name(), "ONVIF");

  const auto ptz = ById<Ptz>(4);
  ASSERT_NE(ptz, nullptr);
  EXPECT_EQ(ptz->device()->id(), 3u);
  EXPECT_EQ(ptz->pan()->id(), 1u);
  EXPECT_EQ(ptz->tilt()->id(), 2u);
  EXPECT_EQ(ptz->zoom()->id(), 3u);
  EXPECT_EQ(ptz->device()->protocol()->version(), "2.0");

  EXPECT_EQ(ById<Media>(1)->device()->host_name(), "hall");
  EXPECT_EQ(ById<MediaParameter>(1)->media()->node(), "main");
  EXPECT_TRUE(ById<MovementParameter>(1)->movement()->have_absolute_move());
  EXPECT_EQ(ById<Preset>(1)->ptz()->node(), "ptz0");
  const auto information = ById<EventInformation>(1);
  EXPECT_EQ(information->media()->url(), "rtsp://10.0.0.3/main");
  EXPECT_EQ(information->ptz()->track_mode(), 2);
  EXPECT_EQ(information->event()->message(), "it's gone");
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(ReferencesTest, ToNothingAreNullWithoutADatabase) {
  const auto device = ById<Device>(9);
  const auto information = ById<EventInformation>(2);
  ASSERT_NE(device, nullptr);
  ASSERT_NE(information, nullptr);
  model().Release();
  log.lines.clear();
  EXPECT_EQ(device->device_type(), nullptr);
  EXPECT_EQ(information->media(), nullptr);
  EXPECT_EQ(information->ptz(), nullptr);
  EXPECT_EQ(information->event(), nullptr);
  EXPECT_EQ(Preset().ptz(), nullptr);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(ReferencesTest, AreLoadedOnce) {
  const auto device = ById<Device>(3);
  const Protocol* const first = device->protocol();
  RawDatabase(path).Execute("UPDATE protocol SET version = 'changed'");
  EXPECT_EQ(device->protocol(), first);
  EXPECT_EQ(first->version(), "2.0");
  model().Release();
  EXPECT_EQ(device->protocol(), first);
}

TEST_F(ReferencesTest, ToARowThatIsGoneAreNullAndLogged) {
  const auto media = ById<Media>(1);
  ASSERT_NE(media, nullptr);
  EXPECT_EQ(Device::Remove(3), 0);
  log.lines.clear();
  EXPECT_EQ(media->device(), nullptr);
  EXPECT_THAT(Lines(), ElementsAre(StartsWith("0 VptzModel::LoadLazyPtr: Exception occurs! (")));
  EXPECT_EQ(log.lines[0].function, "LoadLazyPtr");
}

TEST_F(ReferencesTest, SetByACallerStayTheCallers) {
  Device device("uri", "address", nullptr, nullptr, "", false, "", "", false, false, false, false);
  EXPECT_EQ(Device::Add(&device), 10);
  Media media(&device, "sub", "", "", true);
  EXPECT_EQ(media.device(), &device);
  EXPECT_EQ(Media::Add(&media), 2);
  EXPECT_EQ(RawDatabase(path).Value("SELECT device FROM media WHERE id = 2"), "10");
  media.set_device(nullptr);
  EXPECT_EQ(Media::Update(media), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT device FROM media WHERE id = 2"), "NULL");
}

TEST_F(ReferencesTest, ThatWereNotLoadedSurviveAnUpdate) {
  const auto ptz = ById<Ptz>(4);
  ASSERT_NE(ptz, nullptr);
  ptz->set_track_mode(0);
  EXPECT_EQ(Ptz::Update(*ptz), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT device, pan, tilt, zoom, track_mode FROM ptz"), "3|1|2|3|0");
}

TEST_F(ReferencesTest, ToARowThatNeverWasAreRefusedAtTheEndOfTheTransaction) {
  Device never_stored;
  never_stored.set_id(77);
  Media media(&never_stored, "sub", "", "", true);
  EXPECT_EQ(Media::Add(&media), -1);
  EXPECT_EQ(media.id(), 0u) << "the next row will have the id that it was given for a moment";
  EXPECT_THAT(Lines(), ElementsAre(StartsWith("0 VptzModel::Add: Exception occurs! (")));
  EXPECT_EQ(RawDatabase(path).Value("SELECT count(*) FROM media"), "1");
}

}  // namespace
