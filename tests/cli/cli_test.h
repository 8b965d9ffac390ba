// vptzctl as a person or a script runs it.
#ifndef VPTZ_TESTS_CLI_CLI_TEST_H
#define VPTZ_TESTS_CLI_CLI_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/broker.h"
#include "support/process.h"

namespace vptz_test {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;
using Words = std::vector<std::string>;

// The words of a command line, split at blanks.
Words Split(const std::string& line);

// The text of docs/vptzctl.md.
std::string Page();

// Runs vptzctl with nothing around it.
RunResult RunTool(const Words& words, const Words& environment = {});

// Why a command failed: the "error" object's members are there and agree with
// the exit code and with the line on standard error.
void ExpectFailure(const RunResult& result, int exit_code, const std::string& name);

// With a broker of its own and no service.
class BusTest : public testing::Test {
 protected:
  RunResult Ctl(const Words& words) { return RunTool(OnBus(words)); }
  RunResult Ctl(const std::string& line) { return Ctl(Split(line)); }

  // Runs with --json a command that succeeds; its only line, parsed.
  Json CtlJson(const std::string& line);

  // The command line with the program and the bus in front.
  Words ToolOnBus(const std::string& line) const;

  Broker broker;

 private:
  Words OnBus(const Words& words) const;
};

// With the reference service and two cameras as well.
class CliTest : public BusTest {
 protected:
  CliTest();

  // The position of camera 1 when it has come to rest.
  Json AtRest();

  std::optional<Process> service;
};

}  // namespace vptz_test

#endif
