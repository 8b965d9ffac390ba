// A folder with broker, service and database, and programs that use them.
#ifndef VPTZ_TESTS_EXAMPLES_FIXTURE_H
#define VPTZ_TESTS_EXAMPLES_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "support/broker.h"
#include "support/process.h"
#include "support/temp_dir.h"

namespace vptz_test {

class ServiceTest : public testing::Test {
 protected:
  ServiceTest();

  std::string Database() const { return folder.path() + "/vptz.db"; }

  // Runs a program that finds broker, configuration and database.
  RunResult RunHere(const std::vector<std::string>& words, std::vector<std::string> environment = {}) const;

  TempDir folder;
  Broker broker;
  std::optional<Process> service;
};

}  // namespace vptz_test

#endif
