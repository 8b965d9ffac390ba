#include "trouble.h"

#include "errors.h"
#include "log.h"

namespace dorv {

void Trouble::Report(int error, const std::string& address, TimePoint now) {
  constexpr std::chrono::minutes kQuiet{1};
  const bool known = error_ != 0;
  if (known && now - reported_at_ < kQuiet) {
    return;
  }
  error_ = error;
  reported_at_ = now;
  DORV_LOG(ZERK_LOG_WARNING, "no connection to %s: %s", address.c_str(), ErrorText(error));
}

void Trouble::Over(const std::string& address) {
  if (error_ == 0) {
    return;
  }
  error_ = 0;
  DORV_LOG(ZERK_LOG_NOTICE, "connected to %s again", address.c_str());
}

}  // namespace dorv
