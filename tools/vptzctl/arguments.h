// The arguments of the verbs: how they are described, shown and read.
#ifndef VPTZCTL_ARGUMENTS_H
#define VPTZCTL_ARGUMENTS_H

#include <limits>
#include <string>
#include <vector>

#include "value.h"

namespace vptzctl {

constexpr double kLargestInteger = std::numeric_limits<std::uint32_t>::max();

enum class Kind { kFlag, kNumber, kInteger, kText, kChoice };

// One argument of a verb: an option when its name begins with "--", else it is
// told by its place, and then it must be given.
struct Argument {
  std::string name;
  Kind kind = Kind::kText;
  std::string placeholder;  // what help shows for the value: "DEG"
  std::string unit;         // what messages show behind it: "deg"
  std::string help;
  double min = 0;  // limits of numbers, both included
  double max = 0;
  std::vector<std::string> choices;   // the texts of a choice
  Value fallback;                     // the value when it is not given
  std::string needs;                  // option that must be given with it
  std::vector<std::string> excludes;  // options that must not be given with it
  bool reported = true;               // whether results repeat it

  bool IsOption() const { return name.rfind("--", 0) == 0; }

  Argument Needs(std::string other) const;
  Argument Excludes(std::vector<std::string> others) const;
  Argument Else(Value value) const;
  Argument Placeholder(std::string text) const;
  Argument Unreported() const;
};

Argument Flag(std::string name, std::string help);
Argument Number(std::string name, std::string placeholder, std::string unit, std::string help);
Argument NumberAtLeast(std::string name, std::string placeholder, std::string unit, double min,
                       std::string help);
Argument NumberWithin(std::string name, std::string placeholder, std::string unit, Range range,
                      std::string help);
Argument Integer(std::string name, Range range, std::string help);
Argument Id(std::string name, std::string help);
Argument Text(std::string name, std::string placeholder, std::string help);
Argument Choice(std::string name, std::vector<std::string> choices, std::string help);

// The texts with a separator between them.
std::string Joined(const std::vector<std::string>& texts, const std::string& separator);

// The help text with limits, default and companions behind it.
std::string HelpWithRules(const Argument& argument);

// The argument's key in JSON, which is also its name in messages with '_' for
// blanks: "pan_speed".
std::string FieldName(const Argument& argument);

// Reads the text of an argument. Throws std::invalid_argument that tells what
// would have been right.
Value ReadValue(const Argument& argument, const std::string& text);

}  // namespace vptzctl

#endif
