// Lets one system call or allocation of this program fail, libraries included.
#ifndef VPTZ_TESTS_RELIABILITY_NTH_FAILURE_H
#define VPTZ_TESTS_RELIABILITY_NTH_FAILURE_H

namespace vptz_test {

enum class FailureKind {
  kWrite,  // to a file (ENOSPC) or a socket (EIO); an eventfd cannot fail so
  kSync,   // fsync and fdatasync: EIO
  kOpen,   // files and whatever else makes a descriptor: EMFILE
  kAllocation
};

// While one lives the n-th event of that kind fails, counted from 1 over all
// threads, and no other. One at a time.
class NthFailure {
 public:
  NthFailure(FailureKind kind, int n);
  ~NthFailure();
  NthFailure(const NthFailure&) = delete;
  NthFailure& operator=(const NthFailure&) = delete;

  // Whether it has happened.
  bool Happened() const;
};

// Sanitizers bring an allocator of their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kAllocationsCanFail = false;
#else
constexpr bool kAllocationsCanFail = true;
#endif

}  // namespace vptz_test

#endif
