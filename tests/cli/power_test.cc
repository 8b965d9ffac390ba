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

TEST_F(CliTest, AUsbPortHasOneNameWithAndWithoutItsFolder) {
  EXPECT_EQ(CtlJson("serial add ttyUSB0")["tty"], "/dev/ttyUSB0");
  ExpectFailure(Ctl("serial add /dev/ttyUSB0 --json"), 1, "busy");
  CtlJson("serial remove ttyUSB0");
  ExpectFailure(Ctl("serial remove /dev/ttyUSB0 --json"), 1, "unknown_id");
}

TEST_F(CliTest, APortOfACameraKeepsTheSpellingThatIsStored) {
  CtlJson("device add-serial /dev/ttyS0 --name Choir");
  EXPECT_EQ(CtlJson("serial line ttyS0")["port"], "/dev/ttyS0");
  EXPECT_EQ(CtlJson("device add-serial ttyS0 --unit 2")["port"], "/dev/ttyS0");
  EXPECT_EQ(CtlJson("device add-serial ttyS1")["port"], "ttyS1");
}

// Answers the question on a terminal of its own.
class QuestionTest : public CliTest {
 protected:
  QuestionTest() { CtlJson("device add-serial ttyS0 --name Choir"); }

  RunResult Asked(const std::string& line, const std::string& answer) {
    std::string command = "exec ";
    for (const std::string& word : ToolOnBus(line)) command += word + " ";
    return vptz_test::Run({VPTZ_SCRIPT, "--quiet", "--return", "--command", command, "/dev/null"},
                          {environment()[0], "NO_COLOR=1"}, answer);
  }

  std::string PortOfTheCamera() { return CtlJson("device show Choir")["address"]; }
};

TEST_F(QuestionTest, NamesTheCamerasThatWouldMove) {
  const RunResult result = Asked("serial line ttyS7 --baud-rate 19200", "n\n");
  EXPECT_EQ(result.exit_code, 2) << result.output;
  EXPECT_THAT(result.output,
              HasSubstr("This sets the line of camera 3 (Choir) to ttyS7 at 19200 bits per second. "
                        "Go on? [y/N] "));
  EXPECT_EQ(PortOfTheCamera(), "ttyS0");
}

TEST_F(QuestionTest, OnlyYesIsYes) {
  for (const char* answer : {"\n", "yesterday\n", "\x04"}) {
    EXPECT_EQ(Asked("serial line ttyS7", answer).exit_code, 2) << answer;
  }
  EXPECT_EQ(PortOfTheCamera(), "ttyS0");
  EXPECT_EQ(Asked("serial line ttyS7", "y\n").exit_code, 0);
  EXPECT_EQ(PortOfTheCamera(), "ttyS7");
}

TEST_F(QuestionTest, IsNotAskedWhereItIsAnsweredOrNobodyIsThere) {
  EXPECT_EQ(Asked("serial line ttyS7 --yes", "").exit_code, 0);
  EXPECT_EQ(PortOfTheCamera(), "ttyS7");
  EXPECT_EQ(Ctl("serial line ttyS8").exit_code, 0);
  EXPECT_EQ(PortOfTheCamera(), "ttyS8");
}

TEST_F(CliTest, Reset2P0IsSwitched) {
  for (const std::string state : {"on", "off"}) {
    EXPECT_EQ(CtlJson("serial reset2p0 " + state),
              Json({{"command", "serial reset2p0"}, {"state", state}, {"status", 0}}));
  }
}

}  // namespace
