// Command lines that are wrong. Nothing is connected to: no bus is there.
#include "cli_test.h"

namespace {

using testing::HasSubstr;
using vptz_test::ExpectFailure;
using vptz_test::RunResult;
using vptz_test::RunTool;
using vptz_test::Words;

struct UsageCase {
  const char* name;
  Words words;
  const char* reason;
};

class UsageTest : public testing::TestWithParam<UsageCase> {};

const UsageCase kWrong[] = {
    {"NoCommand", {}, "a command is missing"},
    {"UnknownCommand", {"dance"}, "there is no command \"dance\""},
    {"UnknownCommandOfAGroup", {"power", "cycle"}, "there is no command \"cycle\""},
    {"GroupAlone", {"serial"}, "a command is missing"},
    {"TwoCommands", {"power", "on", "off"}, "off"},
    {"UnknownOption", {"stop", "1", "--roll"}, "--roll"},
    {"OptionOfAnotherCommand", {"stop", "1", "--watch"}, "--watch"},
    {"NoPtz", {"stop"}, "PTZ is required"},
    {"ZeroId", {"stop", "0"}, "PTZ \"0\" must be 1 to 4294967295"},
    {"IdBeyond32Bits", {"stop", "4294967296"}, "PTZ \"4294967296\" must be 1 to 4294967295"},
    {"IdBeyond64Bits", {"stop", "99999999999999999999"}, "is not a whole number"},
    {"NegativeId", {"stop", "-1"}, "PTZ \"-1\" must be 1 to 4294967295"},
    {"FractionalId", {"stop", "1.5"}, "is not a whole number"},
    {"HexadecimalId", {"stop", "0x1"}, "is not a whole number"},
    {"EmptyId", {"stop", ""}, "PTZ \"\" is not a whole number"},
    {"BlankBeforeId", {"stop", " 1"}, "is not a whole number"},
    {"TextBehindId", {"position", "1x"}, "is not a whole number"},
    {"ZeroDevice", {"media", "0"}, "DEVICE \"0\" must be"},
    {"TrackModeBeyond32Bits", {"track", "1", "4294967296"}, "MODE"},
    {"NegativeTrackMode", {"track", "1", "-1"}, "MODE"},
    {"NoTrackMode", {"track", "1"}, "MODE is required"},
    {"NotANumber", {"move", "to", "1", "--pan", "nan"}, "--pan \"nan\" is not a number"},
    {"Infinity", {"move", "to", "1", "--pan", "inf"}, "is not a number"},
    {"NegativeInfinity", {"move", "at", "1", "--pan", "-inf"}, "is not a number"},
    {"TooLarge", {"move", "to", "1", "--zoom", "1e999"}, "is not a number"},
    {"Garbage", {"move", "to", "1", "--pan", "left"}, "--pan \"left\" is not a number"},
    {"TextBehindNumber", {"move", "to", "1", "--pan", "5deg"}, "is not a number"},
    {"Comma", {"move", "to", "1", "--pan", "5,5"}, "is not a number"},
    {"TwoSigns", {"move", "to", "1", "--pan", "+-5"}, "is not a number"},
    {"SignAlone", {"move", "to", "1", "--pan", "-"}, "is not a number"},
    {"EmptyNumber", {"move", "to", "1", "--pan", ""}, "--pan \"\" is not a number"},
    {"OptionAsValue", {"move", "to", "1", "--pan", "--tilt", "3"}, "--pan \"--tilt\" is not a number"},
    {"ReservedNumber", {"move", "to", "1", "--pan", "-9999999"}, "is reserved"},
    {"ReservedNumberInAnotherSpelling", {"move", "at", "1", "--pan", "-9.999999e6"}, "is reserved"},
    {"NegativeSpeed", {"move", "to", "1", "--pan", "1", "--pan-speed", "-1"}, "must be 0 or more"},
    {"NoValue", {"move", "to", "1", "--pan"}, "--pan"},
    {"TwiceTheSame", {"move", "to", "1", "--pan", "1", "--pan", "2"}, "--pan"},
    {"NoAxis", {"move", "to", "1"}, "give at least one of --pan, --tilt, --zoom"},
    {"NoVelocity", {"move", "at", "1"}, "give at least one of --pan, --tilt, --zoom"},
    {"SpeedOfAnotherAxis",
     {"move", "to", "1", "--pan", "1", "--tilt-speed", "2"},
     "--tilt-speed requires --tilt"},
    {"SpeedOfAContinuousMove", {"move", "at", "1", "--pan", "1", "--pan-speed", "2"}, "--pan-speed"},
    {"SpeedWhileStoringHome", {"home", "1", "--set", "--pan-speed", "2"}, "--set excludes --pan-speed"},
    {"FlagWithAValue", {"stop", "1", "--pan=false"}, "pan"},
    {"UnknownChoice", {"serial", "reset2p0", "maybe"}, "STATE \"maybe\" is not one of on|off"},
    {"EmptyPort", {"serial", "add", ""}, "TTY \"\" is empty"},
    {"EmptyToken", {"position", "1", "--token", ""}, "--token \"\" is empty"},
    {"EmptyAddress", {"--bus", "", "status"}, "--bus \"\" is empty"},
    {"NegativeTimeOut", {"--timeout", "-1", "status"}, "--timeout \"-1\" must be 0 to 2147483647"},
    {"FractionalTimeOut", {"--timeout", "1.5", "status"}, "--timeout \"1.5\" is not a whole number"},
    {"TimeOutBeyond31Bits", {"--timeout", "2147483648", "status"}, "--timeout"},
    {"IntervalWithoutWatch", {"position", "1", "--interval", "1"}, "--interval requires --watch"},
    {"UntilStillWithoutWatch", {"position", "1", "--until-still"}, "--until-still requires --watch"},
    {"ZeroInterval", {"position", "1", "--watch", "--interval", "0"}, "must be 0.01 to 3600"},
};

INSTANTIATE_TEST_SUITE_P(Usage, UsageTest, testing::ValuesIn(kWrong),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(UsageTest, IsRefusedInWords) {
  const RunResult result = RunTool(GetParam().words);
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, testing::StartsWith("vptzctl: "));
  EXPECT_THAT(result.errors, HasSubstr(GetParam().reason));
  EXPECT_THAT(result.errors, HasSubstr("; see 'vptzctl"));
}

TEST_P(UsageTest, IsRefusedInJson) {
  Words words = GetParam().words;
  words.insert(words.begin(), "--json");
  ExpectFailure(RunTool(words), 2, "usage");
}

TEST(HelpTest, TheVersionIsTheProjects) {
  const RunResult result = RunTool({"--version"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.output, "vptzctl " VPTZ_VERSION "\n");
  EXPECT_EQ(result.errors, "");
}

TEST(HelpTest, UnitsAndLimitsAreTold) {
  const std::string help = RunTool({"move", "to", "--help"}).output;
  EXPECT_THAT(help, HasSubstr("--pan DEG"));
  EXPECT_THAT(help, HasSubstr("--pan-speed DEG/S"));
  EXPECT_THAT(help, HasSubstr("--zoom-speed X/S"));
  EXPECT_THAT(help, HasSubstr("1 to 4294967295"));
  EXPECT_THAT(help, HasSubstr("0 or more"));
  EXPECT_THAT(help, HasSubstr("only with --pan"));
}

TEST(HelpTest, AMistakePointsToTheHelpOfItsCommand) {
  EXPECT_THAT(RunTool({"move", "to", "x"}).errors, HasSubstr("see 'vptzctl move to --help'"));
  EXPECT_THAT(RunTool({"power"}).errors, HasSubstr("see 'vptzctl power --help'"));
  EXPECT_THAT(RunTool({}).errors, HasSubstr("see 'vptzctl --help'"));
}

}  // namespace
