// What the libraries below read from the environment, set as the command line
// says. Settings of the user's own win.
#ifndef VPTZCTL_ENVIRONMENT_H
#define VPTZCTL_ENVIRONMENT_H

namespace vptzctl {

struct Invocation;

// To be called before anything is logged and before a client is made.
void PrepareEnvironment(const Invocation& invocation);

}  // namespace vptzctl

#endif
