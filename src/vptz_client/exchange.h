// The one request/reply path. An operation is a call of Exchange that fills the
// fields of its command and, where it returns data, reads the response.
#ifndef VPTZ_SRC_VPTZ_CLIENT_EXCHANGE_H
#define VPTZ_SRC_VPTZ_CLIENT_EXCHANGE_H

#include <vptz/vptz.pb.h>
#include <vptz/vptz_client.h>

#include "client_access.h"
#include "no_throw.h"

namespace vptz {

// Names the method in the command, sends it and parses the reply. Returns a
// negative value when the call failed; `response` is then as it was.
int Send(VptzClient& client, const char* method, int timeout, tutorial::VptzCommand& command,
         tutorial::VptzResponse& response);

// `fill` gets the empty tutorial::VptzCommand, `read` the parsed
// tutorial::VptzResponse once the call itself has succeeded, whatever its
// status code. Returns what every operation returns.
template <class Fill, class Read>
int Exchange(VptzClient& client, const char* method, int timeout, Fill&& fill, Read&& read) {
  if (!ClientAccess::HasBusClient(client)) return -1;
  return NoThrow(-1, [&]() -> int {
    tutorial::VptzCommand command;
    fill(command);
    tutorial::VptzResponse response;
    const int result = Send(client, method, timeout, command, response);
    if (result < 0) return result;
    read(static_cast<const tutorial::VptzResponse&>(response));
    return response.status_code();
  });
}

template <class Fill>
int Exchange(VptzClient& client, const char* method, int timeout, Fill&& fill) {
  return Exchange(client, method, timeout, fill, [](const tutorial::VptzResponse&) {});
}

inline int Exchange(VptzClient& client, const char* method, int timeout) {
  return Exchange(client, method, timeout, [](tutorial::VptzCommand&) {});
}

// A command to one PTZ node; `fill` gets the tutorial::PtzCommand that holds
// the node's id already.
template <class Fill>
int ExchangePtz(VptzClient& client, const char* method, unsigned int ptz_id, int timeout, Fill&& fill) {
  return Exchange(client, method, timeout, [&](tutorial::VptzCommand& command) {
    tutorial::PtzCommand& ptz = *command.mutable_ptz_command();
    ptz.set_ptz_id(ptz_id);
    fill(ptz);
  });
}

// A command about devices; `fill` gets the empty tutorial::DeviceCommand.
template <class Fill>
int ExchangeDevice(VptzClient& client, const char* method, int timeout, Fill&& fill) {
  return Exchange(client, method, timeout,
                  [&](tutorial::VptzCommand& command) { fill(*command.mutable_device_command()); });
}

// One that names a device and nothing else.
inline int ExchangeDeviceId(VptzClient& client, const char* method, unsigned int device_id, int timeout) {
  return ExchangeDevice(client, method, timeout,
                        [&](tutorial::DeviceCommand& device) { device.set_device_id(device_id); });
}

}  // namespace vptz

#endif
