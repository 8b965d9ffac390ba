#ifndef VPTZCTL_RUN_H
#define VPTZCTL_RUN_H

#include <exception>

#include "failures.h"

namespace vptzctl {

struct Invocation;
struct KeptClients;
class UsageError;

// The whole program; returns its exit code. Throws nothing.
int Run(int argc, const char* const* argv) noexcept;

// A command line that has been read, or one that could not be. `kept` is for
// several commands in one process.
ExitCode RunInvocation(const Invocation& invocation, KeptClients* kept = nullptr);
ExitCode FailWithUsage(const UsageError& error, bool json);

// What no command should throw: told all the same, in the form that is wanted.
ExitCode FailUnexpectedly(const std::exception& error, bool json) noexcept;

}  // namespace vptzctl

#endif
