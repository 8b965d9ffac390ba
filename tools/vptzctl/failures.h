// What results mean: one table of exit codes, one of results with names.
#ifndef VPTZCTL_FAILURES_H
#define VPTZCTL_FAILURES_H

#include <string>
#include <vector>

namespace vptzctl {

enum class ExitCode {
  kDone = 0,
  kRefused = 1,
  kUsage = 2,
  kNoConnection = 3,
  kTimeout = 4,
  kNoService = 5,
  kOther = 6,
};

// A result that has a name of its own.
struct KnownStatus {
  int status;
  const char* name;
  const char* text;
  ExitCode exit_code;
};

// The reference service's refusals and the bus library's failures.
const std::vector<KnownStatus>& KnownStatuses();

// Why something was not done.
struct Failure {
  std::string name;     // for programs: "out_of_range"
  std::string message;  // for people
  ExitCode exit_code;
};

// Explains a result other than 0. Whatever is no errno value is the service's.
Failure Explain(int status);

// The exit codes with their meaning, one line each.
std::string ExitCodeHelp();

}  // namespace vptzctl

#endif
