// The command table as completion scripts need it.
#ifndef VPTZCTL_PAGES_TABLE_H
#define VPTZCTL_PAGES_TABLE_H

#include <string>
#include <vector>

#include "arguments.h"
#include "completion.h"

namespace vptzctl {

// What may follow the words of a command, of a group, or none at all.
struct Scope {
  std::string name;               // "ptz move", "ptz" or ""
  std::vector<Candidate> words;   // that bring it nearer to a command; none behind a command
  std::vector<Argument> options;  // global ones included, but --help and --version
};
std::vector<Scope> Scopes();

// A value that can be completed.
struct ValuePlace {
  std::string command;  // "ptz move"
  std::string place;    // its option, or the number of the argument from 0
  bool any_place;       // an argument that takes all further words
  const Argument* argument;
};
std::vector<ValuePlace> ValuePlaces();

// In the words of bash and zsh, a function that completes the value of an option,
// or of an argument by its place, by what `values` says of it.
std::string ValueFunction(std::string (*values)(const Argument&));

// Those that take a value, or all; with blanks between.
std::string OptionNames(const std::vector<Argument>& options, bool valued_only);

// In single quotes, with every character in `special` behind a prefix.
std::string InQuotes(const std::string& text, const std::string& special, const std::string& prefix);

}  // namespace vptzctl

#endif
