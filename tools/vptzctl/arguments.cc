#include "arguments.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include <vptz/vptz_data.h>

#include "people.h"

namespace vptzctl {
namespace {

constexpr double kUnlimited = std::numeric_limits<double>::infinity();

Argument Make(std::string name, Kind kind, std::string placeholder, std::string unit, std::string help) {
  Argument argument;
  argument.name = std::move(name);
  argument.kind = kind;
  argument.placeholder = std::move(placeholder);
  argument.unit = std::move(unit);
  argument.help = std::move(help);
  return argument;
}

std::string Limits(const Argument& argument) {
  if (std::isfinite(argument.max)) {
    return FormatNumber(argument.min) + " to " + FormatNumber(argument.max);
  }
  return std::isfinite(argument.min) ? FormatNumber(argument.min) + " or more" : "";
}

// Decimal numbers only, whatever the locale; with a leading '+' as people write it.
template <class Number>
bool ReadWhole(std::string_view text, Number* number) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
    text.remove_prefix(1);
  }
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, *number);
  return error == std::errc() && rest == end;
}

void RequireWithin(const Argument& argument, double number) {
  if (number < argument.min || number > argument.max) {
    throw std::invalid_argument("must be " + Limits(argument));
  }
}

// "on, off"
std::string NamesOf(const Argument& argument) {
  std::vector<std::string> names;
  for (const auto& word : argument.words) names.push_back(word.first);
  return Joined(names, ", ");
}

std::string NumbersOf(const std::vector<std::uint32_t>& numbers) {
  std::vector<std::string> texts;
  texts.reserve(numbers.size());
  for (const std::uint32_t number : numbers) texts.push_back(std::to_string(number));
  return Joined(texts, ", ");
}

Value ReadNumber(const Argument& argument, const std::string& text) {
  for (const auto& [name, meaning] : argument.words) {
    if (EqualIgnoringCase(name, text)) return meaning;
  }
  double number = 0;
  if (!ReadWhole(text, &number) || !std::isfinite(number)) {
    throw std::invalid_argument("is not a number" +
                                (argument.words.empty() ? "" : ", nor one of " + NamesOf(argument)));
  }
  if (number == kVptzNotCommanded) {
    throw std::invalid_argument("is reserved for axes that are left alone");
  }
  RequireWithin(argument, number);
  return number;
}

Value ReadInteger(const Argument& argument, const std::string& text) {
  std::int64_t number = 0;
  if (!ReadWhole(text, &number)) {
    throw std::invalid_argument("is not a whole number from " + Limits(argument));
  }
  RequireWithin(argument, static_cast<double>(number));
  const auto& usual = argument.usual;
  if (!usual.empty() && std::find(usual.begin(), usual.end(), number) == usual.end()) {
    throw std::invalid_argument("is not one of " + NumbersOf(usual));
  }
  return static_cast<std::uint32_t>(number);
}

// What is known gets its right spelling; anything else may mean something to
// another service.
Value ReadText(const Argument& argument, const std::string& text) {
  if (text.empty()) {
    throw std::invalid_argument("is empty");
  }
  for (const std::string& known : argument.known) {
    if (EqualIgnoringCase(known, text)) return known;
  }
  return text;
}

Value ReadChoice(const Argument& argument, const std::string& text) {
  if (std::find(argument.choices.begin(), argument.choices.end(), text) == argument.choices.end()) {
    throw std::invalid_argument("is not one of " + argument.placeholder);
  }
  return text;
}

}  // namespace

Argument Argument::Needs(std::string other) const {
  Argument argument = *this;
  argument.needs = std::move(other);
  return argument;
}

Argument Argument::Excludes(std::vector<std::string> others) const {
  Argument argument = *this;
  argument.excludes = std::move(others);
  return argument;
}

Argument Argument::Else(Value value) const {
  Argument argument = *this;
  argument.fallback = std::move(value);
  return argument;
}

Argument Argument::Placeholder(std::string text) const {
  Argument argument = *this;
  argument.placeholder = std::move(text);
  return argument;
}

Argument Argument::Optional() const {
  Argument argument = *this;
  argument.optional = true;
  return argument;
}

Argument Argument::Letter(std::string short_form) const {
  Argument argument = *this;
  argument.letter = std::move(short_form);
  return argument;
}

Argument Argument::Known(std::vector<std::string> texts) const {
  Argument argument = *this;
  argument.known = std::move(texts);
  return argument;
}

Argument Argument::Words(std::vector<std::pair<std::string, double>> names) const {
  Argument argument = *this;
  argument.words = std::move(names);
  return argument;
}

Argument Argument::Usual(std::vector<std::uint32_t> numbers) const {
  Argument argument = *this;
  argument.usual = std::move(numbers);
  return argument;
}

