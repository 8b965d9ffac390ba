// A registry load, which reads each table once, against handles that load
// themselves row by row: what callers see is the same, whatever the database
// holds.
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <vptz/model/device.h>
#include <vptz/model/vptzmodel.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <sstream>

#include "model/raw_database.h"
#include "paths.h"
#include "vptz_device/device_test.h"

namespace {

using testing::ElementsAreArray;
using vptz_test::AddressReply;
using vptz_test::BusCall;
using vptz_test::Columns;
using vptz_test::DeviceTest;
using vptz_test::Insert;

// ---- databases -------------------------------------------------------------

// Makes statements that fill the tables with a few rows of anything.
class RandomRows {
 public:
  explicit RandomRows(unsigned int seed) : random_(seed), odd_(Chance(2)) {}

  std::string Statements() {
    std::string statements;
    Fill(
        "device_type",
        [&] {
          return Columns{{"name", Text()}};
        },
        &statements);
    Fill(
        "protocol",
        [&] {
          return Columns{{"name", "'p" + std::to_string(++names_) + "'"}};
        },
        &statements);
    Fill(
        "device", [&] { return Device(); }, &statements);
    Fill(
        "media", [&] { return Media(); }, &statements);
    Fill(
        "media_parameter", [&] { return Parameter("media", kMediaNames); }, &statements);
    Fill(
        "movement", [&] { return Movement(); }, &statements);
    Fill(
        "movement_parameter", [&] { return Parameter("movement", kMovementNames); }, &statements);
    Fill(
        "ptz", [&] { return Ptz(); }, &statements);
    Fill(
        "preset", [&] { return Preset(); }, &statements);
    return statements;
  }

 private:
  using Choices = std::vector<std::string>;

  int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  bool Chance(int one_in) { return Below(one_in) == 0; }
  const std::string& Of(const Choices& choices) {
    return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
  }

  // Up to so many rows; sometimes none at all. Ids are given in any order.
  template <class Row>
  void Fill(const std::string& table, Row row, std::string* statements) {
    if (Chance(8)) return;
    std::vector<int> ids(static_cast<std::size_t>(1 + Below(table.find('_') == std::string::npos ? 5 : 12)));
    for (std::size_t i = 0; i < ids.size(); ++i) ids[i] = static_cast<int>(i) + (odd_ ? 0 : 1);
    std::shuffle(ids.begin(), ids.end(), random_);
    for (const int id : ids) {
      Columns columns = row();
      columns["id"] = odd_ && Chance(15) ? std::to_string(id + 4294967296) : std::to_string(id);
      *statements += Insert(table, columns);
    }
  }

  // What SQLite stores in a column whatever its declared type.
  std::string Odd() {
    return Of({"'text'", "'1'", "' 1'", "1.0", "1.5", "-1", "1e300", "x'31'", "x''", "x'7769647468'", "'width'",
               "4294967296", "4294967297", "9223372036854775807", "''", "'1' || x'00' || '2'"});
  }

  std::string Reference() {
    if (odd_ && Chance(6)) return Odd();
    return Of({"NULL", "1", "1", "2", "2", "3", "4", "77"});
  }
  std::string Number() {
    if (odd_ && Chance(8)) return Odd();
    return Of({"NULL", "0", "1", "5.5", "-3", "1e308", "9e999", "-9e999", "-9999999"});
  }
  std::string Text() {
    if (odd_ && Chance(8)) return Odd();
    return Of({"''", "'a'", "'a'", "'http://h'", "'xhttpx'", "'rs232://s'", "'%s'", "'\xc3\xa4'"});
  }
  std::string Flag() {
    if (odd_ && Chance(8)) return Odd();
    return Of({"0", "1", "2", "-1"});
  }
  std::string Integer() {
    if (odd_ && Chance(8)) return Odd();
    return Of({"0", "1", "7", "-1", "4294967295"});
  }

  Columns Device() {
    return {{"device_type", Reference()},
            {"service_uri", Text()},
            {"address", Text()},
            {"http_uri", Text()},
            {"mac", Text()},
            {"uuid", Text()},
            {"authorization", Text()},
            {"authorized", Flag()},
            {"is_alive", Flag()},
            {"protocol", Reference()},
            {"host_name", Text()},
            {"manufacture", Text()},
            {"model_name", Text()},
            {"firmware_version", Text()},
            {"deletable", Flag()},
            {"is_setting_applied", Flag()},
            {"tracking", Flag()}};
  }
  Columns Media() {
    return {{"device", Reference()}, {"node", Text()}, {"url", Text()}, {"is_enable", Flag()}};
  }
  Columns Movement() {
    return {{"have_absolute_move", Flag()}, {"have_continues_move", Flag()}, {"have_relative_move", Flag()}};
  }
  Columns Parameter(const std::string& owner, const Choices& names) {
    return {{owner, Reference()},
            {"name", odd_ && Chance(8) ? Odd() : Of(names)},
            {"value", Number()},
            {"min", Number()},
            {"max", Number()}};
  }
  Columns Ptz() {
    return {{"device", Reference()}, {"node", Text()},      {"is_enable", Flag()},    {"pan", Reference()},
            {"tilt", Reference()},   {"zoom", Reference()}, {"track_mode", Integer()}};
  }
  Columns Preset() {
    return {{"ptz", Reference()}, {"preset_id", Integer()}, {"token", Text()}, {"name", Text()},
            {"pan", Number()},    {"tilt", Number()},       {"zoom", Number()}};
  }

