#include "model/child.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>

namespace vptz_test {
namespace {

constexpr uid_t kNobody = 65534;
constexpr unsigned kLimitSeconds = 60;

// An exception must not get out: the test program would go on in the child.
void RunGuarded(const std::function<void()>& body) {
  try {
    body();
  } catch (const std::exception& error) {
    ADD_FAILURE() << error.what();
  }
}

void Check(int result, const char* what) {
  if (result != 0) throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

void RunInChild(const std::function<void()>& body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    alarm(kLimitSeconds);
    RunGuarded(body);
    std::fflush(nullptr);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "the wait status of the process that ran it";
}

void BecomeOrdinaryUser(const std::string& folder) {
  if (geteuid() != 0) return;
  Check(chown(folder.c_str(), kNobody, kNobody), "chown");
  Check(setgroups(0, nullptr), "setgroups");
  Check(setresgid(kNobody, kNobody, kNobody), "setresgid");
  Check(setresuid(kNobody, kNobody, kNobody), "setresuid");
}

}  // namespace vptz_test
