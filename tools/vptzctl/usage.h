// What help, completion and manual page tell alike about command lines.
#ifndef VPTZCTL_USAGE_H
#define VPTZCTL_USAGE_H

#include <string>
#include <vector>

#include "arguments.h"
#include "command.h"

namespace vptzctl {

// "ptz move CAMERA [--pan DEG] ..."
std::string Usage(const Command& command);

// The options that every command has.
const std::vector<Argument>& GlobalArguments();

}  // namespace vptzctl

#endif
