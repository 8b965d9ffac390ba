// The protocols by which cameras are controlled, as rows and commands name them: what
// is told of one stands in its row of this one table.
#ifndef VPTZ_SERVICE_DRIVERS_PROTOCOLS_H
#define VPTZ_SERVICE_DRIVERS_PROTOCOLS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace vptzd {

struct ControlProtocol {
  const char* name;
  bool serial;                 // its cameras sit on a serial line, not in the network
  bool searched_unnamed;       // a search that names no protocol looks for its cameras
  std::uint32_t preset_shift;  // how much higher its cameras number their presets, which else begin with 1
  const char* scheme;          // of the service's address, SCHEME://HOST[:PORT][PATH]
  std::uint16_t port;          // of a host that tells none; 0: none is written
  const char* path;

  // The address of a camera's service at that host, or at that port of a serial one.
  std::string ServiceUri(const std::string& address) const;
};

const std::array<ControlProtocol, 6>& Protocols();

// A row that only has a name, of a camera in the network, stands for a protocol that
// is not in the table.
const ControlProtocol& ProtocolNamed(std::string_view name);

// False for a protocol that is not in the table.
bool HasProtocol(std::string_view name);

// "A, B or C": the names of all of them, for people.
std::string ProtocolNames();

}  // namespace vptzd

#endif
