// Ctrl-C in the tool's own shell: it ends what is being typed, or the command
// that runs, and not the shell.
#ifndef VPTZCTL_PROMPT_INTERRUPT_H
#define VPTZCTL_PROMPT_INTERRUPT_H

#include <functional>
#include <thread>

#include <signal.h>

namespace vptzctl {

// Catches SIGINT from its construction to its end. One for the process.
class PromptInterrupt {
 public:
  PromptInterrupt();
  ~PromptInterrupt();
  PromptInterrupt(const PromptInterrupt&) = delete;
  PromptInterrupt& operator=(const PromptInterrupt&) = delete;

  // Whether one has arrived since the last call.
  bool Take();

  // Readable when one has arrived.
  int descriptor() const;

 private:
  struct sigaction before_ = {};
};

// While it lives, a SIGINT that no Interrupt catches has `break_off` called, on a
// thread of its own.
class CallBreaker {
 public:
  CallBreaker(PromptInterrupt& interrupt, std::function<void()> break_off);
  ~CallBreaker() { End(); }
  CallBreaker(const CallBreaker&) = delete;
  CallBreaker& operator=(const CallBreaker&) = delete;

  // Ends it. Whether anything was broken off.
  bool End();

 private:
  void Watch();

  PromptInterrupt& interrupt_;
  const std::function<void()> break_off_;
  bool used_ = false;
  int ended_;  // readable when the thread is to end
  std::thread thread_;
};

}  // namespace vptzctl

#endif
