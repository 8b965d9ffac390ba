// Completion of what the database knows, asked of the tool by the verb "complete"
// and by the scripts of the three shells.
#include <chrono>
#include <filesystem>
#include <sstream>

#include "cli_test.h"
#include "support/wait_until.h"
#include "words.h"

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsSubsetOf;
using testing::Not;
using vptz_test::BusTest;
using vptz_test::Process;
using vptz_test::RunResult;
using vptz_test::WaitUntil;
using vptz_test::Words;

bool IsInstalled(const std::string& program) {
  return vptz_test::Run({"sh", "-c", "command -v " + program}).exit_code == 0;
}

// The candidates that each line begins with.
Words Candidates(const std::string& output) {
  std::istringstream lines(output);
  Words candidates;
  for (std::string line; std::getline(lines, line);) candidates.push_back(line.substr(0, line.find('\t')));
  return candidates;
}

class CompletionOfValuesTest : public BusTest {
 protected:
  // The tool gives up where it has to wait, as on a machine that is busy: asked
  // until it has answered.
  RunResult Complete(const Words& words) {
    Words all = {"complete", "--"};
    all.insert(all.end(), words.begin(), words.end());
    RunResult result;
    WaitUntil([&] {
      result = vptz_test::RunTool(all, environment());
      return !result.output.empty();
    });
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.errors, "");
    return result;
  }

  Words Offered(const Words& words) { return Candidates(Complete(words).output); }

  // What bash offers for the last of the words, typed as they are.
  Words OfferedByBash(const Words& words) {
    constexpr char kComplete[] = R"bash(
. "$1"
shift
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_vptzctl
printf '%s\n' "${COMPREPLY[@]}")bash";
    Words argv = {"bash", "-c", kComplete, "bash", VPTZCTL_COMPLETION, VPTZCTL};
    argv.insert(argv.end(), words.begin(), words.end());
    RunResult result;
    WaitUntil([&] {
      result = vptz_test::Run(argv, environment());
      return result.output != "\n";
    });
    EXPECT_EQ(result.errors, "");
    return Candidates(result.output);
  }

  // An environment in which a shell finds the tool by its name.
  Words ShellEnvironment() {
    const std::filesystem::path link = broker.folder() + "/vptzctl";
    if (!std::filesystem::exists(link)) std::filesystem::create_symlink(VPTZCTL, link);
    return {environment()[0], "PATH=" + broker.folder() + ":" + std::getenv("PATH"), "HOME=" + broker.folder(),
            "XDG_CONFIG_HOME=" + broker.folder(), "XDG_DATA_HOME=" + broker.folder()};
  }

  Words OfferedByFish(const std::string& line) {
    const std::string script =
        std::string("source ") + VPTZCTL_COMPLETION_FISH + "; complete -C '" + line + "'";
    RunResult result;
    WaitUntil([&] {
      result = vptz_test::Run({"fish", "--no-config", "-c", script}, ShellEnvironment());
      return !result.output.empty();
    });
    EXPECT_EQ(result.errors, "");
    return Candidates(result.output);
  }
};

TEST_F(CompletionOfValuesTest, CamerasAreOfferedByNameAndId) {
  EXPECT_EQ(Offered({"ptz", "move", ""}), (Words{"camera-1", "camera-2", "1", "2"}));
  EXPECT_EQ(Offered({"--json", "device", "show", "c"}), (Words{"camera-1", "camera-2"}));
  EXPECT_EQ(Offered({"device", "slave", "1", "--slave", "2"}), Words{"2"});
  EXPECT_THAT(Complete({"ptz", "stop", "1"}).output, HasSubstr("1\tcamera-1\n"));
}

TEST_F(CompletionOfValuesTest, ANameOfSeveralCamerasIsNotOffered) {
  Sql("UPDATE device SET host_name = 'twin'");
  EXPECT_EQ(Offered({"ptz", "move", ""}), (Words{"1", "2"}));
}

TEST_F(CompletionOfValuesTest, PresetsAreThoseOfTheCamera) {
  Sql("DELETE FROM preset WHERE ptz = 2 AND preset_id = 2");
  EXPECT_THAT(Offered({"preset", "goto", "camera-1", ""}), Contains("preset2"));
  EXPECT_THAT(Offered({"preset", "goto", "camera-2", ""}), Not(Contains("preset2")));
  EXPECT_EQ(Offered({"preset", "remove", "1", "--id", ""}), (Words{"1", "2", "3"}));
  EXPECT_THAT(Complete({"preset", "goto", "1", "preset1"}).output, HasSubstr("preset1\tStage\n"));
  EXPECT_EQ(Offered({"preset", "goto", "1", "Le"}), Words{"Lectern"});
}

