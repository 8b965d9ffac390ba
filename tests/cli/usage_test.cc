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
    {"TwoCommands", {"power", "on", "off"}, "there is a word too many: \"off\";"},
    {"TwoWordsTooMany", {"ptz", "stop", "1", "2", "3"}, "there are words too many: \"2\", \"3\";"},
    {"WordTooManyBehindDashes", {"ptz", "stop", "--", "1", "2"}, "there is a word too many: \"2\";"},
    {"UnknownOption", {"ptz", "stop", "1", "--roll"}, "--roll"},
    {"OptionOfAnotherCommand", {"ptz", "stop", "1", "--interval"}, "--interval"},
    {"UnknownOptionBesideAMissingCamera", {"ptz", "stop", "--bogus"}, "there is no option --bogus;"},
    {"SwappedLetters", {"ptz", "move", "1", "--pna", "3"}, "no option --pna, perhaps --pan is meant"},
    {"ForgottenLetter",
     {"ptz", "move", "1", "--pan-sped=3"},
     "no option --pan-sped, perhaps --pan-speed is meant"},
    {"UnknownShortOption", {"status", "-x"}, "there is no option -x"},
    {"MistypedOptionOfEveryCommand", {"--jsno", "status"}, "no option --jsno, perhaps --json is meant"},
    {"MistypedCommand", {"ptz", "mvoe", "1", "--pan", "3"}, "no command \"mvoe\", perhaps move is meant"},
    {"MistypedGroup", {"pressets", "list", "1"}, "no command \"pressets\", perhaps preset is meant"},
    {"NoCamera", {"ptz", "stop"}, "CAMERA is required"},
    {"EmptyCamera", {"ptz", "stop", ""}, "CAMERA \"\" is empty"},
    {"ZeroProfile", {"ptz", "stop", "1", "--profile", "0"}, "--profile \"0\" must be 1 to 4294967295"},
    {"FractionalProfile", {"ptz", "stop", "1", "--profile", "1.5"}, "is not a whole number"},
    {"ProfileBeyond64Bits", {"ptz", "stop", "1", "--profile", "99999999999999999999"}, "is not a whole number"},
    {"HexadecimalProfile", {"ptz", "stop", "1", "--profile", "0x1"}, "is not a whole number"},
    {"BlankBeforeProfile", {"ptz", "stop", "1", "--profile", " 1"}, "is not a whole number"},
    {"UnusualBaudRate",
     {"serial", "line", "ttyS0", "--baud-rate", "9601"},
     "--baud-rate \"9601\" is not one of 50, 75,"},
    {"UnusualBaudRateOfACamera",
     {"device", "add-serial", "ttyS0", "--baud-rate", "1"},
     "is not one of 50, 75,"},
    {"UnknownWordForANumber",
     {"image", "set", "1", "--backlight", "maybe"},
     "--backlight \"maybe\" is not a number, nor one of off, on"},
    {"LimitWithoutWaiting", {"ptz", "move", "1", "--pan", "1", "--limit", "3"}, "--limit requires --wait"},
    {"WaitWhileStoringHome", {"ptz", "home", "1", "--set", "--wait"}, "--set excludes --wait"},
    {"NoTimeToDrive", {"ptz", "drive", "1", "--pan", "1", "--for", "0"}, "must be 0.01 to 86400"},
    {"NoPreset", {"preset", "goto", "1"}, "give at least one of TOKEN, --id"},
    {"TwoPresets", {"preset", "goto", "1", "a", "--id", "1"}, "--id excludes TOKEN;"},
    {"NameOfAKnownPreset", {"preset", "set", "1", "--id", "1", "--name", "a"}, "excludes"},
    {"NoImageValue", {"image", "set", "1"}, "give at least one of --brightness"},
    {"AllAndOneProfile", {"image", "set", "1", "--contrast", "1", "--all", "--profile", "2"}, "excludes"},
    {"UnknownNatType", {"nat", "query", "1", "--type", "ftp"}, "is not one of all|media|service|http"},
    {"PasswordOnTheCommandLine",
     {"device", "login", "1", "admin", "secret"},
     "there is a word too many; it is not repeated here, for it may be a password;"},
    {"PasswordInTwoWords",
     {"device", "login", "1", "admin", "my", "secret"},
     "there are 2 words too many; they are not repeated here, for one may be a password;"},
    {"PasswordAsAnOption",
     {"device", "login", "1", "admin", "-psecret"},
     "an option is given that is not there; it is not repeated here"},
    {"MistypedOptionOfALogin",
     {"device", "login", "1", "admin", "--pasword-file", "a"},
     "there is no option --pasword-file, perhaps --password-file is meant;"},
    {"PasswordWithoutUser", {"device", "add", "NDI", "a", "--password-stdin"}, "requires --user"},
    {"TwoPasswords", {"device", "login", "1", "admin", "--password-stdin", "--password-file", "a"}, "excludes"},
    {"NoSlave", {"device", "slave", "1"}, "give at least one of --slave, --address, --none"},
    {"NoFile", {"db", "create"}, "FILE is required"},
    {"OldVerb", {"position", "1"}, "there is no command \"position\""},
    {"TrackModeBeyond32Bits", {"ptz", "track", "1", "4294967296"}, "MODE"},
    {"NegativeTrackMode", {"ptz", "track", "1", "-1"}, "MODE"},
    {"NoTrackMode", {"ptz", "track", "1"}, "MODE is required"},
    {"NotANumber", {"ptz", "move", "1", "--pan", "nan"}, "--pan \"nan\" is not a number"},
    {"Infinity", {"ptz", "move", "1", "--pan", "inf"}, "is not a number"},
    {"NegativeInfinity", {"ptz", "drive", "1", "--pan", "-inf"}, "is not a number"},
    {"TooLarge", {"ptz", "move", "1", "--zoom", "1e999"}, "is not a number"},
    {"Garbage", {"ptz", "move", "1", "--pan", "left"}, "--pan \"left\" is not a number"},
    {"TextBehindNumber", {"ptz", "move", "1", "--pan", "5deg"}, "is not a number"},
    {"Comma", {"ptz", "move", "1", "--pan", "5,5"}, "is not a number"},
    {"TwoSigns", {"ptz", "move", "1", "--pan", "+-5"}, "is not a number"},
    {"SignAlone", {"ptz", "move", "1", "--pan", "-"}, "is not a number"},
    {"EmptyNumber", {"ptz", "move", "1", "--pan", ""}, "--pan \"\" is not a number"},
    {"OptionAsValue", {"ptz", "move", "1", "--pan", "--tilt", "3"}, "--pan \"--tilt\" is not a number"},
    {"ReservedNumber", {"ptz", "move", "1", "--pan", "-9999999"}, "is reserved"},
    {"ReservedNumberInAnotherSpelling", {"ptz", "drive", "1", "--pan", "-9.999999e6"}, "is reserved"},
    {"NegativeSpeed", {"ptz", "move", "1", "--pan", "1", "--pan-speed", "-1"}, "must be 0 or more"},
    {"NoValue", {"ptz", "move", "1", "--pan"}, "--pan lacks its value, DEG;"},
    {"NoValueBehindAnEqualsSign", {"ptz", "move", "1", "--pan="}, "--pan lacks its value, DEG;"},
    {"NoAddress", {"status", "--bus"}, "--bus lacks its value, ADDRESS;"},
    {"TwiceTheSame", {"ptz", "move", "1", "--pan", "1", "--pan", "2"}, "--pan is given more than once;"},
    {"TwoTimeOuts", {"--timeout", "1", "status", "--timeout", "2"}, "--timeout is given more than once;"},
    {"NoAxis", {"ptz", "move", "1"}, "give at least one of --pan, --tilt, --zoom"},
    {"NoVelocity", {"ptz", "drive", "1"}, "give at least one of --pan, --tilt, --zoom"},
    {"SpeedOfAnotherAxis",
     {"ptz", "move", "1", "--pan", "1", "--tilt-speed", "2"},
     "--tilt-speed requires --tilt"},
    {"SpeedOfAContinuousMove", {"ptz", "drive", "1", "--pan", "1", "--pan-speed", "2"}, "--pan-speed"},
    {"SpeedWhileStoringHome", {"ptz", "home", "1", "--set", "--pan-speed", "2"}, "--set excludes --pan-speed"},
    {"FlagWithAValue", {"ptz", "stop", "1", "--pan=false"}, "--pan takes no value;"},
    {"ShortFlagWithAValue", {"-v=3", "status"}, "-v takes no value;"},
    {"UnknownChoice", {"serial", "reset2p0", "maybe"}, "STATE \"maybe\" is not one of on|off"},
    {"EmptyPort", {"serial", "add", ""}, "TTY \"\" is empty"},
    {"EmptyAddress", {"--bus", "", "status"}, "--bus \"\" is empty"},
    {"NegativeTimeOut", {"--timeout", "-1", "status"}, "--timeout \"-1\" must be 0 to 2147483647"},
    {"FractionalTimeOut", {"--timeout", "1.5", "status"}, "--timeout \"1.5\" is not a whole number"},
    {"TimeOutBeyond31Bits", {"--timeout", "2147483648", "status"}, "--timeout"},
    {"ZeroInterval", {"ptz", "watch", "1", "--interval", "0"}, "must be 0.01 to 3600"},
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

