#include "allocations.h"

#include <cstddef>

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

std::size_t Allocations() { return allocations; }

// The C library's own functions, counted on the way.
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);

void* malloc(std::size_t size) {
  ++allocations;
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  ++allocations;
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  ++allocations;
  return __libc_realloc(memory, size);
}

}  // extern "C"
