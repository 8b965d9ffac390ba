// A simulation whose cameras have rows in a database of the test's own.
#ifndef VPTZ_TESTS_UNIT_SERVICE_STORED_SIMULATION_H
#define VPTZ_TESTS_UNIT_SERVICE_STORED_SIMULATION_H

#include <gtest/gtest.h>
#include <vptz/model/vptzmodel.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fleet/start.h"
#include "simulation.h"
#include "store/database.h"
#include "store/row_access.h"
#include "support/temp_dir.h"

namespace vptz_test {

class StoredSimulation : public testing::Test {
 protected:
  StoredSimulation() { Begin(vptzd::BuiltInFleet(2)); }
  ~StoredSimulation() override { VptzModel::Instance().Release(); }

  // As the service begins, with whatever rows are there.
  template <class Cameras>
  void Begin(const Cameras& cameras) {
    EXPECT_TRUE(vptzd::OpenDatabase(folder_.path() + "/vptz.db", VPTZD_SEED_FILE));
    simulation_ = std::make_unique<Simulation>(cameras);
    vptzd::StoreCameras(fleet());
    vptzd::RestoreAdditions(fleet());
    simulation_->context().emit = [this](const char* signal, const std::string& payload) {
      signals_.emplace_back(signal);
      payloads_.push_back(payload);
    };
  }

  vptzd::Fleet& fleet() { return simulation_->fleet(); }
  int Status(const std::string& method, const tutorial::VptzCommand& command = {}) {
    return simulation_->Status(method, command);
  }
  void Wait(std::chrono::nanoseconds elapsed) { simulation_->Wait(elapsed); }

  // The signals since the last time, and what they brought.
  std::vector<std::string> TakeSignals() { return std::exchange(signals_, {}); }
  std::vector<std::string> TakePayloads() { return std::exchange(payloads_, {}); }

  void Put(vptzd::FaultKind kind) { fleet().SetFaults({{kind, 1, "", "", std::chrono::milliseconds(500)}}); }

  static tutorial::VptzCommand OfDevice(unsigned device, const std::string& token = "") {
    tutorial::VptzCommand command;
    command.mutable_device_command()->set_device_id(device);
    if (!token.empty()) command.mutable_device_command()->set_token(token);
    return command;
  }
  static tutorial::VptzCommand OfPreset(unsigned ptz, const std::string& token, const std::string& name = "") {
    tutorial::VptzCommand command;
    command.mutable_ptz_command()->set_ptz_id(ptz);
    command.mutable_ptz_command()->set_preset_token(token);
    command.mutable_ptz_command()->set_preset_name(name);
    return command;
  }

  template <class Row>
  static std::unique_ptr<Row> RowOf(unsigned id) {
    return vptzd::FoundRow<Row>([&](Row** row) { return Row::QueryById(row, id); });
  }
  template <class Row>
  static std::size_t RowCount() {
    return vptzd::FoundRows<Row>([](std::vector<Row*>* rows) { return Row::QueryAll(rows, 0, 65535); }).size();
  }

  std::unique_ptr<Simulation> simulation_;

 private:
  TempDir folder_;
  std::vector<std::string> signals_;
  std::vector<std::string> payloads_;
};

}  // namespace vptz_test

#endif
