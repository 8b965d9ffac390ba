// Command lines as a broken script or a stranger makes them: the programs end by
// themselves, soon, with one of their exit codes.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "command.h"
#include "failures.h"
#include "reliability/reliability.h"
#include "support/process.h"
#include "support/temp_dir.h"
#include "support/wait_until.h"

namespace vptz_test {
namespace {

using Words = std::vector<std::string>;

constexpr std::chrono::seconds kLimit{10};

// Where no broker is; nothing is to be looked up or to begin to serve.
const Words kAddresses = {
    "unix:/nowhere/bus.sock", "mqtt://127.0.0.1:1",  "unix:",    "mqtt://", "mqtt://:", "bus", "unix:nowhere",
    "mqtt://127.0.0.1:99999", "mqtt://127.0.0.1:-1", "\xff\xfe", ""};

// No word but an address holds a slash: the programs write files where they are
// told to, and here that is to be the test's folder.
const Words kHostile = {"",
                        " ",
                        "-",
                        "--",
                        "---",
                        "=",
                        "-1",
                        "0",
                        "00",
                        "1",
                        "+1",
                        "+-1",
                        "1e309",
                        "-1e309",
                        "nan",
                        "inf",
                        "-inf",
                        "0x10",
                        "1,5",
                        "99999999999999999999",
                        "-99999999999999999999",
                        "2147483648",
                        "4294967296",
                        "-9999999",
                        "1.7976931348623157e308",
                        "4.9e-324",
                        "'",
                        "\"",
                        "\\",
                        "%s%n%s%n",
                        "$(false)",
                        "`false`",
                        "; false",
                        "\n",
                        "\r\n",
                        "\t",
                        "\x01\x02\x7f",
                        "\x1b[2J",
                        "\xc3\x28",
                        "\xff\xfe\xfd",
                        "\xed\xa0\x80",
                        "\xe2\x80\xae",
                        "caf\xc3\xa9",
                        "\xf0\x9f\x93\xb7",
                        "..",
                        "*",
                        "?",
                        "~",
                        "--help=1",
                        "--json=",
                        "--=",
                        "--\xff",
                        "-h1",
                        "-\x1b",
                        "true",
                        "null",
                        "{}",
                        "[]"};

class Lines {
 public:
  explicit Lines(unsigned seed) : random_(seed) {}

  std::size_t Below(std::size_t limit) { return random_() % limit; }
  bool OneIn(std::size_t count) { return Below(count) == 0; }
  const std::string& OneOf(const Words& words) { return words[Below(words.size())]; }

  std::string Value() {
    if (OneIn(60)) return std::string(65536, "9a\x1b\xff"[Below(4)]);
    if (OneIn(2)) return std::to_string(Below(5));
    return Mutated(OneOf(kHostile));
  }

  std::string Mutated(std::string word) {
    if (word.empty() || !OneIn(4)) return word;
    char& byte = word[Below(word.size())];
    byte = static_cast<char>(byte ^ (1 << Below(8)));
    if (byte == '/' || byte == '\0') byte = '_';
    return word;
  }

  Words Mutated(Words words) {
    if (OneIn(2)) return words;
    for (std::size_t i = 1 + Below(2); i > 0 && !words.empty(); --i) {
      const auto at = words.begin() + static_cast<std::ptrdiff_t>(Below(words.size()));
      switch (Below(5)) {
        case 0:
          words.erase(at);
          break;
        case 1: {
          const std::string again = *at;
          words.insert(at, again);
          break;
        }
        case 2:
          std::swap(*at, words[Below(words.size())]);
          break;
        case 3:
          words.insert(at, Value());
          break;
        default:
          if (at->find('/') == std::string::npos) *at = Mutated(*at);
      }
    }
    return words;
  }

 private:
  std::mt19937 random_;
};

// Runs programs in a folder of their own.
class CommandLines : public testing::Test {
 protected:
  CommandLines() { std::filesystem::current_path(folder_.path()); }
  ~CommandLines() override { std::filesystem::current_path(before_); }

  // Each ends with a code up to that one, and says why unless all went well.
  // Several run at once: starting them is what takes the time.
  template <class Source>
  void ExpectEnd(const std::string& program, Source lines, int count, int last_code) {
    constexpr int kAtOnce = 4;
    for (int i = 0; i < count; i += kAtOnce) {
      std::vector<Started> started;
      for (int k = 0; k < kAtOnce; ++k) started.push_back(Start(program, lines.Next()));
      for (Started& one : started) ExpectEnds(one, last_code);
    }
  }

