#include "store/database.h"

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <vptz/model/device.h>
#include <vptz/model/device_type.h>
#include <vptz/model/media.h>
#include <vptz/model/media_parameter.h>
#include <vptz/model/movement.h>
#include <vptz/model/movement_parameter.h>
#include <vptz/model/preset.h>
#include <vptz/model/protocol.h>
#include <vptz/model/ptz.h>
#include <vptz/model/vptzmodel.h>

#include "drivers/simulated/simulated_fleet.h"
#include "fleet/start.h"
#include "model/raw_database.h"
#include "simulation.h"
#include "store/changes.h"
#include "store/database.h"
#include "store/device_rows.h"
#include "store/row_access.h"
#include "support/temp_dir.h"

namespace vptz_test {
namespace {

using vptzd::BuiltInCamera;
using vptzd::Camera;
using vptzd::CameraIds;
using vptzd::OpenDatabase;
using vptzd::StoreCamera;
using vptzd::StoreCameras;

class ServiceDatabase : public testing::Test {
 protected:
  ServiceDatabase() { EXPECT_TRUE(Open()); }
  ~ServiceDatabase() override { VptzModel::Instance().Release(); }

  bool Open() const { return OpenDatabase(folder_.path() + "/vptz.db", VPTZD_SEED_FILE); }

  static std::unique_ptr<Device> DeviceOf(const CameraIds& ids) {
    Device* device = nullptr;
    EXPECT_EQ(Device::QueryById(&device, ids.device), 0);
    return std::unique_ptr<Device>(device);
  }

  // How many transactions have changed the file so far: SQLite counts them in its
  // header.
  unsigned Transactions() const {
    std::ifstream file(folder_.path() + "/vptz.db", std::ios::binary);
    unsigned char counter[4] = {};
    file.seekg(24);
    file.read(reinterpret_cast<char*>(counter), sizeof counter);
    EXPECT_TRUE(file.good());
    return (counter[0] << 24U) + (counter[1] << 16U) + (counter[2] << 8U) + counter[3];
  }

