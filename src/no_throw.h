#ifndef VPTZ_SRC_NO_THROW_H
#define VPTZ_SRC_NO_THROW_H

#include <exception>
#include <utility>

namespace vptz {

// What `body` returns, or `failed` when it throws, which it does where memory runs
// out. Anything else that unwinds is a thread's cancellation, which must not be
// caught.
template <class Result, class Body>
Result NoThrow(Result failed, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const std::exception&) {
    return failed;
  }
}

}  // namespace vptz

#endif
