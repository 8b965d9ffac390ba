// The table of all methods that the service answers.
#ifndef VPTZ_SERVICE_BUS_METHODS_H
#define VPTZ_SERVICE_BUS_METHODS_H

#include <array>
#include <string_view>

#include <vptz/method_names.h>

#include "handlers/handlers.h"

namespace vptzd {

struct Method {
  constexpr Method(std::string_view method, Handler* at_once) : name(method), handler(at_once) {}
  constexpr Method(std::string_view method, StoringHandler* later) : name(method), storing_handler(later) {}
  constexpr Method(std::string_view method, Handler* at_once, StoringHandler* then)
      : name(method), handler(at_once), storing_handler(then) {}

  std::string_view name;
  // One of the two, or both: the second stores what the first has done and answers,
  // unless the first refuses.
  Handler* handler = nullptr;
  StoringHandler* storing_handler = nullptr;
};

using MethodTable = std::array<Method, vptz::method::kAll.size()>;

const MethodTable& Methods();

// Null when there is no such method.
const Method* FindMethod(std::string_view name);

}  // namespace vptzd

#endif
