// Why the message bus cannot be joined, as far as the tool can find out by
// itself: the library tells its reason to the log only.
#ifndef VPTZCTL_BROKER_H
#define VPTZCTL_BROKER_H

#include <chrono>
#include <string>

namespace vptzctl {

// Tries the address once more, unless the library has waited in vain already:
// "No such file or directory; is the broker running?".
std::string WhyNotConnected(const std::string& address, std::chrono::duration<double> waited);

}  // namespace vptzctl

#endif
