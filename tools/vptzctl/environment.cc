#include "environment.h"

#include <cstdlib>
#include <string>

#include "parser.h"

namespace vptzctl {
namespace {

constexpr char kLogTarget[] = "ZERK_LOG_TARGET";
constexpr char kLogLevel[] = "ZERK_LOG_LEVEL";
constexpr char kConnectTimeout[] = "DORV_BUS_CONNECT_TIMEOUT";

bool IsSet(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

}  // namespace

void PrepareEnvironment(const Invocation& invocation) {
  const bool wants_log = invocation.verbose || IsSet(kLogTarget) || IsSet(kLogLevel);
  if (!wants_log) setenv(kLogTarget, "file:/dev/null", 1);
  if (invocation.timeout > 0 && !IsSet(kConnectTimeout)) {
    setenv(kConnectTimeout, std::to_string(invocation.timeout).c_str(), 1);
  }
}

}  // namespace vptzctl