  const Choices kMediaNames = {"'width'",          "'width'",      "'height'",    "'frame_rate'",
                               "'bit_rate'",       "'contrast'",   "'sharpness'", "'brightness'",
                               "'backlight_mode'", "'auto_focus'", "'Width'",     "'other'"};
  const Choices kMovementNames = {"'position'", "'position'", "'speed'", "'speed'", "'spare'"};

  std::mt19937 random_;
  bool odd_;
  int names_ = 0;
};

// ---- what a caller sees ----------------------------------------------------

std::string Shown(const VptzValue& value) {
  std::ostringstream text;
  text << value.valid << ':' << value.value << ' ';
  return text.str();
}

std::string Shown(const VptzRange& range) {
  std::ostringstream text;
  text << range.valid << ':' << range.min << ".." << range.max << ' ';
  return text.str();
}

std::string Shown(const VptzAxisData& axis) {
  std::ostringstream text;
  text << axis.have_absolute_move << axis.have_continues_move << axis.have_relative_move << ' '
       << Shown(axis.position) << Shown(axis.speed) << Shown(axis.position_range) << Shown(axis.speed_range)
       << Shown(axis.spare_range);
  return text.str();
}

std::string Shown(const VptzPtzData& ptz) {
  std::ostringstream text;
  text << "\n ptz " << ptz.id << " '" << ptz.node << "' " << ptz.is_enable << "\n  pan " << Shown(ptz.pan)
       << "\n  tilt " << Shown(ptz.tilt) << "\n  zoom " << Shown(ptz.zoom) << "\n  " << ptz.preset_count << ' '
       << ptz.track_mode;
  for (const VptzPresetData& preset : ptz.presets) {
    text << "\n  preset " << preset.preset_id << " '" << preset.token << "' '" << preset.name << "' "
         << preset.pan << ' ' << preset.tilt << ' ' << preset.zoom;
  }
  return text.str();
}

std::string Shown(const VptzMediaData& media) {
  std::ostringstream text;
  text << "\n media " << media.id << " '" << media.node << "' '" << media.url << "' '" << media.nat_url << "' "
       << Shown(media.width) << Shown(media.height) << Shown(media.frame_rate) << Shown(media.bit_rate)
       << Shown(media.frame_rate_range) << Shown(media.bit_rate_range) << media.width_ok << media.height_ok
       << media.frame_rate_ok << media.bit_rate_ok << ' ' << Shown(media.brightness) << Shown(media.contrast)
       << Shown(media.sharpness) << Shown(media.brightness_range) << Shown(media.contrast_range)
       << Shown(media.sharpness_range) << media.brightness_ok << media.contrast_ok << media.sharpness_ok << ' '
       << Shown(media.auto_focus) << Shown(media.backlight_mode) << media.is_enable;
  return text.str();
}

std::string Shown(const CVptzDevice& device) {
  std::ostringstream text;
  text << "device " << device.id << " '" << device.device_type << "' '" << device.service_uri << "' '"
       << device.address << "' '" << device.http_uri << "' '" << device.nat_service_uri << "' '"
       << device.nat_http_uri << "' '" << device.mac << "' '" << device.uuid << "' '" << device.authorization
       << "' " << device.authorized << device.is_alive << " '" << device.protocol << "' '" << device.host_name
       << "' '" << device.manufacture << "' '" << device.model_name << "' '" << device.firmware_version << "' "
       << device.deletable << device.is_setting_applied << device.tracking;
  for (const VptzPtzData& ptz : device.ptz_list) text << Shown(ptz);
  for (const VptzMediaData& media : device.media_list) text << Shown(media);
  return text.str();
}

// ---- the comparison --------------------------------------------------------

class SnapshotTest : public DeviceTest {
 protected:
  SnapshotTest() {
    bus.on_call = [this](const BusCall& call) {
      const tutorial::NATCommand nat = CommandOf(call).nat_command();
      bus.ReplyWith(AddressReply("out " + std::to_string(nat.nat_type()) + nat.address()));
    };
  }

  void Replace(const std::string& statements) {
    std::string all;
    for (const char* table : {"device_type", "protocol", "device", "media", "media_parameter", "movement",
                              "movement_parameter", "ptz", "preset"}) {
      all += std::string("DELETE FROM ") + table + ";";
    }
    Store(all + statements);
  }

