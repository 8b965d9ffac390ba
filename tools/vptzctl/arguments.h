// The arguments of the verbs: how they are described, shown and read.
#ifndef VPTZCTL_ARGUMENTS_H
#define VPTZCTL_ARGUMENTS_H

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "value.h"

namespace vptzctl {

constexpr double kLargestInteger = std::numeric_limits<std::uint32_t>::max();

// kFile is a text that completion treats as a path; kTexts may be given again
// and again.
enum class Kind { kFlag, kNumber, kInteger, kText, kChoice, kFile, kTexts };

// One argument of a verb: an option when its name begins with "--", else it is
// told by its place, and then it must be given unless it is optional.
struct Argument {
  std::string name;
  std::string letter;  // its short form: "-v"
  Kind kind = Kind::kText;
  std::string placeholder;  // what help shows for the value: "DEG"
  std::string unit;         // what messages show behind it: "deg"
  std::string help;
  double min = 0;  // limits of numbers, both included
  double max = 0;
  std::vector<std::string> choices;  // the texts of a choice
  std::vector<std::string> known;    // texts that mean something to the reference service, among others
  std::vector<std::pair<std::string, double>> words;  // what a number may be called
  std::vector<std::uint32_t> usual;                   // the only whole numbers that are taken
  Value fallback;                                     // the value when it is not given
  std::string needs;                                  // option that must be given with it
  std::vector<std::string> excludes;                  // options that must not be given with it
  bool optional = false;                              // of an argument told by its place
  bool reported = true;                               // whether results repeat it

  bool IsOption() const { return name.rfind("--", 0) == 0; }

  Argument Needs(std::string other) const;
  Argument Excludes(std::vector<std::string> others) const;
  Argument Else(Value value) const;
  Argument Placeholder(std::string text) const;
  Argument Optional() const;
  Argument Letter(std::string short_form) const;
  Argument Known(std::vector<std::string> texts) const;
  Argument Words(std::vector<std::pair<std::string, double>> names) const;
  Argument Usual(std::vector<std::uint32_t> numbers) const;
  Argument Unreported() const;
};

Argument Flag(std::string name, std::string help);
Argument Number(std::string name, std::string placeholder, std::string unit, std::string help);
Argument NumberAtLeast(std::string name, std::string placeholder, std::string unit, double min,
                       std::string help);
Argument NumberWithin(std::string name, std::string placeholder, std::string unit, Range range,
                      std::string help);
Argument Integer(std::string name, Range range, std::string help);
Argument Text(std::string name, std::string placeholder, std::string help);
Argument Texts(std::string name, std::string placeholder, std::string help);
Argument File(std::string name, std::string placeholder, std::string help);
Argument Choice(std::string name, std::vector<std::string> choices, std::string help);

// Whether two texts are equal when the case of ASCII letters does not count.
bool EqualIgnoringCase(const std::string& one, const std::string& other);

// The texts with a separator between them.
std::string Joined(const std::vector<std::string>& texts, const std::string& separator);

// Arguments that many verbs share: the camera, a second one that follows it, and
// which of its profiles.
constexpr char kCamera[] = "CAMERA";
constexpr char kSlave[] = "--slave";
constexpr char kProfile[] = "--profile";
Argument Camera();
Argument Profile(const std::string& what);

// The values that are known of the argument itself, as they are typed.
std::vector<std::string> FixedValues(const Argument& argument);

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