  TempDir folder_;
};

template <class Row>
std::size_t RowCount() {
  std::vector<Row*> rows;
  Row::QueryAll(&rows, 0, 65535);
  const std::size_t count = rows.size();
  VptzModel::CleanQuery(&rows);
  return count;
}

TEST_F(ServiceDatabase, IsFilledTheSameHoweverOftenTheServiceStarts) {
  ASSERT_TRUE(Open());
  ASSERT_TRUE(Open());
  EXPECT_EQ(RowCount<Protocol>(), 6U);
  EXPECT_EQ(RowCount<DeviceType>(), 2U);
}

TEST_F(ServiceDatabase, IsRefusedWhereThereIsNoFolder) {
  EXPECT_FALSE(OpenDatabase("/proc/none/vptz.db", VPTZD_SEED_FILE));
}

TEST_F(ServiceDatabase, HoldsWhatACameraIs) {
  const CameraIds ids = StoreCamera(Camera(BuiltInCamera(2)).Record());
  const std::unique_ptr<Device> device = DeviceOf(ids);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->address(), "192.0.2.2");
  EXPECT_EQ(device->http_uri(), "http://192.0.2.2");
  ASSERT_NE(device->protocol(), nullptr);
  EXPECT_EQ(device->protocol()->name(), "ONVIF");
  EXPECT_EQ(Media::QueryCountByDevice(ids.device), 2);
  EXPECT_EQ(Ptz::QueryCountByDevice(ids.device), 1);
  EXPECT_EQ(Preset::QueryCountByPtz(ids.ptz), 3);
}

TEST_F(ServiceDatabase, StoresAWholeFleetInOneTransaction) {
  Simulation simulation(vptzd::BuiltInFleet(64));
  const unsigned before = Transactions();
  StoreCameras(simulation.fleet());
  EXPECT_EQ(Transactions() - before, 1U);
  EXPECT_EQ(RowCount<Device>(), 64U);
  EXPECT_EQ(RowCount<MediaParameter>(), 64U * 18U);
  EXPECT_EQ(RowCount<MovementParameter>(), 64U * 6U);
  EXPECT_EQ(RowCount<Preset>(), 64U * 3U);
}

TEST_F(ServiceDatabase, StoresACameraInOneTransaction) {
  const unsigned before = Transactions();
  StoreCamera(Camera(BuiltInCamera(1)).Record());
  EXPECT_EQ(Transactions() - before, 1U);
}

TEST_F(ServiceDatabase, BringsTheAxesOfAWholeFleetUpToDateInOneTransaction) {
  Simulation simulation(vptzd::BuiltInFleet(8));
  StoreCameras(simulation.fleet());
  for (const auto& member : simulation.fleet().members()) {
    if (!member->known()) continue;
    ASSERT_EQ(member->camera.MoveTo({10.0, 10.0, 3.0}, {}), vptzd::Status::kDone);
    member->camera.Advance(1min);
    vptzd::StoreAxes(member->ids.ptz, member->camera.abilities(), member->camera.position());
  }
  Simulation started_again(vptzd::BuiltInFleet(8));
  const unsigned before = Transactions();
  StoreCameras(started_again.fleet());
  EXPECT_EQ(Transactions() - before, 1U);
  MovementParameter* parameter = nullptr;
  ASSERT_EQ(MovementParameter::QueryByName(&parameter, 1, "position"), 0);
  EXPECT_EQ(parameter->value(), 0.0);
  delete parameter;
}

TEST_F(ServiceDatabase, StoresAllCamerasOrNone) {
  Simulation simulation(vptzd::BuiltInFleet(3));
  const auto fail_at_the_third = [](std::size_t camera, std::size_t) {
    if (camera == 3) throw vptzd::StorageError("the disk is full");
  };
  EXPECT_THROW(StoreCameras(simulation.fleet(), fail_at_the_third), vptzd::StorageError);
  EXPECT_EQ(RowCount<Device>(), 0U);
  EXPECT_EQ(simulation.fleet().MemberOfDevice(1), nullptr);
  StoreCameras(simulation.fleet());
  EXPECT_EQ(RowCount<Device>(), 3U);
}

TEST_F(ServiceDatabase, BeginsWithTheCamerasThatAreThereWhenNoMoreCanBeStored) {
  Simulation first(vptzd::BuiltInFleet(2));
  StoreCameras(first.fleet());
  Simulation more(vptzd::BuiltInFleet(3));
  StoreCameras(more.fleet(), [](std::size_t, std::size_t) { throw vptzd::NoRoom("the disk is full"); });
  EXPECT_NE(more.fleet().MemberOfDevice(2), nullptr);
  EXPECT_EQ(more.fleet().MemberOfDevice(3), nullptr);
  EXPECT_EQ(RowCount<Device>(), 2U);
}

TEST_F(ServiceDatabase, HoldsTheLimitsOfEachAxis) {
  const CameraIds ids = StoreCamera(Camera(BuiltInCamera(1)).Record());
  Ptz* found = nullptr;
  ASSERT_EQ(Ptz::QueryById(&found, ids.ptz), 0);
  const std::unique_ptr<Ptz> ptz(found);
  ASSERT_NE(ptz->tilt(), nullptr);
  MovementParameter* parameter = nullptr;
  ASSERT_EQ(MovementParameter::QueryByName(&parameter, ptz->tilt()->id(), "position"), 0);
  EXPECT_EQ(parameter->min(), -30.0);
  EXPECT_EQ(parameter->max(), 90.0);
  ASSERT_EQ(MovementParameter::QueryByName(&parameter, ptz->pan()->id(), "speed"), 0);
  EXPECT_EQ(parameter->max(), 100.0);
  delete parameter;
}

TEST_F(ServiceDatabase, KeepsACamerasRowsAndIdsAcrossStarts) {
  const CameraIds first = StoreCamera(Camera(BuiltInCamera(1)).Record());
  const std::size_t parameters = RowCount<MediaParameter>();
  const CameraIds second = StoreCamera(Camera(BuiltInCamera(1)).Record());
  EXPECT_EQ(first.device, second.device);
  EXPECT_EQ(first.ptz, second.ptz);
  EXPECT_EQ(RowCount<Device>(), 1U);
  EXPECT_EQ(RowCount<MediaParameter>(), parameters);
}

TEST_F(ServiceDatabase, WritesACameraAnewThatWasLeftHalfWritten) {
  const CameraIds half = StoreCamera(Camera(BuiltInCamera(1)).Record());
  const std::unique_ptr<Device> device = DeviceOf(half);
  device->set_is_setting_applied(false);
  ASSERT_EQ(Device::Update(*device), 0);
  const CameraIds whole = StoreCamera(Camera(BuiltInCamera(1)).Record());
  EXPECT_NE(whole.device, half.device);
  EXPECT_EQ(RowCount<Device>(), 1U);
  EXPECT_EQ(Preset::QueryCountByPtz(whole.ptz), 3);
}

TEST_F(ServiceDatabase, LeavesNothingBehindOfACameraThatWasLeftHalfWritten) {
  const CameraIds other = StoreCamera(Camera(BuiltInCamera(2)).Record());
  const std::unique_ptr<Device> device = DeviceOf(StoreCamera(Camera(BuiltInCamera(1)).Record()));
  Movement without_node(true, true, false);
  ASSERT_GT(Movement::Add(&without_node), 0);
  MovementParameter parameter(&without_node, "position", 0, 0, 0);
  ASSERT_GT(MovementParameter::Add(&parameter), 0);
  device->set_is_setting_applied(false);
  ASSERT_EQ(Device::Update(*device), 0);
  StoreCamera(Camera(BuiltInCamera(1)).Record());
  EXPECT_EQ(RowCount<Movement>(), 6U);
  EXPECT_EQ(RowCount<MovementParameter>(), 12U);
  EXPECT_EQ(RowCount<MediaParameter>(), 36U);
  EXPECT_EQ(StoreCamera(Camera(BuiltInCamera(2)).Record()).ptz, other.ptz);
}

TEST_F(ServiceDatabase, GivesCamerasTheIdsByWhichCommandsNameThem) {
  StoreCamera(Camera(BuiltInCamera(9)).Record());  // so that ids and numbers differ
  Simulation simulation(2);
  StoreCameras(simulation.fleet());
  Device* found = nullptr;
  ASSERT_EQ(Device::QueryByServiceUri(&found, "http://192.0.2.1/onvif/device_service"), 0);
  const std::unique_ptr<Device> device(found);
  EXPECT_EQ(simulation.fleet().CameraOfDevice(device->id()), simulation.fleet().CameraNumber(1));
  EXPECT_EQ(simulation.fleet().CameraOfDevice(1), nullptr) << "the row of another camera";
}

// Otherwise the service would begin without what was added to the fleet, and write
// that over it.
TEST_F(ServiceDatabase, LockedDatabaseIsNotTakenForAnEmptyOne) {
  Simulation simulation(vptzd::BuiltInFleet(1));
  RawDatabase other(folder_.path() + "/vptz.db");
  other.Execute("BEGIN EXCLUSIVE");
  EXPECT_THROW(vptzd::StoreCameras(simulation.fleet()), vptzd::Unreadable);
  EXPECT_THROW(vptzd::RestoreAdditions(simulation.fleet()), vptzd::Unreadable);
}

TEST_F(ServiceDatabase, NothingIsLockedWhileRowsAreLookedUp) {
  RawDatabase other(folder_.path() + "/vptz.db");
  {
    const vptzd::StableRows stable;
    EXPECT_THROW(other.Execute("BEGIN EXCLUSIVE"), std::runtime_error);
    EXPECT_NE(vptzd::FoundRow<Protocol>([](Protocol** row) { return Protocol::QueryByName(row, "ONVIF"); }),
              nullptr);
  }
  other.Execute("BEGIN EXCLUSIVE; COMMIT");
}

TEST_F(ServiceDatabase, ListThatCannotBeReadIsNotEmpty) {
  const auto presets = [](std::vector<Preset*>* rows) { return Preset::QueryByPtz(rows, 1, 0, 9); };
  EXPECT_TRUE(vptzd::FoundRows<Preset>(presets).empty());
  VptzModel::Instance().Release();
  EXPECT_THROW(vptzd::FoundRows<Preset>(presets), vptzd::StorageError);
}

}  // namespace
}  // namespace vptz_test
