#include "mistakes.h"

#include <algorithm>
#include <cctype>

namespace vptzctl {
namespace {

// A third of the letters may be wrong, one in any case.
std::size_t Tolerance(const std::string& text) { return std::max<std::size_t>(1, text.size() / 3); }

std::string WithoutDashes(const std::string& text) {
  return text.substr(std::min(text.find_first_not_of('-'), text.size()));
}

// Negative numbers are values.
bool LooksLikeAnOption(const std::string& word) {
  if (word.size() < 2 || word[0] != '-') return false;
  return word[1] == '-' ? word.size() > 2 : std::isalpha(static_cast<unsigned char>(word[1])) != 0;
}

const Argument* Find(const std::string& name, const std::vector<Argument>& known) {
  const auto found = std::find_if(known.begin(), known.end(), [&name](const Argument& argument) {
    return argument.name == name || (!argument.letter.empty() && argument.letter == name);
  });
  return found == known.end() ? nullptr : &*found;
}

// The name of the first option that is wanted; empty when none is. `is_wanted` is
// asked about what is known of it, which may be null, and whether a value is
// joined to it.
template <class Condition>
std::string FirstOption(const std::vector<std::string>& words, const std::vector<Argument>& known,
                        Condition is_wanted) {
  for (auto word = words.begin(); word != words.end() && *word != "--"; ++word) {
    if (!LooksLikeAnOption(*word)) continue;
    const std::size_t equals = word->find('=');
    const Argument* const option = Find(word->substr(0, equals), known);
    const bool joined = equals != std::string::npos;
    if (is_wanted(option, joined)) return word->substr(0, equals);
    const bool value_follows = option != nullptr && option->kind != Kind::kFlag && !joined;
    if (value_follows && word + 1 != words.end()) ++word;
  }
  return "";
}

}  // namespace

std::size_t EditDistance(const std::string& one, const std::string& other) {
  std::vector<std::vector<std::size_t>> cost(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
  for (std::size_t i = 0; i <= one.size(); ++i) {
    for (std::size_t j = 0; j <= other.size(); ++j) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      const std::size_t changed = cost[i - 1][j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      cost[i][j] = std::min({changed, cost[i - 1][j] + 1, cost[i][j - 1] + 1});
      const bool swapped = i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1];
      if (swapped) cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
    }
  }
  return cost[one.size()][other.size()];
}

std::string Nearest(const std::string& text, const std::vector<std::string>& candidates) {
  constexpr std::size_t kLongestName = 64;  // nothing longer is a slip of the finger
  if (text.size() > kLongestName) return "";
  const std::string wanted = WithoutDashes(text);
  std::string nearest;
  std::size_t least = Tolerance(wanted) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t distance = EditDistance(wanted, WithoutDashes(candidate));
    if (distance >= least) continue;
    least = distance;
    nearest = candidate;
  }
  return nearest;
}

std::string Suggestion(const std::string& text, const std::vector<std::string>& candidates) {
  const std::string nearest = Nearest(text, candidates);
  return nearest.empty() ? "" : ", perhaps " + nearest + " is meant";
}

std::string UnknownOption(const std::vector<std::string>& words, const std::vector<Argument>& known) {
  return FirstOption(words, known, [](const Argument* option, bool) { return option == nullptr; });
}

std::string FlagWithValue(const std::vector<std::string>& words, const std::vector<Argument>& known) {
  return FirstOption(words, known, [](const Argument* option, bool has_value) {
    return option != nullptr && option->kind == Kind::kFlag && has_value;
  });
}

}  // namespace vptzctl
