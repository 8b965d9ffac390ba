#include "usage.h"

#include <limits>

namespace vptzctl {
namespace {

std::string InBrackets(const Argument& argument) {
  const std::string value = argument.placeholder.empty() ? "" : " " + argument.placeholder;
  if (argument.IsOption())
    return "[" + argument.name + value + "]" + (argument.kind == Kind::kTexts ? "..." : "");
  if (argument.kind == Kind::kTexts) return "[" + argument.name + "...]";
  return argument.optional ? "[" + argument.name + "]" : argument.name;
}

}  // namespace

std::string Usage(const Command& command) {
  std::string usage = command.Name();
  for (const Argument& argument : command.arguments) usage += " " + InBrackets(argument);
  return usage;
}

const std::vector<Argument>& GlobalArguments() {
  static const std::vector<Argument> arguments = {
      Text("--bus", "ADDRESS",
           "where the message bus is: mqtt://host[:port] or unix:/path; without it $DORV_BUS_ADDRESS, else "
           "unix:/run/dorv/bus.sock"),
      Integer("--timeout", {0, std::numeric_limits<int>::max()},
              "seconds that a command may take; 0 is the configured time-out")
          .Placeholder("SECONDS"),
      Flag("--json", "print one JSON object a line"),
      Flag("--verbose", "show the library's log on standard error").Letter("-v"),
  };
  return arguments;
}

}  // namespace vptzctl
