#include "failures.h"

#include <cerrno>
#include <cstring>

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

// No errno value is beyond this.
constexpr int kLargestErrno = 4095;

const char* ErrnoName(int status) {
  return status < 0 && status >= -kLargestErrno ? strerrorname_np(-status) : nullptr;
}

}  // namespace

const std::vector<KnownStatus>& KnownStatuses() {
  static const std::vector<KnownStatus> table = {
      {-1001, "unknown_method", "it does not know the method", ExitCode::kRefused},
      {-1002, "bad_request", "it cannot use the request", ExitCode::kRefused},
      {-1004, "unknown_id", "it knows no such camera, profile, preset, protocol or port", ExitCode::kRefused},
      {-1005, "unsupported_axis", "the camera lacks this axis", ExitCode::kRefused},
      {-1006, "out_of_range", "a value is out of range", ExitCode::kRefused},
      {-1007, "not_logged_in", "the camera wants a login first, or another one", ExitCode::kRefused},
      {-1008, "busy", "taken or under way already", ExitCode::kRefused},
      {-1009, "powered_off", "the camera has no power", ExitCode::kRefused},
      {-1010, "offline", "the camera does not answer", ExitCode::kRefused},
      {-1011, "not_stored", "its database does not take it", ExitCode::kRefused},
      {-1012, "not_removable", "the camera may not be removed", ExitCode::kRefused},
      {-1, "not_sent",
       "the library has sent nothing: the database lacks what the command needs, or a text is too long",
       ExitCode::kDatabase},
      {-EACCES, "EACCES", "the bus does not allow it; nothing was executed", ExitCode::kNoConnection},
      {-ENOTCONN, "ENOTCONN", "no connection to the bus; nothing was sent", ExitCode::kNoConnection},
      {-ETIMEDOUT, "ETIMEDOUT", "no answer within the time-out", ExitCode::kTimeout},
      {-ESRCH, "ESRCH", "the service \"vptz\" is not running", ExitCode::kNoService},
      {-ECONNRESET, "ECONNRESET",
       "the connection or the service was lost while waiting; the command may have been executed",
       ExitCode::kOther},
      {-EMSGSIZE, "EMSGSIZE", "the request or the answer is too long; the command may have been executed",
       ExitCode::kOther},
  };
  return table;
}

Failure Explain(int status) {
  for (const KnownStatus& known : KnownStatuses()) {
    if (known.status == status) {
      const bool refused = known.exit_code == ExitCode::kRefused;
      return {known.name, (refused ? "refused by the service: " : "") + std::string(known.text),
              known.exit_code};
    }
  }
  if (const char* name = ErrnoName(status)) {
    return {name, strerrordesc_np(-status), ExitCode::kOther};
  }
  return {"refused", "refused by the service with a status that has no name here", ExitCode::kRefused};
}

std::string ExitCodeHelp() {
  std::string help;
  for (const ExitCodeMeaning& row : kExitCodes) {
    help += "  " + std::to_string(static_cast<int>(row.exit_code)) + "  " + row.text + "\n";
  }
  return help;
}

}  // namespace vptzctl
