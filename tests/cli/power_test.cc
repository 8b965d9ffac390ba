#include "cli_test.h"

namespace {

using testing::HasSubstr;
using vptz_test::CliTest;
using vptz_test::ExpectFailure;
using vptz_test::Json;
using vptz_test::RunResult;

TEST_F(CliTest, PowerStatusIsAnAnswerWhateverItIs) {
  EXPECT_EQ(CtlJson("power status"), Json({{"command", "power status"}, {"power", "on"}, {"status", 1}}));
  CtlJson("power off");
  EXPECT_EQ(CtlJson("power status"), Json({{"command", "power status"}, {"power", "off"}, {"status", 0}}));
  const RunResult words = Ctl("power status");
  EXPECT_EQ(words.exit_code, 0);
  EXPECT_THAT(words.output, HasSubstr("off"));
}

TEST_F(CliTest, PoweringOffIsFeltByTheCamera) {
  EXPECT_EQ(CtlJson("power off"), Json({{"command", "power off"}, {"status", 0}}));
  ExpectFailure(Ctl("ptz move 1 --pan 3 --json"), 1, "powered_off");
  EXPECT_EQ(CtlJson("power on"), Json({{"command", "power on"}, {"status", 0}}));
  CtlJson("ptz move 1 --pan 3");
}

TEST_F(CliTest, ASerialPortIsAddedOnceAndRemovedOnce) {
  EXPECT_EQ(CtlJson("serial add /dev/ttyUSB0"),
            Json({{"command", "serial add"}, {"tty", "/dev/ttyUSB0"}, {"status", 0}}));
  ExpectFailure(Ctl("serial add /dev/ttyUSB0 --json"), 1, "busy");
  EXPECT_EQ(CtlJson("serial remove /dev/ttyUSB0"),
            Json({{"command", "serial remove"}, {"tty", "/dev/ttyUSB0"}, {"status", 0}}));
  ExpectFailure(Ctl("serial remove /dev/ttyUSB0 --json"), 1, "unknown_id");
}

TEST_F(CliTest, FlushForgetsAllSerialPorts) {
  CtlJson("serial add /dev/ttyUSB0");
  CtlJson("serial add /dev/ttyUSB1");
  EXPECT_EQ(CtlJson("serial flush"), Json({{"command", "serial flush"}, {"status", 0}}));
  ExpectFailure(Ctl("serial remove /dev/ttyUSB1 --json"), 1, "unknown_id");
}

TEST_F(CliTest, APortsNameMayLookLikeACommandOrAnOption) {
  EXPECT_EQ(CtlJson("serial add status")["tty"], "status");
  EXPECT_EQ(Ctl("serial add -- --json").exit_code, 0);
  EXPECT_EQ(CtlJson("serial remove status")["tty"], "status");
  EXPECT_EQ(Ctl("serial remove -- --json").exit_code, 0);
}

TEST_F(CliTest, Reset2P0IsSwitched) {
  for (const std::string state : {"on", "off"}) {
    EXPECT_EQ(CtlJson("serial reset2p0 " + state),
              Json({{"command", "serial reset2p0"}, {"state", state}, {"status", 0}}));
  }
}

}  // namespace
