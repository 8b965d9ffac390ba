// Counts the test program's heap allocations and makes them fail on demand.
#ifndef VPTZ_TESTS_UNIT_ALLOCATIONS_H
#define VPTZ_TESTS_UNIT_ALLOCATIONS_H

#include <cstddef>

namespace vptz_test {

// The calling thread's allocations with new so far.
std::size_t Allocations();

// Lets the calling thread allocate `count` more times while it lives, then
// every new throws std::bad_alloc.
class AllocationLimit {
 public:
  explicit AllocationLimit(std::size_t count);
  ~AllocationLimit();
  AllocationLimit(const AllocationLimit&) = delete;
  AllocationLimit& operator=(const AllocationLimit&) = delete;
};

// While it lives, the calling thread's allocations of more than that many bytes
// throw std::bad_alloc.
class AllocationSizeLimit {
 public:
  explicit AllocationSizeLimit(std::size_t size);
  ~AllocationSizeLimit();
  AllocationSizeLimit(const AllocationSizeLimit&) = delete;
  AllocationSizeLimit& operator=(const AllocationSizeLimit&) = delete;
};

}  // namespace vptz_test

#endif