TEST_F(CompletionOfValuesTest, ProfilesAreCountedByKind) {
  EXPECT_EQ(Offered({"ptz", "stop", "1", "--profile", ""}), Words{"1"});
  EXPECT_EQ(Offered({"image", "show", "1", "--profile", ""}), (Words{"1", "2"}));
}

TEST_F(CompletionOfValuesTest, ProtocolsComeFromTheDatabase) {
  EXPECT_THAT((Words{"ONVIF", "NDI", "RS232"}), IsSubsetOf(Offered({"device", "list", "--protocol", ""})));
  EXPECT_EQ(Offered({"device", "add", "VIS"}), Words{"VISCA_OVER_IP"});
  EXPECT_EQ(Offered({"search", "--protocols", "ONVIF,QX"}), Words{"ONVIF,QX310"});
  EXPECT_THAT(Offered({"search", "--protocols", "ONVIF,"}), Not(Contains("ONVIF,ONVIF")));
}

TEST_F(CompletionOfValuesTest, SignalsChoicesAndCommandsAreKnown) {
  EXPECT_EQ(Offered({"monitor", "--signal", ""}), (Words{"update_devices", "finish/search_device"}));
  EXPECT_EQ(Offered({"serial", "reset2p0", ""}), (Words{"on", "off"}));
  EXPECT_EQ(Offered({"image", "set", "1", "--auto-focus", ""}), (Words{"off", "on", "manual", "auto"}));
  EXPECT_EQ(Offered({"help", "ptz", "st"}), Words{"stop"});
  EXPECT_EQ(Offered({"ptz", "move", "1", "--pan"}), (Words{"--pan", "--pan-speed"}));
}

TEST_F(CompletionOfValuesTest, AnswersWithinATenthOfASecond) {
  const auto limit = std::chrono::milliseconds(100) * vptz_test::Patience();
  // The machine may be busy with other things, but not every time.
  EXPECT_TRUE(WaitUntil([&] {
    const auto begin = std::chrono::steady_clock::now();
    const RunResult result = vptz_test::RunTool({"complete", "ptz", "move", ""}, environment());
    return std::chrono::steady_clock::now() - begin < limit && !result.output.empty();
  }));
}

TEST_F(CompletionOfValuesTest, ALockedDatabaseIsNotWaitedFor) {
  Process locker({"sqlite3", "-bail", database()});
  locker.Write("BEGIN EXCLUSIVE;\nSELECT 'locked';\n");
  ASSERT_TRUE(WaitUntil([&] { return locker.Output() == "locked\n"; }));
  const auto begin = std::chrono::steady_clock::now();
  const RunResult result = vptz_test::RunTool({"complete", "ptz", "move", ""}, environment());
  // Without the limit it takes some seconds.
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1) * vptz_test::Patience());
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.output + result.errors, "");
}