Argument Argument::Unreported() const {
  Argument argument = *this;
  argument.reported = false;
  return argument;
}

Argument Flag(std::string name, std::string help) {
  return Make(std::move(name), Kind::kFlag, "", "", std::move(help)).Else(false);
}

Argument Number(std::string name, std::string placeholder, std::string unit, std::string help) {
  return NumberWithin(std::move(name), std::move(placeholder), std::move(unit), {-kUnlimited, kUnlimited},
                      std::move(help));
}

Argument NumberAtLeast(std::string name, std::string placeholder, std::string unit, double min,
                       std::string help) {
  return NumberWithin(std::move(name), std::move(placeholder), std::move(unit), {min, kUnlimited},
                      std::move(help));
}

Argument NumberWithin(std::string name, std::string placeholder, std::string unit, Range range,
                      std::string help) {
  Argument argument =
      Make(std::move(name), Kind::kNumber, std::move(placeholder), std::move(unit), std::move(help));
  argument.min = range.min;
  argument.max = range.max;
  return argument;
}

Argument Integer(std::string name, Range range, std::string help) {
  Argument argument = Make(std::move(name), Kind::kInteger, "", "", std::move(help));
  argument.min = range.min;
  argument.max = range.max;
  return argument;
}

Argument Text(std::string name, std::string placeholder, std::string help) {
  return Make(std::move(name), Kind::kText, std::move(placeholder), "", std::move(help));
}

Argument Texts(std::string name, std::string placeholder, std::string help) {
  return Make(std::move(name), Kind::kTexts, std::move(placeholder), "", std::move(help))
      .Else(std::vector<std::string>());
}

Argument File(std::string name, std::string placeholder, std::string help) {
  return Make(std::move(name), Kind::kFile, std::move(placeholder), "", std::move(help));
}

Argument Choice(std::string name, std::vector<std::string> choices, std::string help) {
  Argument argument = Make(std::move(name), Kind::kChoice, Joined(choices, "|"), "", std::move(help));
  argument.choices = std::move(choices);
  return argument;
}

Argument Camera() { return Text(kCamera, "", "the camera's id, or its name when only one has it"); }

Argument Profile(const std::string& what) {
  Argument argument =
      Integer(kProfile, {1, kLargestInteger}, "which " + what + " of the camera, counted from 1");
  return argument.Placeholder("N").Else(std::uint32_t{1});
}

bool EqualIgnoringCase(const std::string& one, const std::string& other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
  });
}

std::string Joined(const std::vector<std::string>& texts, const std::string& separator) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : separator) + text;
  return joined;
}

std::vector<std::string> FixedValues(const Argument& argument) {
  std::vector<std::string> values = argument.choices;
  values.insert(values.end(), argument.known.begin(), argument.known.end());
  for (const auto& word : argument.words) values.push_back(word.first);
  for (const std::uint32_t number : argument.usual) values.push_back(std::to_string(number));
  return values;
}

std::string HelpWithRules(const Argument& argument) {
  std::string help = argument.help;
  const bool numeric = argument.kind == Kind::kNumber || argument.kind == Kind::kInteger;
  const std::string limits = numeric && argument.usual.empty() ? Limits(argument) : "";
  if (!limits.empty()) help += "; " + limits;
  if (!argument.words.empty()) help += "; also " + NamesOf(argument);
  if (!argument.known.empty()) help += "; known are " + Joined(argument.known, ", ");
  if (argument.kind == Kind::kTexts && argument.IsOption()) help += "; may be repeated";
  if (const auto* number = std::get_if<double>(&argument.fallback))
    help += "; default " + FormatNumber(*number);
  if (const auto* number = std::get_if<std::uint32_t>(&argument.fallback))
    help += "; default " + std::to_string(*number);
  if (const auto* text = std::get_if<std::string>(&argument.fallback)) help += "; default " + *text;
  if (!argument.needs.empty()) help += "; only with " + argument.needs;
  if (!argument.excludes.empty()) help += "; not with " + Joined(argument.excludes, ", ");
  return help;
}

std::string FieldName(const Argument& argument) {
  std::string name = argument.IsOption() ? argument.name.substr(2) : argument.name;
  for (char& c : name) {
    c = c == '-' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return name;
}

Value ReadValue(const Argument& argument, const std::string& text) {
  switch (argument.kind) {
    case Kind::kNumber:
      return ReadNumber(argument, text);
    case Kind::kInteger:
      return ReadInteger(argument, text);
    case Kind::kChoice:
      return ReadChoice(argument, text);
    case Kind::kFlag:
      return true;
    case Kind::kText:
    case Kind::kFile:
    case Kind::kTexts:
      break;
  }
  return ReadText(argument, text);
}

}  // namespace vptzctl
