// The table of all methods that the service answers.
#ifndef VPTZ_SERVICE_METHODS_H
#define VPTZ_SERVICE_METHODS_H

#include <array>
#include <string_view>

#include "handlers.h"

namespace vptzd {

struct Method {
  std::string_view name;
  Handler* handler;
};

using MethodTable = std::array<Method, 45>;

const MethodTable& Methods();

}  // namespace vptzd

#endif