TEST_F(CompletionOfValuesTest, WithoutADatabaseThereIsSilence) {
  const RunResult result =
      vptz_test::RunTool({"complete", "ptz", "move", ""}, {"VPTZ_TEST_FOLDER=/nonexistent"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.output + result.errors, "");
}

TEST_F(CompletionOfValuesTest, TheBusIsLeftAlone) {
  Words variables = environment();
  variables.push_back("DORV_BUS_ADDRESS=" + broker.address());
  const std::string before = broker.Log();
  EXPECT_TRUE(WaitUntil([&] {
    return !vptz_test::RunTool({"complete", "ptz", "move", ""}, variables).output.empty();
  }));
  EXPECT_EQ(broker.Log(), before);
}

TEST_F(CompletionOfValuesTest, NamesThatWouldDisturbATerminalAreNotOffered) {
  Sql("UPDATE device SET host_name = 'one' || char(27) || '[2J' WHERE id = 1;"
      "UPDATE preset SET name = 'a' || char(10) || 'b' WHERE ptz = 2 AND preset_id = 1;");
  EXPECT_EQ(Offered({"ptz", "move", ""}), (Words{"camera-2", "1", "2"}));
  EXPECT_EQ(Offered({"preset", "goto", "2", ""}),
            (Words{"preset1", "preset2", "preset3", "Lectern", "Audience"}));
}

TEST_F(CompletionOfValuesTest, BashAsksTheTool) {
  EXPECT_EQ(OfferedByBash({"ptz", "move", "ca"}), (Words{"camera-1", "camera-2"}));
  EXPECT_EQ(OfferedByBash({"preset", "goto", "camera-1", "p"}), (Words{"preset1", "preset2", "preset3"}));
  EXPECT_EQ(OfferedByBash({"help", "power", "st"}), Words{"status"});
}

TEST_F(CompletionOfValuesTest, BashGetsNamesAsTheyAreTyped) {
  Sql("UPDATE device SET host_name = 'Stage left' WHERE id = 1; UPDATE preset SET token = 'a''b' WHERE "
      "preset_id = 2;");
  EXPECT_EQ(OfferedByBash({"ptz", "move", "St"}), Words{"Stage\\ left"});
  EXPECT_EQ(OfferedByBash({"ptz", "move", "\"St"}), Words{"Stage left"});
  EXPECT_EQ(OfferedByBash({"preset", "goto", "Stage\\ left", "a"}), Words{"a\\'b"});
}

TEST_F(CompletionOfValuesTest, FishOffersCommandsOptionsAndValues) {
  if (!IsInstalled("fish")) GTEST_SKIP() << "fish is not installed";
  EXPECT_EQ(vptz_test::Run({"fish", "--no-execute", VPTZCTL_COMPLETION_FISH}).errors, "");
  EXPECT_EQ(OfferedByFish("vptzctl ptz st"), Words{"stop"});
  EXPECT_EQ(OfferedByFish("vptzctl --bus ptz pow"), Words{"power"});
  EXPECT_EQ(OfferedByFish("vptzctl ptz move 1 --pan"), (Words{"--pan", "--pan-speed"}));
  EXPECT_EQ(OfferedByFish("vptzctl ptz move ca"), (Words{"camera-1", "camera-2"}));
  EXPECT_EQ(OfferedByFish("vptzctl preset goto --profile 1 camera-2 pre"),
            (Words{"preset1", "preset2", "preset3"}));
  EXPECT_EQ(OfferedByFish("vptzctl serial reset2p0 on"), Words{"on"});
  EXPECT_EQ(OfferedByFish("vptzctl help power o"), (Words{"off", "on"}));
}

TEST_F(CompletionOfValuesTest, ZshCompletesWhatAPersonTypes) {
  if (!IsInstalled("zsh")) GTEST_SKIP() << "zsh is not installed";
  EXPECT_EQ(vptz_test::Run({"zsh", "-n", VPTZCTL_COMPLETION_ZSH}).errors, "");
  std::filesystem::copy_file(VPTZCTL_COMPLETION_ZSH, broker.folder() + "/_vptzctl");
  Words variables = ShellEnvironment();
  variables.push_back("TERM=dumb");
  Process terminal({VPTZ_SCRIPT, "--quiet", "--return", "--command", "zsh -f -i", "/dev/null"}, variables);
  const auto shows = [&terminal](const std::string& text) {
    return WaitUntil([&] { return terminal.Output().find(text) != std::string::npos; });
  };
  terminal.Write("fpath=(" + broker.folder() +
                 " $fpath); autoload -Uz compinit; compinit -D -u; print com''pletes\n");
  ASSERT_TRUE(shows("completes")) << terminal.Output();
  terminal.Write("vptzctl ptz sto\t");
  EXPECT_TRUE(shows("vptzctl ptz stop")) << terminal.Output();
  terminal.Write("came\t2 --prof\t");
  EXPECT_TRUE(shows("camera-2 --profile")) << terminal.Output();
  terminal.Write("\x15vptzctl preset goto camera-1 preset\t\t");
  EXPECT_TRUE(shows("-- Lectern")) << terminal.Output();
  terminal.Write(
      "\x15"
      "exit\n");
  EXPECT_EQ(terminal.Wait(), 0);
}

TEST(SplitWordsTest, ReadsALineAsAShellDoes) {
  using vptzctl::SplitWords;
  EXPECT_EQ(SplitWords("ptz  move 'Stage left' --pan\t-30 # to the door").words,
            (Words{"ptz", "move", "Stage left", "--pan", "-30"}));
  EXPECT_EQ(SplitWords(R"(a\ b "c\"d\e" '\' '' "" x#y 'it'\''s')").words,
            (Words{"a b", "c\"d\\e", "\\", "", "", "x#y", "it's"}));
  EXPECT_EQ(SplitWords("one\\\ntwo \"three\nfour\"").words, (Words{"onetwo", "three\nfour"}));
  EXPECT_EQ(SplitWords("  # nothing").words, Words{});
  for (const char* line : {"'open", "\"open", "\"open\\\"", "end\\"})
    EXPECT_FALSE(SplitWords(line).complete) << line;
}

TEST(SplitWordsTest, ReadsBackWhatItEscaped) {
  for (const std::string word :
       {"", "a b", "it's", "\"", "#", "~", "$x`y`", "\\", "a;b|c&d>e", "K\xc3\xb6ln", "(*?)"}) {
    EXPECT_EQ(vptzctl::SplitWords(vptzctl::Escaped(word)).words, Words{word}) << word;
    EXPECT_EQ(vptz_test::Run({"bash", "-c", "printf %s " + vptzctl::Escaped(word)}).output, word);
  }
}

}  // namespace
