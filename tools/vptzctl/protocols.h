// Names of control protocols.
#ifndef VPTZCTL_PROTOCOLS_H
#define VPTZCTL_PROTOCOLS_H

#include <string>
#include <vector>

namespace vptzctl {

// Those that the library knows by name.
const std::vector<std::string>& KnownProtocols();

// Those of the open database and those of the library.
std::vector<std::string> AllProtocols();

// The right spelling of a protocol whose case may be wrong; empty when there is
// none of that name.
std::string SpelledProtocol(const std::string& text);

// The same, the text itself when there is none: the service decides then.
std::string ProtocolOrText(const std::string& text);

// The same for what only the database can answer. Throws CommandError.
std::string RequireProtocol(const std::string& text);

// "there is no protocol X; there are ONVIF, ..."
std::string NoSuchProtocol(const std::string& text);

}  // namespace vptzctl

#endif
