// The settings of a serial line, as several verbs take them.
#ifndef VPTZCTL_SERIAL_LINE_H
#define VPTZCTL_SERIAL_LINE_H

#include <limits>
#include <string>

#include "arguments.h"

namespace vptzctl {

constexpr double kLargestSigned = std::numeric_limits<int>::max();

// Those that serial lines have.
inline Argument BaudRate() {
  return Integer("--baud-rate", {1, kLargestSigned}, "bits per second, as serial lines have them")
      .Placeholder("N")
      .Usual({50,     75,     110,    134,     150,     200,     300,     600,     1200,    1800,    2400,
              4800,   7200,   9600,   14400,   19200,   28800,   31250,   38400,   56000,   57600,   76800,
              115200, 128000, 153600, 230400,  250000,  256000,  307200,  460800,  500000,  512000,  576000,
              614400, 750000, 921600, 1000000, 1152000, 1500000, 2000000, 2500000, 3000000, 3500000, 4000000})
      .Else(std::uint32_t{9600});
}

inline Argument Unit() {
  return Integer("--unit", {0, kLargestSigned}, "the camera's number on the line")
      .Placeholder("N")
      .Else(std::uint32_t{1});
}

// The port as the database spells it, where a camera is on it: "ttyS0" and
// "/dev/ttyS0" are one port. Else the text itself.
std::string StoredPort(const std::string& text);

// The device path of a port: a name such as ttyUSB0 lies in /dev. Other texts stay
// as they are.
std::string DevicePath(const std::string& text);

}  // namespace vptzctl

#endif
