#ifndef DORV_BUS_DIAL_H
#define DORV_BUS_DIAL_H

#include <chrono>

#include "address.h"
#include "event.h"

struct mosquitto;

namespace dorv {

// Has the instance connect to a broker and send its greeting. Gives up when
// `stop` is set (-ECANCELED) and after `timeout` an address (-ETIMEDOUT). 0 or a
// negative errno value.
int ConnectInstance(mosquitto* instance, const Address& address, int port, int keep_alive_seconds,
                    std::chrono::milliseconds timeout, const Event& stop);

}  // namespace dorv

#endif
