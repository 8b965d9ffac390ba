// Reads the command line by the command table.
#ifndef VPTZCTL_PARSER_H
#define VPTZCTL_PARSER_H

#include <stdexcept>
#include <string>

#include "value.h"

namespace vptzctl {

struct Command;

// What the command line asks for: a text to print, or a command to run.
struct Invocation {
  std::string text;  // help or version
  const Command* command = nullptr;
  Values values;    // of every argument of the command
  std::string bus;  // empty: the default address
  int timeout = 0;  // seconds; 0: the configured one
  bool json = false;
  bool verbose = false;  // show the library's log
};

// A command line that is wrong; what() tells why.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

Invocation Parse(int argc, const char* const* argv);

}  // namespace vptzctl

#endif
