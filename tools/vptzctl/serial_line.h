// The settings of a serial line, as several verbs take them.
#ifndef VPTZCTL_SERIAL_LINE_H
#define VPTZCTL_SERIAL_LINE_H

#include <limits>

#include "arguments.h"

namespace vptzctl {

constexpr double kLargestSigned = std::numeric_limits<int>::max();

inline Argument BaudRate() {
  return Integer("--baud-rate", {1, kLargestSigned}, "bits per second")
      .Placeholder("N")
      .Else(std::uint32_t{9600});
}

inline Argument Unit() {
  return Integer("--unit", {0, kLargestSigned}, "the camera's number on the line")
      .Placeholder("N")
      .Else(std::uint32_t{1});
}

}  // namespace vptzctl

#endif
