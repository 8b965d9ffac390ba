#ifndef DORV_BUS_DIAL_H
#define DORV_BUS_DIAL_H

#include "address.h"
#include "event.h"

namespace dorv {

// Tries whether somebody listens at the address, and says why not. libmosquitto
// connects without a time-out and keeps the reason to itself, so this goes
// first. Gives up when `stop` is set (-ECANCELED) and after two seconds an
// address (-ETIMEDOUT). 0 or a negative errno value.
int Probe(const Address& address, int port, const Event& stop);

}  // namespace dorv

#endif
