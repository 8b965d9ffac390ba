// What the tests of the product's promises share.
#ifndef VPTZ_TESTS_RELIABILITY_RELIABILITY_H
#define VPTZ_TESTS_RELIABILITY_RELIABILITY_H

#include <cstddef>

namespace vptz_test {

// The first figure in the ordinary suite, the second in the long run.
int Scaled(int ordinary, int full);

// Of this process.
std::size_t ThreadCount();
std::size_t DescriptorCount();
std::size_t ResidentKib();

// Whether memory can be measured: sanitizers keep what is freed.
bool MeasuresMemory();

}  // namespace vptz_test

#endif
