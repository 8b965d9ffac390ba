#include <vector>

#include "command.h"
#include "pages.h"
#include "usage.h"

namespace vptzctl {
namespace {

// The words before the cursor are read from the left: options of the command
// that take a value hide the next word, the others are the command and its
// arguments.
constexpr char kFunction[] = R"bash(
_vptzctl() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' place=0 options='' valued='' words='' word i
  _vptzctl_command ''
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ " $valued " == *" $word "* ]]; then
      ((++i))
    elif [[ $word == -* ]]; then
      continue
    elif [[ -n $words ]]; then
      command=${command:+$command }$word
      _vptzctl_command "$command"
    else
      ((++place))
    fi
  done
  if [[ " $valued " == *" $previous "* ]]; then
    _vptzctl_value "$command $previous"
  elif [[ $current == -* ]]; then
    COMPREPLY=($(compgen -W "$options" -- "$current"))
  elif [[ -n $words ]]; then
    COMPREPLY=($(compgen -W "$words" -- "$current"))
  else
    _vptzctl_value "$command $place"
  fi
}

complete -F _vptzctl vptzctl
)bash";

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

std::string Names(const std::vector<Argument>& arguments, bool valued_only) {
  std::string names;
  for (const Argument& argument : arguments) {
    const bool wanted = argument.IsOption() && !(valued_only && argument.kind == Kind::kFlag);
    if (wanted) names += (names.empty() ? "" : " ") + argument.name;
  }
  return names;
}

std::vector<Argument> WithGlobal(std::vector<Argument> arguments) {
  for (const Argument& argument : GlobalArguments()) arguments.push_back(argument);
  return arguments;
}

std::string Case(const std::string& name, const std::vector<Argument>& arguments, const std::string& more,
                 const std::string& words) {
  const std::vector<Argument> all = WithGlobal(arguments);
  return "    " + Quoted(name) + ") options=" + Quoted(Names(all, false) + " --help" + more) +
         " valued=" + Quoted(Names(all, true)) + " words=" + Quoted(words) + " ;;\n";
}

std::string VerbsOf(const std::string& group) {
  std::string verbs;
  for (const Command& command : Commands()) {
    if (command.group == group) verbs += (verbs.empty() ? "" : " ") + command.verb;
  }
  return verbs;
}

std::string FirstWords() {
  std::string words = VerbsOf("");
  for (const Group& group : Groups()) words += " " + group.name;
  return words;
}

// Sets the options, those of them that take a value, and the words that may
// follow as long as the command is not complete.
std::string CommandFunction() {
  std::string text = "_vptzctl_command() {\n  case $1 in\n";
  text += Case("", {}, " --version", FirstWords());
  for (const Group& group : Groups()) text += Case(group.name, {}, "", VerbsOf(group.name));
  for (const Command& command : Commands()) text += Case(command.Name(), command.arguments, "", "");
  return text + "    *) options='' valued='' words='' ;;\n  esac\n}\n";
}

std::string ValueCase(const std::string& what, const Argument& argument) {
  if (argument.kind == Kind::kChoice) {
    return "    " + Quoted(what) + ") COMPREPLY=($(compgen -W " + Quoted(Joined(argument.choices, " ")) +
           " -- \"$current\")) ;;\n";
  }
  if (argument.kind != Kind::kFile) return "";
  return "    " + Quoted(what) +
         ")\n      compopt -o filenames 2>/dev/null\n      COMPREPLY=($(compgen -f -- \"$current\"))\n      "
         ";;\n";
}

// Completes the value of an option, or of an argument by its place.
std::string ValueFunction() {
  std::string text = "_vptzctl_value() {\n  case $1 in\n";
  for (const Command& command : Commands()) {
    int place = 0;
    for (const Argument& argument : command.arguments) {
      const std::string what = argument.IsOption() ? argument.name : std::to_string(place++);
      text += ValueCase(command.Name() + " " + what, argument);
    }
  }
  return text + "  esac\n}\n";
}

}  // namespace

std::string BashCompletion() {
  return "# Completion of vptzctl for bash. Made from the tool's command table.\n\n" + CommandFunction() +
         "\n" + ValueFunction() + kFunction;
}

}  // namespace vptzctl
