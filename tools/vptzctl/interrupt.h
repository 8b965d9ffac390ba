// Ends a loop on Ctrl-C, when the program is asked to terminate, or when its
// terminal goes.
#ifndef VPTZCTL_INTERRUPT_H
#define VPTZCTL_INTERRUPT_H

#include <chrono>

namespace vptzctl {

// Catches the first SIGINT, SIGTERM and SIGHUP in its life. A second SIGINT or
// SIGTERM does what it would have done without it: it ends the program as usual,
// should a call not return; a second SIGHUP does not. A SIGHUP that is ignored stays
// so. One at a time.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  // The signal that an Interrupt of this process caught last; 0 before.
  static int Caught();

  bool Arrived() const;

  // Waits, and tells whether one arrived meanwhile. Waits no longer when the
  // other descriptor, if there is one, becomes readable.
  bool WaitFor(std::chrono::duration<double> time, int other = -1) const;
};

}  // namespace vptzctl

#endif
