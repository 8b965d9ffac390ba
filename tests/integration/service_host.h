// The service with options of the test's choice, started, ended and killed at
// will over one broker and one database.
#ifndef VPTZ_TESTS_INTEGRATION_SERVICE_HOST_H
#define VPTZ_TESTS_INTEGRATION_SERVICE_HOST_H

#include <vptz/model/vptzmodel.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "integration/integration.h"
#include "model/raw_database.h"

namespace vptz_test {

class ServiceHost : public testing::Test {
 protected:
  ~ServiceHost() override { VptzModel::Instance().Release(); }

  // With simulated cameras, two unless the options tell. Returns when the service
  // answers calls.
  void Serve(std::vector<std::string> options = {}) {
    const bool told = std::find(options.begin(), options.end(), "--cameras") != options.end();
    if (!told) options.insert(options.end(), {"--cameras", "2"});
    ServeReal(options);
  }

  // The same with real cameras, unless the options tell of simulated ones.
  void ServeReal(const std::vector<std::string>& options = {}) {
    std::vector<std::string> command = {VPTZD, "--bus", broker_.address(), "--database", file_};
    command.insert(command.end(), options.begin(), options.end());
    service_.emplace(command, std::vector<std::string>{"ZERK_LOG_LEVEL=notice", "ZERK_LOG_TARGET=stderr"});
    WaitUntil([&] { return Told("serving") || !service_->Running(); });
    ASSERT_TRUE(Told("serving")) << service_->Errors();
  }

  void ServeFleet(const std::string& fleet, std::vector<std::string> options = {}) {
    WriteFleet(fleet);
    options.insert(options.end(), {"--fleet", fleet_file_});
    Serve(options);
  }

  void WriteFleet(const std::string& fleet) const { std::ofstream(fleet_file_) << fleet; }

  // Whether the service has written the text to its standard output.
  bool Told(const std::string& text) { return service_->Output().find(text) != std::string::npos; }

  int End(int signal = SIGTERM) {
    service_->Signal(signal);
    return service_->Wait();
  }

  // With the service's database, which the client has not found by itself.
  std::unique_ptr<VptzClient> Connected() const {
    auto client = std::make_unique<VptzClient>();
    EXPECT_EQ(client->Connect("integration", broker_.address().c_str()), 0);
    EXPECT_EQ(VptzModel::Instance().Connect(file_), 0);
    return client;
  }

  // Waits while the service writes.
  std::string Value(const std::string& query) const {
    RawDatabase database(file_);
    database.Execute("PRAGMA busy_timeout = 5000");
    return database.Value(query);
  }

  Broker broker_;
  const std::string file_ = broker_.folder() + "/vptz.db";
  const std::string fleet_file_ = broker_.folder() + "/fleet.json";
  std::optional<Process> service_;
};

}  // namespace vptz_test

#endif
