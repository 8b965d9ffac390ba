// What a command line probably meant where it is wrong.
#ifndef VPTZCTL_MISTAKES_H
#define VPTZCTL_MISTAKES_H

#include <string>
#include <vector>

#include "arguments.h"

namespace vptzctl {

// How many letters must be changed, added, left out or swapped with their
// neighbour to make one text of the other.
std::size_t EditDistance(const std::string& one, const std::string& other);

// The candidate that is nearest to the text; empty when none is near enough to
// have been meant.
std::string Nearest(const std::string& text, const std::vector<std::string>& candidates);

// ", perhaps --pan is meant"; empty when no candidate is near.
std::string Suggestion(const std::string& text, const std::vector<std::string>& candidates);

// The first of the words that is written like an option and is none of the known
// ones; empty when there is none. A known option's value is no option.
std::string UnknownOption(const std::vector<std::string>& words, const std::vector<Argument>& known);

// The first flag that is given a value, as in "--json=yes"; empty when there is
// none.
std::string FlagWithValue(const std::vector<std::string>& words, const std::vector<Argument>& known);

}  // namespace vptzctl

#endif
