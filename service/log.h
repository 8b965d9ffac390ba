// The service's lines in the platform's log.
#ifndef VPTZ_SERVICE_LOG_H
#define VPTZ_SERVICE_LOG_H

#include <zerklog.h>

namespace vptzd {

// The part of the platform that speaks.
constexpr int kLogModule = 43;

// The platform's numbers; a log need not have names for them.
enum class LogLevel : int { kError = 0, kWarning = 1, kNotice = 2 };

}  // namespace vptzd

#define VPTZD_LOG(level, ...)                                                                           \
  ZERK_LOG_write_newline(vptzd::kLogModule, static_cast<int>(level), __FILE_NAME__, __LINE__, __func__, \
                         __VA_ARGS__)

#endif
