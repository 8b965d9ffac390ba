#include "pages.h"
#include "table.h"

namespace vptzctl {
namespace {

// The words are read as the script for bash reads them. One condition for all:
// fish would test one for each command at every key.
constexpr char kFunction[] = R"fish(
function __vptzctl_complete
    set -l tokens (commandline -opc)
    set -e tokens[1]
    set -l current (commandline -ct)
    set -l command ''
    set -l option ''
    set -l place 0
    for word in $tokens
        if test -n "$option"
            set option ''
        else if contains -- $word (__vptzctl_valued "$command")
            set option $word
        else if string match -q -- '-*' $word
            continue
        else if test (__vptzctl_verbs "$command" | count) -gt 0
            set command (string trim -- "$command $word")
        else
            set place (math $place + 1)
        end
    end
    if test -n "$option"
        __vptzctl_value "$command $option"
    else if string match -q -- '-*' $current
        __vptzctl_flags "$command"
    else if test (__vptzctl_verbs "$command" | count) -gt 0
        __vptzctl_verbs "$command"
    else
        __vptzctl_value "$command $place"
    end
end

complete -c vptzctl -f -a '(__vptzctl_complete)'
)fish";

std::string Quoted(const std::string& text) { return InQuotes(text, "'\\", "\\"); }

// A line with name and description, as fish reads it.
std::string Line(const std::string& name, const std::string& description) {
  return " " + Quoted(name + "\t" + description);
}

std::string Printed(const std::string& lines) {
  return lines.empty() ? "" : "            printf '%s\\n'" + lines + "\n";
}

std::string Flags(const Scope& scope) {
  std::string lines;
  for (const Argument& option : scope.options) lines += Line(option.name, option.help);
  if (scope.name.empty()) lines += Line("--version", "print the version");
  return Printed(lines + Line("--help", "print help"));
}

std::string Valued(const Scope& scope) { return Printed(" " + OptionNames(scope.options, true)); }

std::string Verbs(const Scope& scope) {
  std::string lines;
  for (const Candidate& word : scope.words) lines += Line(word.text, word.description);
  return Printed(lines);
}

// A function that prints for each scope what `body` makes of it.
std::string Function(const std::string& name, std::string (*body)(const Scope&)) {
  std::string text = "function " + name + "\n    switch \"$argv[1]\"\n";
  for (const Scope& scope : Scopes()) text += "        case " + Quoted(scope.name) + "\n" + body(scope);
  return text + "    end\nend\n\n";
}

std::string ValuesOf(const Argument& argument) {
  if (ToldByTheTool(argument)) return "__vptzctl_ask";
  if (argument.kind == Kind::kFile) return "__fish_complete_path (commandline -ct)";
  return "printf '%s\\n' " + Joined(FixedValues(argument), " ");
}

std::string ValueFunction() {
  std::string text = "function __vptzctl_value\n    switch \"$argv[1]\"\n";
  for (const ValuePlace& place : ValuePlaces()) {
    const std::string where = place.any_place ? "*" : place.place;
    text += "        case " + Quoted(place.command + " " + where) + "\n            " +
            ValuesOf(*place.argument) + "\n";
  }
  return text + "    end\nend\n";
}

constexpr char kAsk[] = R"fish(# Values that only the tool can tell, from its database.
function __vptzctl_ask
    set -l tokens (commandline -opc)
    set -l current (string unescape -- (commandline -ct))
    $tokens[1] complete -- $tokens[2..] "$current" 2>/dev/null
end

)fish";

}  // namespace

std::string FishCompletion() {
  return "# Completion of vptzctl for fish. Made from the tool's command table.\n\n" +
         Function("__vptzctl_flags", Flags) + Function("__vptzctl_valued", Valued) +
         Function("__vptzctl_verbs", Verbs) + kAsk + ValueFunction() + kFunction;
}

}  // namespace vptzctl
