#include "command.h"
#include "failures.h"
#include "pages.h"
#include "usage.h"

namespace vptzctl {
namespace {

// What man(7) would take for its own is escaped.
std::string Plain(const std::string& text) {
  std::string plain;
  for (const char c : text) {
    if (c == '\\') {
      plain += "\\e";
    } else if (c == '-') {
      plain += "\\-";
    } else {
      plain += c;
    }
  }
  const bool request = !plain.empty() && (plain[0] == '.' || plain[0] == '\'');
  return (request ? "\\&" : "") + plain;
}

std::string Bold(const std::string& text) { return "\\fB" + Plain(text) + "\\fR"; }

std::string Italic(const std::string& text) { return text.empty() ? "" : "\\fI" + Plain(text) + "\\fR"; }

std::string Item(const std::string& head, const std::string& text) {
  return ".TP\n" + head + "\n" + Plain(text) + "\n";
}

std::string ArgumentItem(const Argument& argument) {
  const std::string value = argument.placeholder.empty() ? "" : " " + Italic(argument.placeholder);
  const std::string head = argument.IsOption() ? Bold(argument.name) + value : Italic(argument.name);
  return Item(head, HelpWithRules(argument));
}

std::string CommandItem(const Command& command) {
  std::string text = Item(Bold(Usage(command)), command.help);
  if (command.arguments.empty()) return text;
  text += ".RS\n";
  for (const Argument& argument : command.arguments) text += ArgumentItem(argument);
  return text + ".RE\n";
}

std::string CommandsOf(const std::string& group) {
  std::string text;
  for (const Command& command : Commands()) {
    if (command.group == group) text += CommandItem(command);
  }
  return text;
}

std::string AllCommands() {
  std::string text = ".SH COMMANDS\n" + CommandsOf("");
  for (const Group& group : Groups()) text += ".SS " + Plain(group.help) + "\n" + CommandsOf(group.name);
  return text;
}

std::string Options() {
  std::string text = ".SH OPTIONS\nThese may stand before and behind the command.\n";
  for (const Argument& argument : GlobalArguments()) text += ArgumentItem(argument);
  text += Item(Bold("--version"), "print the version");
  return text + Item(Bold("-h") + ", " + Bold("--help"), "print help; of a command its own");
}

std::string ExitStatus() {
  std::string text = ".SH EXIT STATUS\n.nf\n";
  std::string line;
  for (const char c : ExitCodeHelp()) {
    line += c;
    if (c == '\n') {
      text += Plain(line.substr(2));
      line.clear();
    }
  }
  return text + ".fi\n";
}

std::string Environment() {
  return ".SH ENVIRONMENT\n" +
         Item(Bold("DORV_BUS_ADDRESS"), "where the message bus is, when --bus does not tell") +
         Item(Bold("NO_COLOR"), "when it is set and not empty, output has no colours on a terminal either") +
         Item(Bold("ZERK_LOG_LEVEL") + ", " + Bold("ZERK_LOG_TARGET"),
              "what the library logs, and where; standard error unless told otherwise");
}

std::string Example(const std::string& command) { return ".B " + Plain(command) + "\n.br\n"; }

std::string Examples() {
  return ".SH EXAMPLES\n" + Example("vptzctl device list") + Example("vptzctl ptz move 1 --pan -30 --tilt 10") +
         Example("vptzctl ptz watch 1 --until-still") + Example("vptzctl preset goto stage-left preset2") +
         Example("vptzctl device login 1 admin --password-file secret") +
         Example("vptzctl --json power status");
}

}  // namespace

std::string ManualPage() {
  return ".\\\" Made from the tool's command table.\n"
         ".TH VPTZCTL 1 \"\" \"vptzctl " VPTZCTL_VERSION
         "\" \"User Commands\"\n.nh\n"
         ".SH NAME\nvptzctl \\- drives pan\\-tilt\\-zoom cameras\n"
         ".SH SYNOPSIS\n.B vptzctl\n[\\fIOPTION\\fR]... \\fICOMMAND\\fR [\\fIARGUMENT\\fR]...\n"
         ".SH DESCRIPTION\nDrives cameras through the service \"vptz\" on the message bus. A camera is named "
         "by "
         "its id in the database or by its name in the network. \\(lqdone\\(rq means that the service has "
         "accepted "
         "the command; a motion goes on by itself.\n" +
         Options() + AllCommands() + ExitStatus() + Environment() + Examples();
}

}  // namespace vptzctl
