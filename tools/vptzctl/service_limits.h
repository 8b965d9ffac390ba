// What the reference service keeps, as far as the tool tells it beforehand.
#ifndef VPTZCTL_SERVICE_LIMITS_H
#define VPTZCTL_SERVICE_LIMITS_H

#include <cstddef>

namespace vptzctl {

constexpr std::size_t kLongestText = 255;  // bytes
constexpr std::size_t kMostPresets = 256;  // of a PTZ profile

}  // namespace vptzctl

#endif
