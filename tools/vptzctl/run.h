#ifndef VPTZCTL_RUN_H
#define VPTZCTL_RUN_H

namespace vptzctl {

// The whole program; returns its exit code. Throws nothing.
int Run(int argc, const char* const* argv) noexcept;

}  // namespace vptzctl

#endif
