#include "pages.h"
#include "table.h"

namespace vptzctl {
namespace {

// The words before the cursor are read from the left: options of the command
// that take a value hide the next word, the others are the command and its
// arguments.
constexpr char kFunction[] = R"bash(
# Values that only the tool can tell, from its database.
_vptzctl_ask() {
  local line
  while IFS= read -r line; do
    COMPREPLY+=("${line%%$'\t'*}")
  done < <("${COMP_WORDS[0]}" complete --quoted -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}

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

std::string Quoted(const std::string& text) { return InQuotes(text, "", ""); }

std::string WordsOf(const Scope& scope) {
  std::string words;
  for (const Candidate& word : scope.words) words += (words.empty() ? "" : " ") + word.text;
  return words;
}

std::string Case(const Scope& scope) {
  const std::string more = scope.name.empty() ? " --help --version" : " --help";
  return "    " + Quoted(scope.name) + ") options=" + Quoted(OptionNames(scope.options, false) + more) +
         " valued=" + Quoted(OptionNames(scope.options, true)) + " words=" + Quoted(WordsOf(scope)) + " ;;\n";
}

// Sets the options, those of them that take a value, and the words that may
// follow as long as the command is not complete.
std::string CommandFunction() {
  std::string text = "_vptzctl_command() {\n  case $1 in\n";
  for (const Scope& scope : Scopes()) text += Case(scope);
  return text + "    *) options='' valued='' words='' ;;\n  esac\n}\n";
}

std::string ValuesOf(const Argument& argument) {
  if (ToldByTheTool(argument)) return "_vptzctl_ask";
  if (!FixedValues(argument).empty()) {
    return "COMPREPLY=($(compgen -W " + Quoted(Joined(FixedValues(argument), " ")) + " -- \"$current\"))";
  }
  return "compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -f -- \"$current\"))";
}

}  // namespace

std::string BashCompletion() {
  return "# Completion of vptzctl for bash. Made from the tool's command table.\n\n" + CommandFunction() +
         "\n" + ValueFunction(ValuesOf) + kFunction;
}

}  // namespace vptzctl
