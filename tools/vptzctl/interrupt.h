// Ends a loop on Ctrl-C, when the program is asked to terminate, or when its
// terminal goes.
#ifndef VPTZCTL_INTERRUPT_H
#define VPTZCTL_INTERRUPT_H

#include <chrono>

namespace vptzctl {

// Catches the first SIGINT, SIGTERM and SIGHUP from its construction to the
// program's end. A second SIGINT or SIGTERM ends the program as usual, should a
// call not return; a second SIGHUP does not. A SIGHUP that is ignored stays so.
class Interrupt {
 public:
  Interrupt();

  bool Arrived() const;

  // Waits, and tells whether one arrived meanwhile. Waits no longer when the
  // other descriptor, if there is one, becomes readable.
  bool WaitFor(std::chrono::duration<double> time, int other = -1) const;
};

}  // namespace vptzctl

#endif
