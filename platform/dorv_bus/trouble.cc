#include "trouble.h"

#include "errors.h"

namespace dorv {

bool Trouble::IsNew(int error, TimePoint now) const {
  constexpr std::chrono::minutes kQuiet{1};
  return error != error_ || now - reported_at_ >= kQuiet;
}

void Trouble::Report(int error, const std::string& address, TimePoint now, LogWriter& log) {
  if (!IsNew(error, now)) {
    return;
  }
  error_ = error;
  reported_at_ = now;
  DORV_LOG_LATER(log, ZERK_LOG_WARNING, "no connection to %s: %s", address.c_str(), ErrorText(error));
}

void Trouble::Over(const std::string& address, LogWriter& log) {
  if (error_ == 0) {
    return;
  }
  error_ = 0;
  DORV_LOG_LATER(log, ZERK_LOG_NOTICE, "connected to %s again", address.c_str());
}

}  // namespace dorv
