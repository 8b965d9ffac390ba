// Records of the library as fields.
#ifndef VPTZCTL_DESCRIBE_H
#define VPTZCTL_DESCRIBE_H

#include <vector>

#include <vptz/vptz_device.h>

#include "result.h"

namespace vptzctl {

Value From(const VptzValue& value);
Value From(const VptzRange& range);

// A text that may be empty because nobody has told it.
Value Known(const std::string& text);

// What a list of cameras shows of each.
std::vector<Field> Summary(const VptzDeviceData& device);

// Everything about a camera but its credentials.
std::vector<Field> Details(const VptzDeviceData& device);

// Its profiles, numbered as --profile counts them.
List PtzProfiles(const CVptzDevice& device);
List MediaProfiles(const CVptzDevice& device);

}  // namespace vptzctl

#endif
