#ifndef VPTZCTL_ERRORS_SILENCED_H
#define VPTZCTL_ERRORS_SILENCED_H

#include <fcntl.h>
#include <unistd.h>

namespace vptzctl {

// While it lives nothing reaches standard error, the library's log included:
// nobody wants it between the keys of a line.
class ErrorsSilenced {
 public:
  ErrorsSilenced() : before_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) return;
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
  }
  ~ErrorsSilenced() {
    if (before_ < 0) return;
    dup2(before_, STDERR_FILENO);
    close(before_);
  }
  ErrorsSilenced(const ErrorsSilenced&) = delete;
  ErrorsSilenced& operator=(const ErrorsSilenced&) = delete;

 private:
  const int before_;  // -1: there was no standard error
};

}  // namespace vptzctl

#endif
