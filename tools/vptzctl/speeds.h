// The speeds of a motion to a position, as several verbs take them.
#ifndef VPTZCTL_SPEEDS_H
#define VPTZCTL_SPEEDS_H

#include <string>

#include "arguments.h"

namespace vptzctl {

inline Argument Speed(const std::string& name, const std::string& placeholder, const std::string& unit,
                      const std::string& unit_in_words) {
  return NumberAtLeast(name, placeholder, unit, 0,
                       "speed in " + unit_in_words + " per second; without it the top speed");
}

inline Argument PanSpeed() { return Speed("--pan-speed", "DEG/S", "deg/s", "degrees"); }
inline Argument TiltSpeed() { return Speed("--tilt-speed", "DEG/S", "deg/s", "degrees"); }
inline Argument ZoomSpeed() { return Speed("--zoom-speed", "X/S", "x/s", "magnification"); }

}  // namespace vptzctl

#endif