// The library that reads command lines has messages of its own.
TEST_P(UsageTest, IsRefusedInTheToolsOwnWords) {
  const std::string errors = RunTool(GetParam().words).errors;
  for (const char* foreign : {"At Most", "At least", "required but", "required DEG", "not expected", "override",
                              "Expected", "subcommand", "you should not see"}) {
    EXPECT_THAT(errors, testing::Not(HasSubstr(foreign)));
  }
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

TEST(HelpTest, WhatIsKnownIsListed) {
  EXPECT_THAT(RunTool({"image", "set", "--help"}).output,
              testing::AllOf(HasSubstr("also off, on"), HasSubstr("known are AUTO, MANUAL, DEFAULT")));
  EXPECT_THAT(RunTool({"device", "add", "--help"}).output, HasSubstr("known are ONVIF, RS232, QX310"));
  EXPECT_THAT(RunTool({"search", "--help"}).output, HasSubstr("without it ONVIF,QX310,NDI"));
  EXPECT_THAT(RunTool({"serial", "line", "--help"}).output, HasSubstr("as serial lines have them"));
}

TEST(HelpTest, UnitsAndLimitsAreTold) {
  const std::string help = RunTool({"ptz", "move", "--help"}).output;
  EXPECT_THAT(help, HasSubstr("--pan DEG"));
  EXPECT_THAT(help, HasSubstr("--pan-speed DEG/S"));
  EXPECT_THAT(help, HasSubstr("--zoom-speed X/S"));
  EXPECT_THAT(help, HasSubstr("1 to 4294967295"));
  EXPECT_THAT(help, HasSubstr("0 or more"));
  EXPECT_THAT(help, HasSubstr("only with --pan"));
}

TEST(UsageTextTest, TheValueOfAnUnknownOptionIsNotRepeated) {
  EXPECT_THAT(RunTool({"device", "login", "1", "admin", "--password=secret"}).errors,
              testing::Not(HasSubstr("secret")));
}

TEST(UsageTextTest, AWordThatMayBeAPasswordIsNotRepeated) {
  for (const Words& words : std::vector<Words>{{"device", "login", "1", "admin", "secret"},
                                               {"device", "login", "1", "admin", "--", "secret"},
                                               {"device", "login", "1", "admin", "-psecret"},
                                               {"device", "login", "1", "admin", "--secret"},
                                               {"device", "add", "NDI", "a", "--user", "b", "secret"},
                                               {"device", "add-onvif", "a", "--user", "b", "secret"},
                                               {"device", "slave", "1", "--address", "a", "secret"},
                                               {"device", "declare", "1", "--user", "b", "secret"},
                                               {"help", "device", "login", "1", "admin", "secret"}}) {
    const RunResult result = RunTool(words);
    EXPECT_EQ(result.exit_code, 2) << result.errors;
    EXPECT_THAT(result.errors, testing::Not(HasSubstr("secret")));
    Words in_json = words;
    in_json.insert(in_json.begin(), "--json");
    EXPECT_THAT(RunTool(in_json).output, testing::Not(HasSubstr("secret")));
  }
}

TEST(HelpTest, HelpOfACommandOrGroupIsItsOwn) {
  EXPECT_EQ(RunTool({"help"}).output, RunTool({"--help"}).output);
  EXPECT_EQ(RunTool({"help", "ptz"}).output, RunTool({"ptz", "--help"}).output);
  EXPECT_EQ(RunTool({"help", "ptz", "move"}).output, RunTool({"ptz", "move", "--help"}).output);
  EXPECT_THAT(RunTool({"help", "ptz"}).output, HasSubstr("\n  ptz stop CAMERA"));
}

TEST(HelpTest, HelpOfWhatIsNoCommandIsAMistake) {
  const RunResult result = RunTool({"help", "ptz", "dance"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, HasSubstr("there is no command \"ptz dance\""));
  ExpectFailure(RunTool({"--json", "help", "dance"}), 2, "usage");
}

TEST(HelpTest, AMistakePointsToTheHelpOfItsCommand) {
  EXPECT_THAT(RunTool({"ptz", "move", "x", "--roll"}).errors, HasSubstr("see 'vptzctl ptz move --help'"));
  EXPECT_THAT(RunTool({"power"}).errors, HasSubstr("see 'vptzctl power --help'"));
  EXPECT_THAT(RunTool({}).errors, HasSubstr("see 'vptzctl --help'"));
}

}  // namespace
