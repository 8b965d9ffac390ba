// The queries of each class, on the rows of an old file at the current version.
#include <vptz/model/device.h>
#include <vptz/model/event.h>
#include <vptz/model/event_information.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/setting.h>

#include <stdexcept>

#include "model/model_test.h"
#include "model/schema_statements.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vptz_test::ById;
using vptz_test::ModelTest;
using vptz_test::OpenModelTest;
using vptz_test::RawDatabase;
using vptz_test::Rows;

class EntitiesTest : public ModelTest {
 protected:
  EntitiesTest() {
    MakeFile(vptz_test::OldSchema(6) + vptz_test::OldRows());
    EXPECT_EQ(Initialize(), 0);
    log.lines.clear();
  }

  void Execute(const std::string& statements) { RawDatabase(path).Execute(statements); }
};

// The ids that a list query finds, in the order of the database.
template <class Row, class Query>
std::vector<unsigned int> Ids(Query query) {
  Rows<Row> rows;
  const int result = query(&rows);
  EXPECT_EQ(result, rows.empty() ? -1 : 0);
  std::vector<unsigned int> ids;
  for (const Row* row : rows) ids.push_back(row->id());
  return ids;
}

// The id that a query for one object finds; 0 when none.
template <class Row, class Query>
unsigned int Id(Query query) {
  Row* row = nullptr;
  const int result = query(&row);
  const std::unique_ptr<Row> owner(row);
  EXPECT_EQ(result, row == nullptr ? -1 : 0);
  return row == nullptr ? 0 : row->id();
}

// ---- what all classes have --------------------------------------------------

template <class Row>
void ExpectCommonOperations(Row* row, unsigned int id) {
  EXPECT_EQ(Row::Add(row), static_cast<int>(id));
  EXPECT_NE(ById<Row>(id), nullptr);
  EXPECT_THAT(Ids<Row>([](std::vector<Row*>* rows) { return Row::QueryAll(rows, 5, 1); }),
              testing::Contains(id));
  EXPECT_EQ(Row::Remove(id), 0);
  EXPECT_EQ(Row::Remove(id), -1);
  EXPECT_EQ(ById<Row>(id), nullptr);
}

TEST_F(EntitiesTest, EveryClassAddsQueriesAndRemovesItsRows) {
  DeviceType device_type("name");
  ExpectCommonOperations(&device_type, 3);
  Protocol protocol("name");
  ExpectCommonOperations(&protocol, 3);
  Device device;
  ExpectCommonOperations(&device, 10);
  Media media;
  ExpectCommonOperations(&media, 2);
  MediaParameter media_parameter;
  ExpectCommonOperations(&media_parameter, 3);
  Movement movement(true, true, true);
  ExpectCommonOperations(&movement, 4);
  MovementParameter movement_parameter;
  ExpectCommonOperations(&movement_parameter, 2);
  Ptz ptz;
  ExpectCommonOperations(&ptz, 5);
  Preset preset;
  ExpectCommonOperations(&preset, 2);
  Event event;
  ExpectCommonOperations(&event, 2);
  EventInformation information;
  ExpectCommonOperations(&information, 3);
}

TEST_F(EntitiesTest, AListQueryIgnoresItsPagingArguments) {
  EXPECT_THAT(Ids<Device>([](auto* rows) { return Device::QueryAll(rows, 5, 1); }), ElementsAre(3u, 9u));
  EXPECT_THAT(Ids<Movement>([](auto* rows) { return Movement::QueryAll(rows, 0, 0); }),
              ElementsAre(1u, 2u, 3u));
}

