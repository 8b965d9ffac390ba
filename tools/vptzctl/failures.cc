#include "failures.h"

#include <cerrno>
#include <cstring>

#include <vptz/results.h>

namespace vptzctl {
namespace {

struct ExitCodeMeaning {
  ExitCode exit_code;
  const char* text;
};

constexpr ExitCodeMeaning kExitCodes[] = {
    {ExitCode::kDone, "done"},
    {ExitCode::kRefused, "refused by the service; the status is printed"},
    {ExitCode::kUsage, "the command line is wrong; nothing was sent"},
    {ExitCode::kNoConnection, "no connection to the message bus; nothing was sent"},
    {ExitCode::kTimeout, "no answer within the time-out"},
    {ExitCode::kNoService, "the service is not running; nothing was done"},
    {ExitCode::kOther, "anything else, such as a connection lost while waiting"},
    {ExitCode::kDatabase, "the database lacks what was named, or cannot be used; nothing was sent"},
};

// Which exit code a result other than 0 has. Whatever is no errno value is the
// service's.
ExitCode ExitCodeOf(int status) {
  constexpr int kLargestErrno = 4095;
  switch (status) {
    case -1:
      return ExitCode::kDatabase;
    case -EACCES:
    case -ENOTCONN:
      return ExitCode::kNoConnection;
    case -ETIMEDOUT:
      return ExitCode::kTimeout;
    case -ESRCH:
      return ExitCode::kNoService;
  }
  const bool is_errno = status < 0 && status >= -kLargestErrno && strerrorname_np(-status) != nullptr;
  return is_errno ? ExitCode::kOther : ExitCode::kRefused;
}

}  // namespace

Failure Explain(int status) {
  const VptzResultMeaning meaning = VptzExplainResult(status);
  return {meaning.name, meaning.text, ExitCodeOf(status)};
}

std::string ExitCodeHelp() {
  std::string help;
  for (const ExitCodeMeaning& row : kExitCodes) {
    help += "  " + std::to_string(static_cast<int>(row.exit_code)) + "  " + row.text + "\n";
  }
  return help;
}

}  // namespace vptzctl
