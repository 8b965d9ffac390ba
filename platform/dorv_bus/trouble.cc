#include "trouble.h"

#include <algorithm>

#include "errors.h"

namespace dorv {

bool Trouble::IsNew(int error, TimePoint now) const {
  constexpr std::chrono::minutes kQuiet{1};
  return std::none_of(reported_.begin(), reported_.end(), [&](const Reported& reported) {
    return reported.error == error && now - reported.at < kQuiet;
  });
}

void Trouble::Report(int error, const std::string& address, TimePoint now, LogWriter& log) {
  if (!IsNew(error, now)) {
    return;
  }
  Note(error, now);
  DORV_LOG_LATER(log, ZERK_LOG_WARNING, "no connection to %s: %s", address.c_str(), ErrorText(error));
}

// In the place that it has, or of the one that was reported longest ago.
void Trouble::Note(int error, TimePoint now) {
  const auto longest_ago = [&](const Reported& one, const Reported& other) {
    const bool is_this = one.error == error;
    return is_this != (other.error == error) ? is_this : one.at < other.at;
  };
  *std::min_element(reported_.begin(), reported_.end(), longest_ago) = {error, now};
}

void Trouble::ReportEnd(const std::string& address, LogWriter& log) {
  if (std::all_of(reported_.begin(), reported_.end(), [](const Reported& none) { return none.error == 0; })) {
    return;
  }
  reported_ = {};
  DORV_LOG_LATER(log, ZERK_LOG_NOTICE, "connected to %s again", address.c_str());
}

}  // namespace dorv
