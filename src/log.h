// How the library writes to the platform's log.
#ifndef VPTZ_SRC_LOG_H
#define VPTZ_SRC_LOG_H

#include <zerklog.h>

namespace vptz {

// The platform's numbers; a log need not have names for them.
enum class LogLevel : int {
  kError = 0,    // bus connection, configuration load, database exceptions
  kWarning = 1,  // something is missing, work goes on
  kNotice = 2,   // progress
  kDetail = 3    // for the developer
};

inline constexpr int kLogModule = 42;

// The source names that log lines carry. Log filters on appliances know these
// spellings, so they stay whatever the files are called or wherever they lie.
namespace log_source {
inline constexpr char kClient[] = "vptz_client.cc";
inline constexpr char kDeviceHandle[] = "vptz_device.cc";
inline constexpr char kConfig[] = "../src/config.cc";
inline constexpr char kUtils[] = "../src/utils.cc";
inline constexpr char kModel[] = "../src/model/vptzmodel.cc";
inline constexpr char kModelTemplates[] = "../src/model/vptzmodel.h";
inline constexpr char kDeviceEntity[] = "../src/model/device.cc";
}  // namespace log_source

}  // namespace vptz

// VPTZ_LOG(level, source, format, ...): a macro because line and function are
// the caller's. Not for use in lambdas, whose function name says nothing.
#define VPTZ_LOG(level, source, ...) VPTZ_LOG_AS(__func__, level, source, __VA_ARGS__)

// VPTZ_LOG on behalf of the public operation that a helper function is part of.
#define VPTZ_LOG_AS(function, level, source, ...) \
  ZERK_LOG_write_newline(::vptz::kLogModule, static_cast<int>(level), source, __LINE__, function, __VA_ARGS__)

#endif
