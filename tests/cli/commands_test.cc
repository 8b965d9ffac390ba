// What holds for every row of the command table.
#include "command.h"

#include <vptz/results.h>

#include "cli_test.h"

namespace {

using testing::HasSubstr;
using vptz_test::Page;
using vptz_test::RunResult;
using vptz_test::RunTool;
using vptz_test::Words;
using vptzctl::Argument;
using vptzctl::Command;
using vptzctl::Commands;

Words HelpOf(const Command& command) {
  Words words = vptz_test::Split(command.Name());
  words.push_back("--help");
  return words;
}

TEST(CommandsTest, EveryCommandExplainsItselfAndItsArguments) {
  for (const Command& command : Commands()) {
    const RunResult result = RunTool(HelpOf(command));
    EXPECT_EQ(result.exit_code, 0) << command.Name();
    EXPECT_EQ(result.errors, "") << command.Name();
    EXPECT_THAT(result.output, HasSubstr(command.help));
    for (const Argument& argument : command.arguments) {
      EXPECT_THAT(result.output, HasSubstr(argument.name)) << command.Name();
      EXPECT_THAT(result.output, HasSubstr(argument.help)) << command.Name();
    }
    for (const std::string& operation : command.operations) {
      EXPECT_THAT(result.output, HasSubstr(operation)) << command.Name();
    }
  }
}

TEST(CommandsTest, TheOverviewListsEveryCommandAndEveryExitCode) {
  const RunResult result = RunTool({"--help"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.errors, "");
  for (const Command& command : Commands()) EXPECT_THAT(result.output, HasSubstr("\n  " + command.Name()));
  EXPECT_THAT(result.output, HasSubstr(vptzctl::ExitCodeHelp()));
}

TEST(CommandsTest, AGroupListsItsCommands) {
  const RunResult result = RunTool({"power", "--help"});
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.output, HasSubstr("power off"));
  EXPECT_THAT(result.output, testing::Not(HasSubstr("serial")));
}

TEST(CommandsTest, ThePageDescribesEveryCommandWithItsFields) {
  const std::string page = Page();
  for (const Command& command : Commands()) {
    const std::size_t section = page.find("\n### `" + command.Name() + "`");
    ASSERT_NE(section, std::string::npos) << "docs/vptzctl.md lacks " << command.Name();
    const std::string text = page.substr(section, page.find("\n### ", section + 1) - section);
    for (const Argument& argument : command.arguments) {
      EXPECT_THAT(text, HasSubstr(argument.name)) << command.Name();
      if (argument.reported) {
        EXPECT_THAT(text, HasSubstr("\"" + FieldName(argument) + "\":"));
      }
    }
    for (const std::string& operation : command.operations) EXPECT_THAT(text, HasSubstr(operation));
  }
}

TEST(CommandsTest, ThePageNamesEveryStatus) {
  const std::string page = Page();
  for (const VptzResultMeaning& known : VptzKnownResults()) {
    if (known.result == 0) continue;
    EXPECT_THAT(page, HasSubstr("`" + std::string(known.name) + "`"));
  }
}

}  // namespace
