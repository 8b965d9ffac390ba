#ifndef VPTZ_BENCHMARKS_ALLOCATIONS_H
#define VPTZ_BENCHMARKS_ALLOCATIONS_H

#include <cstddef>

// Heap allocations of the calling thread so far, those of C libraries included.
std::size_t Allocations();

#endif
