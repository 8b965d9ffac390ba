#include <algorithm>

#include "command.h"
#include "parser.h"
#include "session.h"

namespace vptzctl {
namespace {

bool IsGroup(const std::string& name) {
  const auto& groups = Groups();
  return std::any_of(groups.begin(), groups.end(), [&](const Group& group) { return group.name == name; });
}

bool IsCommand(const std::string& name) {
  const auto& commands = Commands();
  return std::any_of(commands.begin(), commands.end(),
                     [&](const Command& command) { return command.Name() == name; });
}

// What "vptzctl WORDS... --help" prints.
std::string HelpText(const std::vector<std::string>& words) {
  std::vector<const char*> argv = {"vptzctl"};
  for (const std::string& word : words) argv.push_back(word.c_str());
  argv.push_back("--help");
  return Parse(static_cast<int>(argv.size()), argv.data()).text;
}

// What stands behind a command's own words is not repeated: it may be a password.
std::string WhyNoHelp(std::vector<std::string> words) {
  constexpr std::size_t kLongestCommand = 2;
  const bool alone = IsCommand(words[0]);
  words.resize(std::min(words.size(), alone ? 1 : kLongestCommand));
  const std::string name = Joined(words, " ");
  const std::string reason = IsCommand(name) ? "there is more than the command \"" + name + "\""
                                             : "there is no command \"" + name + "\"";
  return reason + "; 'vptzctl help' lists them";
}

ExitCode Help(Session& session) {
  const std::vector<std::string> words = session.Texts("COMMAND");
  const std::string name = Joined(words, " ");
  if (!name.empty() && !IsGroup(name) && !IsCommand(name)) {
    throw CommandError({"usage", WhyNoHelp(words), ExitCode::kUsage});
  }
  session.output.Print(HelpText(words));
  return ExitCode::kDone;
}

}  // namespace

std::vector<Command> HelpCommands() {
  return {{"",
           "help",
           "Explains a command and its options, or lists the commands of a group, or all commands.",
           {},
           {Texts("COMMAND", "", "the command, such as ptz move, or the group, such as ptz")
                .Optional()
                .Unreported()},
           {},
           Help,
           Needs::kNothing}};
}

}  // namespace vptzctl
