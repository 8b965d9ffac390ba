// Why a command was refused, where the command line and the database show it.
#ifndef VPTZCTL_CAUSES_H
#define VPTZCTL_CAUSES_H

#include <string>

namespace vptzctl {

class Session;

// The whole message for people: "refused by the service: pan goes from -170 to
// 170 deg". Empty when no more is known than what the status says.
std::string CauseOf(Session& session, int status);

}  // namespace vptzctl

#endif
