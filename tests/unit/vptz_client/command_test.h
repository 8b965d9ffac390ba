// What holds for every operation that sends one command. Each subject's test
// instantiates CommandTest with a row per operation.
#ifndef VPTZ_TESTS_UNIT_VPTZ_CLIENT_COMMAND_TEST_H
#define VPTZ_TESTS_UNIT_VPTZ_CLIENT_COMMAND_TEST_H

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <vptz/vptz.pb.h>
#include <vptz/vptz_client.h>

#include "config_file.h"
#include "support/recording_bus.h"
#include "support/recording_log.h"

namespace vptz_test {

// A client whose configured time-out is 4 s, on a recording bus and with a
// database without rows.
class ClientTest : public testing::Test {
 protected:
  ClientTest();

  // What a test has the bus do ends with it, while its client still lives.
  void TearDown() override { bus.on_call = nullptr; }

  // Runs SQL statements on the database; references need not hold.
  static void Store(const std::string& statements);

  // The synchronous calls so far, one text each: the method name and, when the
  // command has one, its sub-message in text format. Of a NAT command just
  // device, type and address are told.
  std::vector<std::string> Sent() const;

  // The one synchronous call that has been made.
  BusCall OnlyCall() const;

  // The command that it carried.
  tutorial::VptzCommand SentCommand() const;

  RecordingLog log;
  RecordingBus bus;
};

// A ClientTest whose client has connected; what that sent and logged is
// forgotten.
class ConnectedClientTest : public ClientTest {
 protected:
  ConnectedClientTest();

  VptzClient client;
};

struct CommandCase {
  std::string operation;
  std::string method;
  std::string fields;  // the command without its method name, in text format
  std::function<int(VptzClient&, int timeout)> call;
  std::string rows = {};  // statements that store what the operation looks up
};

std::ostream& operator<<(std::ostream& out, const CommandCase& row);

class CommandTest : public ClientTest, public testing::WithParamInterface<CommandCase> {
 protected:
  CommandTest();

  int CallConnected(int timeout = 0);
};

std::string CommandName(const testing::TestParamInfo<CommandCase>& info);

// A response that holds nothing but a status code.
tutorial::VptzResponse StatusReply(int status_code);

// The answer to a query for an outside address.
tutorial::VptzResponse AddressReply(const std::string& address, int status_code = 0);

// The command that a synchronous call carries.
tutorial::VptzCommand CommandOf(const BusCall& call);

}  // namespace vptz_test

#endif
