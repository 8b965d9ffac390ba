// What a result means, in words: a name for programs, a sentence for people.
//
// The names are those that vptzctl prints and that the Python module's errors
// carry. Needs neither client nor connection; any thread may ask. The texts are
// constants.
#ifndef VPTZ_RESULTS_H
#define VPTZ_RESULTS_H

#include <cerrno>
#include <cstring>
#include <vector>

// One result and its meaning.
struct VptzResultMeaning {
  int result;        // as an operation returned it
  const char* name;  // for programs: "done", "out_of_range", "ETIMEDOUT"
  const char* text;  // for people: begins in lower case, has no full stop
};

// The results that have a meaning of their own here: 0, -1, the reference
// service's refusals, and the bus library's failures that an application may
// want to tell apart. Other negative errno values have the system's names.
inline const std::vector<VptzResultMeaning>& VptzKnownResults() {
  static const std::vector<VptzResultMeaning> meanings = {
      {0, "done", "done"},
      {-1, "not_sent",
       "the library has sent nothing: the database lacks what the command needs, or a text is too long"},
      {-1001, "unknown_method", "refused by the service: it does not know the method"},
      {-1002, "bad_request", "refused by the service: it cannot use the request"},
      {-1004, "unknown_id",
       "refused by the service: it knows no such camera, profile, preset, protocol or port"},
      {-1005, "unsupported_axis", "refused by the service: the camera lacks this axis"},
      {-1006, "out_of_range", "refused by the service: a value is out of range"},
      {-1007, "not_logged_in", "refused by the service: the camera wants a login first, or another one"},
      {-1008, "busy", "refused by the service: taken or under way already"},
      {-1009, "powered_off", "refused by the service: the camera has no power"},
      {-1010, "offline", "refused by the service: the camera does not answer"},
      {-1011, "not_stored", "refused by the service: its database does not take it"},
      {-1012, "not_removable", "refused by the service: the camera may not be removed"},
      {-1013, "unsupported", "refused by the service: the camera cannot do that"},
      {-1014, "refused_by_camera", "refused by the camera: the service's log has its own words"},
      {-EACCES, "EACCES", "the bus does not allow it; nothing was executed"},
      {-ENOTCONN, "ENOTCONN", "no connection to the bus; nothing was sent"},
      {-ETIMEDOUT, "ETIMEDOUT", "no answer within the time-out"},
      {-ESRCH, "ESRCH", "the service \"vptz\" is not running"},
      {-ECONNRESET, "ECONNRESET",
       "the connection or the service was lost while waiting; the command may have been executed"},
      {-EMSGSIZE, "EMSGSIZE", "the request or the answer is too long; the command may have been executed"},
  };
  return meanings;
}

// The meaning of any result. A status without a name of its own, such as another
// service may give, is "refused"; so is a positive result, which is an answer only
// from queries and counts.
inline VptzResultMeaning VptzExplainResult(int result) {
  constexpr int kLargestErrno = 4095;
  for (const VptzResultMeaning& known : VptzKnownResults()) {
    if (known.result == result) return known;
  }
  const bool is_errno = result < 0 && result >= -kLargestErrno;
  const char* const name = is_errno ? strerrorname_np(-result) : nullptr;
  if (name != nullptr) return {result, name, strerrordesc_np(-result)};
  return {result, "refused", "refused by the service with a status that has no name here"};
}

#endif
