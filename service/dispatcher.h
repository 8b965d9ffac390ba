// From a request's method and bytes to its answer.
#ifndef VPTZ_SERVICE_DISPATCHER_H
#define VPTZ_SERVICE_DISPATCHER_H

#include <string_view>

#include <vptz/vptz.pb.h>

#include "world.h"

namespace vptzd {

// Enters the world and has the method's handler answer. kUnknownMethod when
// there is no such method; kBadRequest when the bytes cannot be read or the
// command in them names another method. `payload` may be null when `length`
// is 0. May be called from any thread.
tutorial::VptzResponse Dispatch(World& world, std::string_view method, const void* payload, int length);

}  // namespace vptzd

#endif
