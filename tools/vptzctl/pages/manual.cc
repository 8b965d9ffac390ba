#include "command.h"
#include "failures.h"
#include "library_files.h"
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
         Item(Bold("DORV_BUS_SETTINGS"),
              "the file with user, password and TLS of the bus; without it /etc/dorv/bus.conf") +
         Item(Bold("DORV_BUS_CONNECT_TIMEOUT"),
              "how long connecting to the bus may take, whole seconds; --timeout sets it unless it is set") +
         Item(Bold("ZERK_LOG_LEVEL"),
              "the least severe level that the library logs: error, warning (unless told otherwise), notice or "
              "detail") +
         Item(Bold("ZERK_LOG_TARGET"), "where it logs: stderr (unless told otherwise), syslog, or file:PATH") +
         Item(Bold("NO_COLOR"), "when it is set and not empty, output has no colours on a terminal either") +
         Item(Bold("TERM"), "on a terminal of the kind dumb output has no colours and is not redrawn") +
         Item(Bold("TZ"), "the time zone of the times that monitor prints") +
         Item(Bold("XDG_STATE_HOME") + ", " + Bold("HOME") + ", " + Bold("INPUTRC"),
              "where the shell remembers lines, and how its keys are set; see readline(3)");
}

std::string Files() {
  return ".SH FILES\n" +
         Item(Bold(ConfigFile()), "the library's time-out and preset shift; without it there is no database") +
         Item(Bold(DatabaseFile()), "the library's database, which the service writes") +
         Item(Bold("/etc/dorv/bus.conf"), "user, password and TLS of the message bus, when there are any") +
         Item(Bold("~/.local/state/vptzctl/history"),
              "lines that were typed in the shell, when XDG_STATE_HOME does not tell another folder") +
         Item(Bold("/run/dorv/bus.sock"), "where the message bus is unless something else is told");
}

std::string SeeAlso() {
  return ".SH SEE ALSO\n.BR vptzd (1),\n.BR mosquitto (8),\n.BR readline (3),\n.BR sqlite3 (1)\n";
}

std::string Example(const std::string& command) { return ".B " + Plain(command) + "\n.br\n"; }

std::string Examples() {
  return ".SH EXAMPLES\n" + Example("vptzctl device list") + Example("vptzctl ptz move 1 --pan -30 --tilt 10") +
         Example("vptzctl ptz watch 1 --until-still") + Example("vptzctl preset goto stage-left preset2") +
         Example("vptzctl device login 1 admin --password-file secret") +
         Example("vptzctl --json power status") + Example("vptzctl shell < commands") +
         Example("vptzctl preset export 1 presets.json");
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
         Options() + AllCommands() + ExitStatus() + Environment() + Files() + Examples() + SeeAlso();
}

}  // namespace vptzctl
