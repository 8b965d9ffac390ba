// Passwords: never on the command line, never shown.
#ifndef VPTZCTL_PASSWORD_H
#define VPTZCTL_PASSWORD_H

#include <string>
#include <vector>

#include "arguments.h"

namespace vptzctl {

class Session;

// --password-file and --password-stdin. `needs` is the option without which
// there is no password, if there is one.
std::vector<Argument> PasswordArguments(const std::string& needs = "");

// Whether these are the arguments of a command that takes a password.
bool TakeAPassword(const std::vector<Argument>& arguments);

// Reads the password from where the command line says, else from the terminal
// without an echo. Its line end does not count. Throws CommandError when it
// cannot be read.
std::string ReadPassword(Session& session);

}  // namespace vptzctl

#endif
