// The password of the tests. No log, error text, command line or output may
// ever show it: scripts/secrets looks for it in everything that a run of the
// tests leaves behind.
#ifndef VPTZ_TESTS_SUPPORT_CANARY_H
#define VPTZ_TESTS_SUPPORT_CANARY_H

namespace vptz_test {

// A macro, so that literals can be put together with it.
#define VPTZ_TEST_CANARY "cAnArY-4711-pAsSwOrD"

constexpr char kCanary[] = VPTZ_TEST_CANARY;

}  // namespace vptz_test

#endif
