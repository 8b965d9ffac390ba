#include "allocations.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace vptz_test {
namespace {

constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

thread_local std::size_t allocations = 0;
thread_local std::size_t allocations_left = kUnlimited;
thread_local std::size_t largest_size = kUnlimited;

void* Allocate(std::size_t size) {
  if (allocations_left == 0 || size > largest_size) throw std::bad_alloc();
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  if (allocations_left != kUnlimited) --allocations_left;
  ++allocations;
  return memory;
}

}  // namespace

std::size_t Allocations() { return allocations; }

AllocationLimit::AllocationLimit(std::size_t count) { allocations_left = count; }

AllocationLimit::~AllocationLimit() { allocations_left = kUnlimited; }

AllocationSizeLimit::AllocationSizeLimit(std::size_t size) { largest_size = size; }

AllocationSizeLimit::~AllocationSizeLimit() { largest_size = kUnlimited; }

}  // namespace vptz_test

void* operator new(std::size_t size) { return vptz_test::Allocate(size); }
void* operator new[](std::size_t size) { return vptz_test::Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return vptz_test::Allocate(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
