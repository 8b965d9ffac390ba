#include "table.h"

#include "command.h"
#include "usage.h"

namespace vptzctl {
namespace {

std::vector<Argument> OptionsOf(const std::vector<Argument>& arguments) {
  std::vector<Argument> options;
  for (const Argument& argument : arguments) {
    if (argument.IsOption()) options.push_back(argument);
  }
  for (const Argument& argument : GlobalArguments()) options.push_back(argument);
  return options;
}

bool CanBeCompleted(const Argument& argument) {
  return !FixedValues(argument).empty() || argument.kind == Kind::kFile || ToldByTheTool(argument);
}

}  // namespace

std::vector<Scope> Scopes() {
  std::vector<Scope> scopes = {{"", NextWords(""), OptionsOf({})}};
  for (const Group& group : Groups()) scopes.push_back({group.name, NextWords(group.name), OptionsOf({})});
  for (const Command& command : Commands())
    scopes.push_back({command.Name(), {}, OptionsOf(command.arguments)});
  return scopes;
}

std::vector<ValuePlace> ValuePlaces() {
  std::vector<ValuePlace> places;
  for (const Command& command : Commands()) {
    int place = 0;
    for (const Argument& argument : command.arguments) {
      const bool any = !argument.IsOption() && argument.kind == Kind::kTexts;
      const std::string where = argument.IsOption() ? argument.name : std::to_string(place++);
      if (CanBeCompleted(argument)) places.push_back({command.Name(), where, any, &argument});
    }
  }
  return places;
}

std::string ValueFunction(std::string (*values)(const Argument&)) {
  std::string text = "_vptzctl_value() {\n  case $1 in\n";
  for (const ValuePlace& place : ValuePlaces()) {
    const std::string where = place.any_place ? " '*" : " " + place.place + "'";
    text += "    '" + place.command + where + ") " + values(*place.argument) + " ;;\n";
  }
  return text + "  esac\n}\n";
}

std::string OptionNames(const std::vector<Argument>& options, bool valued_only) {
  std::string names;
  for (const Argument& option : options) {
    if (!valued_only || option.kind != Kind::kFlag) names += (names.empty() ? "" : " ") + option.name;
  }
  return names;
}

std::string InQuotes(const std::string& text, const std::string& special, const std::string& prefix) {
  std::string quoted = "'";
  for (const char c : text) quoted += (special.find(c) == std::string::npos ? "" : prefix) + c;
  return quoted + "'";
}

}  // namespace vptzctl