TEST_F(EntitiesTest, UpdateWritesTheRowOfTheObject) {
  const auto movement = ById<Movement>(3);
  movement->set_have_relative_move(true);
  EXPECT_EQ(Movement::Update(*movement), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT count(*) FROM movement WHERE have_relative_move"), "2");
}

// ---- constructors -----------------------------------------------------------

TEST_F(EntitiesTest, TheConstructorOfADeviceFillsTheseColumns) {
  DeviceType type;
  type.set_id(2);
  Protocol protocol;
  protocol.set_id(1);
  Device device("service", "address", &type, &protocol, "http", true, "mac", "uuid", false, true, false, true);
  EXPECT_EQ(Device::Add(&device), 10);
  EXPECT_EQ(
      RawDatabase(path).Value(
          "SELECT device_type, service_uri, address, http_uri, mac, uuid, authorization, authorized, is_alive, "
          "protocol, host_name, manufacture, model_name, firmware_version, deletable, is_setting_applied, "
          "tracking, reserved FROM device WHERE id = 10"),
      "2|'service'|'address'|'http'|'mac'|'uuid'|''|1|0|1|''|''|''|''|1|0|1|''");
}

TEST_F(EntitiesTest, NullTextsOfADeviceAreEmpty) {
  Device device(nullptr, nullptr, nullptr, nullptr, nullptr, false, nullptr, nullptr, true, false, true, false);
  EXPECT_EQ(Device::Add(&device), 10);
  EXPECT_EQ(
      RawDatabase(path).Value("SELECT service_uri || address || http_uri || mac || uuid, is_alive, deletable, "
                              "is_setting_applied, tracking FROM device WHERE id = 10"),
      "''|1|0|1|0");
}

TEST_F(EntitiesTest, TheOtherConstructorsFillTheColumnsInOrder) {
  const auto device = ById<Device>(3);
  const auto event = ById<Event>(1);
  Movement pan(true, false, true);
  Movement tilt(false, true, false);
  Movement zoom(false, false, true);
  EXPECT_EQ(Movement::Add(&pan) + Movement::Add(&tilt) + Movement::Add(&zoom), 4 + 5 + 6);
  Ptz ptz(device.get(), &pan, &tilt, &zoom, "node", "auth", true, 7);
  EXPECT_EQ(Ptz::Add(&ptz), 5);
  Media media(device.get(), "node", "url", "auth", true);
  EXPECT_EQ(Media::Add(&media), 2);
  MediaParameter width(&media, "width", 1, 2, 3);
  EXPECT_EQ(MediaParameter::Add(&width), 3);
  MovementParameter position(&pan, "position", 4, 5, 6);
  EXPECT_EQ(MovementParameter::Add(&position), 2);
  Preset preset(&ptz, 8, "token", "name", 1.5, 2.5, 3.5);
  EXPECT_EQ(Preset::Add(&preset), 2);
  EventInformation information(&media, &ptz, 11, event.get());
  EXPECT_EQ(EventInformation::Add(&information), 3);

  RawDatabase raw(path);
  EXPECT_EQ(raw.Value("SELECT * FROM movement WHERE id = 4"), "4|1|0|1|''");
  EXPECT_EQ(raw.Value("SELECT * FROM ptz WHERE id = 5"), "5|3|'node'|1|'auth'|4|5|6|7|''");
  EXPECT_EQ(raw.Value("SELECT * FROM media WHERE id = 2"), "2|3|'node'|'url'|'auth'|1|''");
  EXPECT_EQ(raw.Value("SELECT * FROM media_parameter WHERE id = 3"), "3|2|'width'|1.0|2.0|3.0|''");
  EXPECT_EQ(raw.Value("SELECT * FROM movement_parameter WHERE id = 2"), "2|4|'position'|4.0|5.0|6.0|''");
  EXPECT_EQ(raw.Value("SELECT * FROM preset WHERE id = 2"), "2|5|8|'token'|'name'|1.5|2.5|3.5|''");
  EXPECT_EQ(raw.Value("SELECT * FROM event_information WHERE id = 3"), "3|2|5|11|1|''");
}

// ---- device -----------------------------------------------------------------

TEST_F(EntitiesTest, DevicesAreFoundByTheirColumns) {
  Execute("UPDATE device SET mac = 'shared'");
  EXPECT_EQ(Id<Device>([](Device** row) { return Device::QueryByServiceUri(row, "rs232://a/1/2/3"); }), 9u);
  EXPECT_EQ(Id<Device>([](Device** row) { return Device::QueryByServiceUri(row, "rs232://a"); }), 0u);
  EXPECT_THAT(Ids<Device>([](auto* rows) { return Device::QueryByMac(rows, "shared", 1, 1); }),
              ElementsAre(3u, 9u));
  EXPECT_THAT(Ids<Device>([](auto* rows) { return Device::QueryByMac(rows, "none", 0, 9); }), IsEmpty());
  EXPECT_THAT(Ids<Device>([](auto* rows) { return Device::QueryByDeviceType(rows, 1, 0, 0); }),
              ElementsAre(3u));
  EXPECT_THAT(Ids<Device>([](auto* rows) { return Device::QueryByDeviceType(rows, 2, 0, 9); }), IsEmpty());
  EXPECT_THAT(Ids<Device>([](auto* rows) { return Device::QueryByProtocol(rows, 2, 0, 0); }), ElementsAre(9u));
  EXPECT_THAT(Ids<Device>([](auto* rows) { return Device::QueryByAuthorized(rows, true, 0, 0); }),
              ElementsAre(3u));
  EXPECT_THAT(Ids<Device>([](auto* rows) { return Device::QueryByAuthorized(rows, false, 0, 0); }),
              ElementsAre(9u));
}

TEST_F(EntitiesTest, DevicesAreCounted) {
  EXPECT_EQ(Device::QueryCount(), 2);
  Execute("DELETE FROM device");
  EXPECT_EQ(Device::QueryCount(), 0);
}

struct HomePage {
  const char* protocol;
  const char* model_name;
  const char* service_uri;
  const char* http_uri;  // "before" when it stays as it was
};

void PrintTo(const HomePage& page, std::ostream* out) {
  *out << page.protocol << ' ' << page.model_name << ' ' << page.service_uri;
}

class HomePageTest : public OpenModelTest, public testing::WithParamInterface<HomePage> {};

TEST_P(HomePageTest, IsDerivedFromTheServiceAddress) {
  Protocol protocol(GetParam().protocol);
  Device device(GetParam().service_uri, "", nullptr, &protocol, "before", false, "", "", false, false, false,
                false);
  device.set_model_name(GetParam().model_name);
  device.update_http_uri();
  EXPECT_EQ(device.http_uri(), GetParam().http_uri);
  if (device.http_uri() == "before") {
    EXPECT_THAT(log.lines, IsEmpty());
    return;
  }
  EXPECT_THAT(Lines().back(), testing::EndsWith(" home page " + device.http_uri()));
  EXPECT_THAT(log.lines, SizeIs(device.model_name() == "ConfIPCamera" ? 1 : 2));
  EXPECT_THAT(log.lines.front().message,
              testing::AnyOf("Use default home page", testing::StartsWith("home page ")));
  for (const vptz_test::LogLine& line : log.lines) {
    EXPECT_EQ(line.file, "../src/model/device.cc");
    EXPECT_EQ(line.function, "update_http_uri");
  }
}

INSTANTIATE_TEST_SUITE_P(
    Devices, HomePageTest,
    testing::Values(HomePage{"ONVIF", "", "http://10.0.0.3/onvif/device_service", "http://10.0.0.3"},
                    HomePage{"NDI", "", "https://camera:8443/x", "https://camera"},
                    HomePage{"RS232", "QX310", "http://10.0.0.3", "http://10.0.0.3"},
                    HomePage{"ONVIF", "ConfIPCamera", "http://10.0.0.3:80/x",
                             "http://10.0.0.3/pages/login.asp"},
                    HomePage{"RS232", "", "http://10.0.0.3/x", "before"},
                    HomePage{"NDIHX", "ConfIPCamera", "http://10.0.0.3/x", "before"},
                    HomePage{"ONVIF", "", "rtsp://10.0.0.3/x", "before"},
                    HomePage{"ONVIF", "", "10.0.0.3", "before"}, HomePage{"ONVIF", "", "", "before"},
                    HomePage{"ONVIF", "", "http://", "before"}, HomePage{"ONVIF", "", "http:///x", "before"},
                    HomePage{"onvif", "", "http://a/x", "before"}));

TEST_F(EntitiesTest, TheHomePageOfAStoredDeviceNeedsItsProtocolFromTheDatabase) {
  const auto device = ById<Device>(3);
  device->update_http_uri();
  EXPECT_EQ(device->http_uri(), "http://10.0.0.3");
  EXPECT_THAT(Lines(), ElementsAre("2 Use default home page", "2 home page http://10.0.0.3"));
  EXPECT_EQ(RawDatabase(path).Value("SELECT http_uri FROM device WHERE id = 3"), "'http://10.0.0.3'");
}

// ---- types, protocols, events -----------------------------------------------

TEST_F(EntitiesTest, NamedRowsAreFoundByName) {
  EXPECT_EQ(Id<DeviceType>([](DeviceType** row) { return DeviceType::QueryByName(row, "controller"); }), 2u);
  EXPECT_EQ(Id<DeviceType>([](DeviceType** row) { return DeviceType::QueryByName(row, "Camera"); }), 0u);
  EXPECT_EQ(Id<Protocol>([](Protocol** row) { return Protocol::QueryByName(row, "RS232"); }), 2u);
  EXPECT_EQ(Id<Event>([](Event** row) { return Event::QueryByName(row, "lost"); }), 1u);
  EXPECT_EQ(Id<Event>([](Event** row) { return Event::QueryByName(row, "found"); }), 0u);
}

TEST_F(EntitiesTest, OfSeveralTypesOfANameTheOneWithTheLowestMethodIsFound) {
  Execute("INSERT INTO device_type VALUES (7, 'camera', 2, ''), (8, 'camera', 5, ''), (9, 'other', 0, '')");
  EXPECT_EQ(Id<DeviceType>([](DeviceType** row) { return DeviceType::QueryByName(row, "camera"); }), 7u);
}

// ---- what belongs to something ----------------------------------------------

TEST_F(EntitiesTest, MediaAreFoundByDeviceAndNode) {
  EXPECT_THAT(Ids<Media>([](auto* rows) { return Media::QueryByDevice(rows, 3, 9, 1); }), ElementsAre(1u));
  EXPECT_THAT(Ids<Media>([](auto* rows) { return Media::QueryByDevice(rows, 9, 0, 9); }), IsEmpty());
  EXPECT_EQ(Id<Media>([](Media** row) { return Media::QueryByNode(row, 3, "main"); }), 1u);
  EXPECT_EQ(Id<Media>([](Media** row) { return Media::QueryByNode(row, 9, "main"); }), 0u);
  EXPECT_EQ(Id<Media>([](Media** row) { return Media::QueryByNode(row, 3, "sub"); }), 0u);
  EXPECT_EQ(Media::QueryCountByDevice(3), 1);
  EXPECT_EQ(Media::QueryCountByDevice(9), 0);
}

TEST_F(EntitiesTest, ParametersAreFoundByOwnerAndName) {
  using MediaRow = MediaParameter**;
  EXPECT_EQ(Id<MediaParameter>([](MediaRow row) { return MediaParameter::QueryByName(row, 1, "bitrate"); }),
            2u);
  EXPECT_EQ(Id<MediaParameter>([](MediaRow row) { return MediaParameter::QueryByName(row, 2, "bitrate"); }),
            0u);
  using MovementRow = MovementParameter**;
  EXPECT_EQ(
      Id<MovementParameter>([](MovementRow row) { return MovementParameter::QueryByName(row, 1, "position"); }),
      1u);
  EXPECT_EQ(
      Id<MovementParameter>([](MovementRow row) { return MovementParameter::QueryByName(row, 1, "speed"); }),
      0u);
}

TEST_F(EntitiesTest, PtzNodesAreFoundAndRemovedByDevice) {
  EXPECT_THAT(Ids<Ptz>([](auto* rows) { return Ptz::QueryByDevice(rows, 3, 9, 1); }), ElementsAre(4u));
  EXPECT_EQ(Id<Ptz>([](Ptz** row) { return Ptz::QueryByNode(row, 3, "ptz0"); }), 4u);
  EXPECT_EQ(Id<Ptz>([](Ptz** row) { return Ptz::QueryByNode(row, 9, "ptz0"); }), 0u);
  EXPECT_EQ(Ptz::QueryCountByDevice(3), 1);
  EXPECT_EQ(Ptz::RemoveByDevice(9), -1);
  EXPECT_EQ(Ptz::RemoveByDevice(3), 0);
  EXPECT_EQ(Ptz::QueryCountByDevice(3), 0);
}

TEST_F(EntitiesTest, PresetsAreFoundCountedAndRemovedByNode) {
  Execute(
      "INSERT INTO preset VALUES (2, 4, 1, 'token 1', 'gate', 0, 0, 0, ''), (3, NULL, 7, 'token 7', '', 0, 0, "
      "0, '')");
  EXPECT_THAT(Ids<Preset>([](auto* rows) { return Preset::QueryByPtz(rows, 4, 9, 1); }), ElementsAre(1u, 2u));
  EXPECT_EQ(Id<Preset>([](Preset** row) { return Preset::QueryByPresetId(row, 4, 7); }), 1u);
  EXPECT_EQ(Id<Preset>([](Preset** row) { return Preset::QueryByPresetId(row, 5, 7); }), 0u);
  EXPECT_EQ(Id<Preset>([](Preset** row) { return Preset::QueryByToken(row, 4, "token 1"); }), 2u);
  EXPECT_EQ(Id<Preset>([](Preset** row) { return Preset::QueryByToken(row, 4, "token"); }), 0u);
  EXPECT_EQ(Preset::QueryCountByPtz(4), 2);
  EXPECT_EQ(Preset::QueryCountByPtz(5), 0);
  EXPECT_EQ(Preset::RemoveByPtz(5), -1);
  EXPECT_EQ(Preset::RemoveByPtz(4), 0);
  EXPECT_EQ(RawDatabase(path).Value("SELECT id FROM preset"), "3");
}

TEST_F(EntitiesTest, TheLargestPresetIdOfANodeIsComparedAsASignedNumber) {
  EXPECT_EQ(Preset::QueryMaxPresetIdByPtz(5), 4294967295u);
  Execute("INSERT INTO preset SELECT 2, 4, 1, '', '', 0, 0, 0, ''");
  Execute("INSERT INTO preset SELECT 3, 4, 3, '', '', 0, 0, 0, ''");
  EXPECT_EQ(Preset::QueryMaxPresetIdByPtz(4), 7u);
  Execute("INSERT INTO preset SELECT 4, 4, 4294967290, '', '', 0, 0, 0, ''");
  EXPECT_EQ(Preset::QueryMaxPresetIdByPtz(4), 7u);
  Execute("DELETE FROM preset WHERE id < 4");
  EXPECT_EQ(Preset::QueryMaxPresetIdByPtz(4), 4294967295u);
}

}  // namespace
