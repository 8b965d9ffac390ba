// Every public operation has a command, or a reason why it has none.
#include <fstream>
#include <map>
#include <regex>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command.h"

namespace {

// Not a person's to call from a command line.
const std::map<std::string, std::string> kWithoutCommand = {
    {"VptzClient", "each command makes its client"},
    {"Connect", "each command connects"},
    {"Disconnect", "the end of a command disconnects"},
    {"Release", "the same"},
    {"Init", "Connect with fixed arguments"},
    {"Deinit", "does nothing"},
    {"GetVptzTimeout", "tells the time-out in messages"},
    {"CallAsync", "raw call: its arguments are messages"},
    {"HandleUpdateSignal", "does nothing"},
    {"LoadDevices", "every lookup does it"},
    {"ClearDevices", "every lookup does it"},
    {"SetMediaInfoNAT", "writes into a handle; nat query asks for the same addresses and tells each result"},
    {"SetVptzClient", "a handle's own"},
    {"GetPtzById", "a look into a handle"},
    {"GetMediaById", "a look into a handle"},
    {"LoadDeviceInfo", "every lookup does it"},
    {"LoadPtzInfo", "every lookup does it"},
    {"LoadMediaInfo", "every lookup does it"},
    {"LoadPtzProfiles", "tells no results; profile ptz asks for the same"},
    {"LoadMediaProfiles", "tells no results; profile media asks for the same"},
};

// Names behind which a parenthesis opens, in the lines of a class that are
// declarations.
std::set<std::string> OperationsIn(const std::string& path) {
  std::ifstream header(path);
  std::set<std::string> names;
  const std::regex declaration(R"(^  (?:[\w:<>]+[\s*&]+)+(\w+)\()");
  std::smatch match;
  for (std::string line; std::getline(header, line);) {
    if (std::regex_search(line, match, declaration)) names.insert(match[1]);
  }
  return names;
}

std::set<std::string> PublicOperations() {
  std::set<std::string> names = OperationsIn(VPTZ_CLIENT_HEADER);
  names.merge(OperationsIn(VPTZ_DEVICE_HEADER));
  return names;
}

std::set<std::string> OperationsOfCommands() {
  std::set<std::string> names;
  for (const vptzctl::Command& command : vptzctl::Commands()) {
    names.insert(command.operations.begin(), command.operations.end());
  }
  return names;
}

TEST(OperationsTest, TheHeadersAreUnderstood) {
  const std::set<std::string> client = OperationsIn(VPTZ_CLIENT_HEADER);
  for (const char* name :
       {"Version", "QueryDeviceById", "QueryDeviceByProtocol", "AbsoluteMove", "EnableNAT"}) {
    EXPECT_EQ(client.count(name), 1u) << name;
  }
  EXPECT_GE(client.size(), 85u);
}

TEST(OperationsTest, EachHasACommandOrAReason) {
  const std::set<std::string> with_command = OperationsOfCommands();
  for (const std::string& name : PublicOperations()) {
    EXPECT_NE(with_command.count(name) > 0, kWithoutCommand.count(name) > 0)
        << name << " needs a command, or a reason for having none; not both";
  }
}

TEST(OperationsTest, CommandsNameOnlyOperationsThatAreThere) {
  const std::set<std::string> there = PublicOperations();
  for (const std::string& name : OperationsOfCommands()) {
    EXPECT_TRUE(there.count(name) > 0 || name.rfind("VptzModel::", 0) == 0) << name;
  }
}

}  // namespace
