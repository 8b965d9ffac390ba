// The terminal of the tool's own shell. Between two prompts it stays as the line
// editor wants it: handed back, its driver would take keys that are typed ahead for
// its own editing (the end of input, the erasing of a character) and lose them.
#ifndef VPTZCTL_LINE_TERMINAL_H
#define VPTZCTL_LINE_TERMINAL_H

namespace vptzctl {

// The terminal at standard input, from the first prompt to its end. One for the
// process. A signal that ends the process gives the terminal back as it was.
class LineTerminal {
 public:
  LineTerminal();
  ~LineTerminal();
  LineTerminal(const LineTerminal&) = delete;
  LineTerminal& operator=(const LineTerminal&) = delete;

  // Before a line is read: again what the editor left, should a stop of the process
  // have changed it.
  static void Resume();

  // Behind a line: what the editor has set is to stay.
  static void Keep();
};

// While it lives the terminal is an ordinary one, for a question; what has been
// typed before is no answer, and is dropped. Without a LineTerminal it does nothing.
class OrdinaryTerminal {
 public:
  OrdinaryTerminal();
  ~OrdinaryTerminal();
  OrdinaryTerminal(const OrdinaryTerminal&) = delete;
  OrdinaryTerminal& operator=(const OrdinaryTerminal&) = delete;
};

}  // namespace vptzctl

#endif
