// Asks before what a slip of the finger should not do.
#ifndef VPTZCTL_PROMPT_H
#define VPTZCTL_PROMPT_H

#include <string>

#include "arguments.h"

namespace vptzctl {

class Session;

// --yes
Argument YesArgument();

// Returns when the person at the terminal has said yes, at once with --yes, and
// at once where there is no terminal: scripts go on working. Throws CommandError
// for any other answer.
void Confirm(Session& session, const std::string& question);

}  // namespace vptzctl

#endif
