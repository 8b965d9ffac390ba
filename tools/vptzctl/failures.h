// What results mean: their exit codes, and why a command failed.
#ifndef VPTZCTL_FAILURES_H
#define VPTZCTL_FAILURES_H

#include <stdexcept>
#include <string>
#include <utility>

namespace vptzctl {

enum class ExitCode {
  kDone = 0,
  kRefused = 1,
  kUsage = 2,
  kNoConnection = 3,
  kTimeout = 4,
  kNoService = 5,
  kOther = 6,
  kDatabase = 7,
};

// Why something was not done.
struct Failure {
  std::string name;     // for programs: "out_of_range"
  std::string message;  // for people
  ExitCode exit_code;
};

// Ends a verb before anything is sent. Thrown by what verbs share, so that they
// need not pass it on.
class CommandError : public std::runtime_error {
 public:
  explicit CommandError(Failure failure) : std::runtime_error(failure.message), failure_(std::move(failure)) {}
  const Failure& failure() const { return failure_; }

 private:
  Failure failure_;
};

// Explains a result other than 0.
Failure Explain(int status);

// The exit codes with their meaning, one line each.
std::string ExitCodeHelp();

}  // namespace vptzctl

#endif
