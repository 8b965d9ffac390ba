#include "pages.h"
#include "table.h"

namespace vptzctl {
namespace {

// The words are read as the script for bash reads them. zsh reads a file of its
// function path when the first completion calls it: the last line is that call.
constexpr char kFunction[] = R"zsh(
# Values that only the tool can tell, from its database.
_vptzctl_ask() {
  local line value
  local -a found
  for line in "${(@f)$("${(Q)words[1]}" complete -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}"; do
    value=${line%%$'\t'*}
    [[ -n $value ]] && found+=("${value//:/\\:}:${line#*$'\t'}")
  done
  _describe -t values value found
}

_vptzctl() {
  local command='' place=0 word i
  local -a flags valued verbs
  _vptzctl_command ''
  for ((i = 2; i < CURRENT; i++)); do
    word=${(Q)words[i]}
    if ((${valued[(Ie)$word]})); then
      ((++i))
    elif [[ $word == -* ]]; then
      continue
    elif (($#verbs)); then
      command=${command:+$command }$word
      _vptzctl_command "$command"
    else
      ((++place))
    fi
  done
  if ((CURRENT > 2 && ${valued[(Ie)${(Q)words[CURRENT-1]}]})); then
    _vptzctl_value "$command ${(Q)words[CURRENT-1]}"
  elif [[ $words[CURRENT] == -* ]]; then
    _describe -o option flags
  elif (($#verbs)); then
    _describe -t commands command verbs
  else
    _vptzctl_value "$command $place"
  fi
}

_vptzctl "$@"
)zsh";

std::string Quoted(const std::string& text) { return InQuotes(text, "'", "'\\'"); }

// "name:what it is", as _describe reads it.
std::string Described(const std::string& name, const std::string& help) { return Quoted(name + ":" + help); }

std::string Flags(const Scope& scope) {
  std::string flags;
  for (const Argument& option : scope.options) flags += Described(option.name, option.help) + " ";
  if (scope.name.empty()) flags += Described("--version", "print the version") + " ";
  return flags + Described("--help", "print help");
}

std::string Verbs(const Scope& scope) {
  std::string verbs;
  for (const Candidate& word : scope.words) {
    verbs += (verbs.empty() ? "" : " ") + Described(word.text, word.description);
  }
  return verbs;
}

std::string CommandFunction() {
  std::string text = "_vptzctl_command() {\n  case $1 in\n";
  for (const Scope& scope : Scopes()) {
    text += "    " + Quoted(scope.name) + ")\n      flags=(" + Flags(scope) + ")\n      valued=(" +
            OptionNames(scope.options, true) + ")\n      verbs=(" + Verbs(scope) + ")\n      ;;\n";
  }
  return text + "    *) flags=() valued=() verbs=() ;;\n  esac\n}\n";
}

std::string ValuesOf(const Argument& argument) {
  if (ToldByTheTool(argument)) return "_vptzctl_ask";
  return argument.kind == Kind::kFile ? "_files" : "compadd -- " + Joined(FixedValues(argument), " ");
}

}  // namespace

std::string ZshCompletion() {
  return "#compdef vptzctl\n# Completion of vptzctl for zsh. Made from the tool's command table.\n\n" +
         CommandFunction() + "\n" + ValueFunction(ValuesOf) + kFunction;
}

}  // namespace vptzctl
