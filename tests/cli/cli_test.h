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

// The lines of a text, the text of a file.
std::vector<std::string> Lines(const std::string& text);

// The lines of what a program that still runs has written: not the one that it may
// be writing.
std::vector<std::string> WholeLines(const std::string& text);
std::string Content(const std::string& path);

// How often a text holds another one.
std::size_t Count(const std::string& text, const std::string& part);

// Runs a command line in a terminal of its own; keys are written to its input.
Words InTerminal(const Words& words);

// Runs vptzctl with nothing around it; VPTZ_TEST_FOLDER in the environment says
// where its configuration file and its database are.
RunResult RunTool(const Words& words, const Words& environment = {});

// Why a command failed: the "error" object's members are there and agree with
// the exit code and with the line on standard error.
void ExpectFailure(const RunResult& result, int exit_code, const std::string& name);

// With a broker of its own, the reference service's rows for two cameras in the
// database, and no service.
class BusTest : public testing::Test {
 protected:
  BusTest();

  RunResult Ctl(const Words& words) { return RunTool(OnBus(words), environment()); }
  RunResult Ctl(const std::string& line) { return Ctl(Split(line)); }

  // Runs with --json a command that succeeds; its only line, parsed.
  Json CtlJson(const std::string& line);

  // The command line with the program and the bus in front; for a process, which
  // is given the environment.
  Words ToolOnBus(const std::string& line) const;
  Words environment() const { return {"VPTZ_TEST_FOLDER=" + broker.folder()}; }

  // The database that tool and service share.
  std::string database() const { return broker.folder() + "/vptz.db"; }

  // Writes a file into the test's folder; its path.
  std::string Write(const std::string& name, const std::string& text) const;

  // Changes rows of the database.
  void Sql(const std::string& statements) const;

  Broker broker;

 private:
  Words OnBus(const Words& words) const;
};

// With the reference service and two cameras as well.
class CliTest : public BusTest {
 protected:
  CliTest() { StartService({}); }

  // Starts the service with further options; returns when calls reach it.
  void StartService(const Words& options);

  // The position of camera 1 when it has come to rest.
  Json AtRest();

  // Whether a camera reaches these speeds, soon.
  bool ReachesSpeeds(const std::string& camera, double pan, double tilt, double zoom);

  std::optional<Process> service;
};

}  // namespace vptz_test

#endif
