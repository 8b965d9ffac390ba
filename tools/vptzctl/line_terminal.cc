#include "line_terminal.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iterator>

#include <termios.h>
#include <unistd.h>

namespace vptzctl {
namespace {

// For the handler, hence of the process.
termios ordinary = {};
termios edited = {};
volatile std::sig_atomic_t kept = 0;

constexpr int kNumbers[] = {SIGTERM, SIGHUP, SIGQUIT};
struct sigaction before[std::size(kNumbers)];

void Set(const termios& settings, int when) {
  while (tcsetattr(STDIN_FILENO, when, &settings) != 0 && errno == EINTR) continue;
}

// The signal is held off until the handler ends, and then does what it did before.
void OnSignal(int number) {
  const int saved = errno;
  if (kept != 0) tcsetattr(STDIN_FILENO, TCSANOW, &ordinary);
  for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
    if (kNumbers[i] == number) sigaction(number, &before[i], nullptr);
  }
  raise(number);
  errno = saved;
}

}  // namespace

LineTerminal::LineTerminal() {
  tcgetattr(STDIN_FILENO, &ordinary);
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
    sigaction(kNumbers[i], &action, &before[i]);
    if (before[i].sa_handler == SIG_IGN) sigaction(kNumbers[i], &before[i], nullptr);
  }
}

LineTerminal::~LineTerminal() {
  if (kept != 0) Set(ordinary, TCSADRAIN);
  kept = 0;
  for (std::size_t i = 0; i < std::size(kNumbers); ++i) sigaction(kNumbers[i], &before[i], nullptr);
}

void LineTerminal::Resume() {
  if (kept != 0) Set(edited, TCSADRAIN);
}

void LineTerminal::Keep() {
  if (tcgetattr(STDIN_FILENO, &edited) == 0) kept = 1;
}

OrdinaryTerminal::OrdinaryTerminal() {
  if (kept != 0) Set(ordinary, TCSAFLUSH);
}

OrdinaryTerminal::~OrdinaryTerminal() {
  if (kept != 0) Set(edited, TCSADRAIN);
}

}  // namespace vptzctl