  // The registry as loading row by row gives it.
  std::vector<std::string> RowByRow() {
    std::vector<Device*> rows;
    Device::QueryAll(&rows, 0, 65535);
    std::vector<std::string> shown;
    for (const Device* row : rows) {
      CVptzDevice device = Handle(row->id());
      device.LoadDeviceInfo();
      device.LoadPtzInfo();
      device.LoadMediaInfo();
      shown.push_back(Shown(device));
    }
    VptzModel::CleanQuery(&rows);
    return shown;
  }

  std::vector<std::string> AtOnce() {
    std::vector<std::string> shown;
    for (const CVptzDevice& device : *client.QueryDeviceAll()) shown.push_back(Shown(device));
    return shown;
  }

  // The number of devices.
  std::size_t Compare(const std::string& statements) {
    Replace(statements);
    bus.calls.clear();
    const std::vector<std::string> row_by_row = RowByRow();
    const std::vector<std::string> calls = Sent();
    bus.calls.clear();
    EXPECT_THAT(AtOnce(), ElementsAreArray(row_by_row)) << statements;
    EXPECT_THAT(Sent(), ElementsAreArray(calls)) << statements;
    return row_by_row.size();
  }
};

TEST_F(SnapshotTest, ARegistryLoadGivesWhatHandlesLoadRowByRow) {
  std::size_t devices = 0;
  for (unsigned int seed = 1; seed <= 400 && !HasFailure(); ++seed) {
    devices += Compare(RandomRows(seed).Statements());
    log.lines.clear();
  }
  EXPECT_GT(devices, 400u);
}

TEST_F(SnapshotTest, EmptyTablesGiveTheSame) {
  EXPECT_EQ(Compare(""), 0u);
  EXPECT_EQ(Compare(Insert("device", {{"id", "1"}})), 1u);
}

TEST_F(SnapshotTest, AReferenceThatIsNoWholeNumberOf32BitsOwnsNothing) {
  std::string rows = Insert("device", {{"id", "1"}}) + Insert("ptz", {{"id", "1"}, {"device", "1"}});
  for (const char* reference : {"1.5", "'1x'", "x'31'", "4294967297", "-4294967295", "''"}) {
    rows += Insert("media", {{"device", reference}}) + Insert("ptz", {{"device", reference}}) +
            Insert("preset", {{"ptz", reference}});
  }
  EXPECT_EQ(Compare(rows), 1u);
  const CVptzDevice* const device = client.QueryDeviceById(1);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->media_list.size(), 0u);
  EXPECT_EQ(device->ptz_list.size(), 1u);
}

TEST_F(SnapshotTest, ANameThatIsABlobNamesNoParameter) {
  const std::string owner = Insert("device", {{"id", "1"}}) + Insert("media", {{"id", "1"}, {"device", "1"}});
  EXPECT_EQ(
      Compare(owner + Insert("media_parameter", {{"media", "1"}, {"name", "x'7769647468'"}, {"value", "5"}})),
      1u);
  EXPECT_EQ(client.QueryDeviceById(1)->media_list.at(0).width.valid, 0);
}

// ---- lack of memory --------------------------------------------------------

// SQLite gets no more than that much memory beside what it has now.
class HeapLimit {
 public:
  explicit HeapLimit(sqlite3_int64 bytes) : before_(sqlite3_hard_heap_limit64(sqlite3_memory_used() + bytes)) {}
  ~HeapLimit() { sqlite3_hard_heap_limit64(before_); }
  HeapLimit(const HeapLimit&) = delete;
  HeapLimit& operator=(const HeapLimit&) = delete;

 private:
  const sqlite3_int64 before_;
};

// In a file of another encoding a text takes memory twice: to be read, and to be
// converted.
TEST_F(SnapshotTest, ATextThatLacksTheMemoryToBeConvertedFailsTheLoad) {
  VptzModel::Instance().Release();
  std::remove(vptz::DatabaseFile());
  vptz_test::RawDatabase(vptz::DatabaseFile())
      .Execute(
          "PRAGMA encoding = 'UTF-16le'; CREATE TABLE device (id INTEGER PRIMARY KEY, service_uri, address, "
          "http_uri, mac, uuid, authorization, authorized, is_alive, host_name, manufacture, model_name, "
          "firmware_version, deletable, is_setting_applied, tracking, device_type, protocol);"
          "INSERT INTO device(id, mac) VALUES (1, printf('%.*c', 8000000, 'x'));");
  EXPECT_EQ(VptzModel::Instance().Connect(vptz::DatabaseFile()), 0);
  log.lines.clear();
  {
    const HeapLimit limit(24000000);
    EXPECT_EQ(client.LoadDevices(), -1);
  }
  ASSERT_FALSE(log.lines.empty());
  EXPECT_EQ(log.lines.back().message, "Failed to load the devices: memory ran out");
  ASSERT_EQ(client.QueryDeviceAll()->size(), 1u);
  EXPECT_EQ(client.QueryDeviceAll()->at(0).mac.size(), 8000000u);
}

}  // namespace
