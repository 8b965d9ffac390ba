// Files that are made from the command table at build time.
#ifndef VPTZCTL_PAGES_PAGES_H
#define VPTZCTL_PAGES_PAGES_H

#include <string>

namespace vptzctl {

// A completion script for each shell.
std::string BashCompletion();
std::string ZshCompletion();
std::string FishCompletion();

// The manual page vptzctl(1), in the macros of man(7).
std::string ManualPage();

}  // namespace vptzctl

#endif
