#include "prompt_interrupt.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace vptzctl {
namespace {

// Counts what has arrived. The handler needs it, hence one for the process.
int arrived = -1;

int NewEvent() {
  const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (event < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return event;
}

void Announce(int event) {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(event, &one, sizeof one);
}

void OnSignal(int) {
  const int saved = errno;
  Announce(arrived);
  errno = saved;
}

}  // namespace

PromptInterrupt::PromptInterrupt() {
  arrived = NewEvent();
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, &before_);
}

PromptInterrupt::~PromptInterrupt() {
  sigaction(SIGINT, &before_, nullptr);
  close(arrived);
  arrived = -1;
}

bool PromptInterrupt::Take() {
  std::uint64_t count = 0;
  return read(arrived, &count, sizeof count) == sizeof count;
}

int PromptInterrupt::descriptor() const { return arrived; }

CallBreaker::CallBreaker(PromptInterrupt& interrupt, std::function<void()> break_off)
    : interrupt_(interrupt), break_off_(std::move(break_off)), ended_(NewEvent()) {
  // The signal is the main thread's, whose waiting it ends.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  thread_ = std::thread([this] { Watch(); });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

bool CallBreaker::End() {
  if (!thread_.joinable()) return used_;
  Announce(ended_);
  thread_.join();
  close(ended_);
  return used_;
}

void CallBreaker::Watch() {
  pollfd wanted[] = {{interrupt_.descriptor(), POLLIN, 0}, {ended_, POLLIN, 0}};
  while (true) {
    poll(wanted, 2, -1);
    if (wanted[1].revents != 0) return;
    if (!interrupt_.Take()) continue;
    used_ = true;
    break_off_();
  }
}

}  // namespace vptzctl
