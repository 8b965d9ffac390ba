// The numbers of a camera's axes.
#ifndef VPTZ_SERVICE_DRIVERS_UNITS_H
#define VPTZ_SERVICE_DRIVERS_UNITS_H

#include <array>
#include <optional>

namespace vptzd {

// Pan and tilt in degrees, positive to the right and upwards; zoom as the
// magnification factor. Speeds and velocities in these units per second.
enum AxisIndex { kPan, kTilt, kZoom };

template <class T>
using PerAxis = std::array<T, 3>;

// A number for each axis that a command names; the others are left alone.
using AxisValues = PerAxis<std::optional<double>>;

}  // namespace vptzd

#endif