  void Record() const {
    for (std::size_t code = 0; code < std::size(ends_); ++code) {
      if (ends_[code] > 0) RecordProperty("exit_code_" + std::to_string(code), ends_[code]);
    }
  }

  int ends_[10] = {};

 private:
  struct Started {
    Words words;
    std::unique_ptr<Process> process;
  };

  Started Start(const std::string& program, Words words) const {
    Words argv = {program};
    argv.insert(argv.end(), words.begin(), words.end());
    auto process = std::make_unique<Process>(
        argv, Words{"VPTZ_TEST_FOLDER=" + folder_.path(), "DORV_BUS_ADDRESS=unix:/nowhere/bus.sock"});
    process->CloseInput();
    return {std::move(words), std::move(process)};
  }

  void ExpectEnds(Started& one, int last_code) {
    SCOPED_TRACE(testing::PrintToString(one.words).substr(0, 2000));
    try {
      const int code = one.process->Wait(kLimit * Patience());
      EXPECT_LE(code, last_code) << one.process->Errors();
      if (code != 0) {
        EXPECT_NE(one.process->Errors(), "");
      }
      EXPECT_EQ(one.process->Output().find("serving"), std::string::npos);
      ++ends_[static_cast<std::size_t>(std::min(code, 9))];
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what();
    }
  }

  const std::filesystem::path before_ = std::filesystem::current_path();
  TempDir folder_;
};

// ---- vptzctl -------------------------------------------------------------------

class ToolLines : public Lines {
 public:
  using Lines::Lines;

  Words Next() {
    const auto& commands = vptzctl::Commands();
    const vptzctl::Command& command = commands[Below(commands.size())];
    Words words;
    AddGlobals(words);
    if (!command.group.empty()) words.push_back(command.group);
    words.push_back(command.verb);
    for (const vptzctl::Argument& argument : command.arguments) Add(argument, words);
    return Mutated(std::move(words));
  }

 private:
  void AddGlobals(Words& words) {
    if (!OneIn(3)) words.insert(words.end(), {"--bus", OneOf(kAddresses)});
    if (OneIn(3)) words.push_back("--json");
    if (OneIn(3)) words.insert(words.end(), {"--timeout", Value()});
  }

  void Add(const vptzctl::Argument& argument, Words& words) {
    if (argument.IsOption() && OneIn(2)) return;
    if (argument.IsOption()) words.push_back(argument.name);
    if (argument.kind == vptzctl::Kind::kFlag) return;
    const bool choice = !argument.choices.empty() && !OneIn(3);
    words.push_back(choice ? OneOf(argument.choices) : Value());
  }
};

TEST_F(CommandLines, OfTheToolEndWithAnExitCode) {
  ExpectEnd(VPTZCTL, ToolLines(20260401), Scaled(300, 2000), static_cast<int>(vptzctl::ExitCode::kDatabase));
  // Some were understood and found no broker.
  EXPECT_GT(ends_[static_cast<int>(vptzctl::ExitCode::kUsage)], 0);
  EXPECT_GT(ends_[static_cast<int>(vptzctl::ExitCode::kNoConnection)], 0);
  Record();
}

// ---- vptzd ---------------------------------------------------------------------

class ServiceLines : public Lines {
 public:
  using Lines::Lines;

  Words Next() {
    static const Words kOptions = {"--cameras", "--database", "--fleet", "--grace", "--view"};
    Words words = {"--bus", OneOf(kAddresses)};
    for (std::size_t i = Below(4); i > 0; --i) words.insert(words.end(), {OneOf(kOptions), Value()});
    if (OneIn(8)) words.push_back("--help");
    if (OneIn(8)) words.push_back("--version");
    words = Mutated(std::move(words));
    // Each with a file of its own, where it would take the one that it was built for.
    if (std::find(words.begin(), words.end(), "--database") == words.end()) {
      const Words own = {"--database", "own" + std::to_string(made_++)};
      words.insert(words.begin(), own.begin(), own.end());
    }
    return words;
  }

 private:
  int made_ = 0;
};

TEST_F(CommandLines, OfTheServiceEndWithAnExitCode) {
  constexpr int kLastCode = 7;
  ExpectEnd(VPTZD, ServiceLines(20260402), Scaled(100, 500), kLastCode);
  EXPECT_GT(ends_[2], 0);  // wrong usage
  Record();
}

}  // namespace
}  // namespace vptz_test
