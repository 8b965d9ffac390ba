#include "interrupt.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace vptzctl {
namespace {

// Readable for good once a signal arrived, so that none is lost between a look
// and a wait. The handler needs it, hence one for the process.
int arrived = -1;
volatile std::sig_atomic_t caught = 0;

constexpr int kNumbers[] = {SIGINT, SIGTERM, SIGHUP};
struct sigaction before[std::size(kNumbers)];

void Restore(std::size_t i) { sigaction(kNumbers[i], &before[i], nullptr); }

// The second of a kind does what it did before, but for a hang-up: a terminal that
// goes sends one, and then its shell once more.
void OnSignal(int number) {
  const int saved = errno;
  for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
    if (kNumbers[i] == number && number != SIGHUP) Restore(i);
  }
  caught = number;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(arrived, &one, sizeof one);
  errno = saved;
}

// A hang-up that is ignored, as nohup has it, stays so.
void Catch() {
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
    sigaction(kNumbers[i], &action, &before[i]);
    if (kNumbers[i] == SIGHUP && before[i].sa_handler == SIG_IGN) Restore(i);
  }
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
  Catch();
}

Interrupt::~Interrupt() {
  for (std::size_t i = 0; i < std::size(kNumbers); ++i) Restore(i);
  close(arrived);
  arrived = -1;
}

int Interrupt::Caught() { return caught; }

bool Interrupt::Arrived() const { return ArrivedWithin(std::chrono::duration<double>(0), -1); }

bool Interrupt::WaitFor(std::chrono::duration<double> time, int other) const {
  return ArrivedWithin(time, other);
}

}  // namespace vptzctl
