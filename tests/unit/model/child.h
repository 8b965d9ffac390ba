// Parts of a test that change what can't be changed back: they run in a process
// of their own.
#ifndef VPTZ_TESTS_UNIT_MODEL_CHILD_H
#define VPTZ_TESTS_UNIT_MODEL_CHILD_H

#include <functional>
#include <string>

namespace vptz_test {

// Runs the body in a forked process and waits for its end. What fails there
// fails the test.
void RunInChild(const std::function<void()>& body);

// Root is above all permissions: it becomes an ordinary user who owns the
// folder. Others stay who they are.
void BecomeOrdinaryUser(const std::string& folder);

}  // namespace vptz_test

#endif
