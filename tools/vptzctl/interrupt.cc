#include "interrupt.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace vptzctl {
namespace {

// Readable for good once a signal arrived, so that none is lost between a look
// and a wait. The handler needs it, hence one for the process.
int arrived = -1;

void OnSignal(int) {
  const int saved = errno;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(arrived, &one, sizeof one);
  errno = saved;
}

void Catch(int number, int more_flags) {
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART | more_flags;
  sigaction(number, &action, nullptr);
}

// As nohup has it.
bool IsIgnored(int number) {
  struct sigaction action = {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// Whether a signal arrived. The wait also ends when `other` is readable; poll
// ignores a negative descriptor.
bool ArrivedWithin(std::chrono::duration<double> time, int other) {
  pollfd wanted[] = {{arrived, POLLIN, 0}, {other, POLLIN, 0}};
  const auto until = std::chrono::steady_clock::now() + time;
  while (true) {
    const auto left = until - std::chrono::steady_clock::now();
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    const int ready = poll(wanted, 2, milliseconds > 0 ? static_cast<int>(milliseconds) : 0);
    if (ready >= 0 || errno != EINTR) return ready > 0 && wanted[0].revents != 0;
  }
}

}  // namespace

Interrupt::Interrupt() {
  arrived = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (arrived < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  Catch(SIGINT, static_cast<int>(SA_RESETHAND));
  Catch(SIGTERM, static_cast<int>(SA_RESETHAND));
  // A terminal that goes sends it, and then its shell once more.
  if (!IsIgnored(SIGHUP)) Catch(SIGHUP, 0);
}

bool Interrupt::Arrived() const { return ArrivedWithin(std::chrono::duration<double>(0), -1); }

bool Interrupt::WaitFor(std::chrono::duration<double> time, int other) const {
  return ArrivedWithin(time, other);
}

}  // namespace vptzctl
