// What arguments and answers are made of.
#ifndef VPTZCTL_VALUE_H
#define VPTZCTL_VALUE_H

#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace vptzctl {

// Limits, both included.
struct Range {
  double min;
  double max;

  bool operator==(const Range& other) const { return min == other.min && max == other.max; }
};

// std::monostate is a value that was not given or is not known.
using Value =
    std::variant<std::monostate, bool, std::uint32_t, double, std::string, Range, std::vector<std::string>>;

// What the command line holds, by the arguments' names ("PTZ", "--pan").
using Values = std::map<std::string, Value>;

// Measured times need no more.
inline double RoundedToThousandths(double number) { return std::round(number * 1000) / 1000; }

}  // namespace vptzctl

#endif
