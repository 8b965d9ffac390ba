#ifndef DORV_BUS_LOG_H
#define DORV_BUS_LOG_H

#include <zerklog.h>

namespace dorv {

// The bus library's number in the platform's log.
constexpr int kLogModule = 7;

}  // namespace dorv

#define DORV_LOG(level, ...) \
  ZERK_LOG_write_newline(dorv::kLogModule, level, __FILE_NAME__, __LINE__, __func__, __VA_ARGS__)

#endif
