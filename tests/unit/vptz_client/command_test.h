// What holds for every operation that sends one command. Each subject's test
// instantiates CommandTest with a row per operation.
#ifndef VPTZ_TESTS_UNIT_VPTZ_CLIENT_COMMAND_TEST_H
#define VPTZ_TESTS_UNIT_VPTZ_CLIENT_COMMAND_TEST_H

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

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
};

std::ostream& operator<<(std::ostream& out, const CommandCase& row);

class CommandTest : public ClientTest, public testing::WithParamInterface<CommandCase> {
 protected:
  int CallConnected(int timeout = 0);
};

std::string CommandName(const testing::TestParamInfo<CommandCase>& info);

// A response that holds nothing but a status code.
tutorial::VptzResponse StatusReply(int status_code);

}  // namespace vptz_test

#endif
