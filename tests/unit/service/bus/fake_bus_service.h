// The bus's service half without a bus: keeps the handler, and calls it when a
// test asks for it.
#ifndef VPTZ_TESTS_UNIT_SERVICE_FAKE_BUS_SERVICE_H
#define VPTZ_TESTS_UNIT_SERVICE_FAKE_BUS_SERVICE_H

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <dorv_bus_service.h>

struct bus_service {
  bus_method_handler handler;
  void* user_data;
};

struct bus_request {
  std::string method;
  std::string payload;
  std::uint64_t caller;
};

namespace vptz_test {

// One per test; the bus functions act on the one that lives.
class FakeBusService {
 public:
  FakeBusService();
  ~FakeBusService();

  // Calls the handler with a request of that caller, which it ends or keeps.
  void Request(const std::string& method, const std::string& payload, std::uint64_t caller = 1);

  int start_result = 0;  // what bus_service_new returns
  int reply_result = 0;  // what bus_request_reply returns

  std::optional<std::string> name;                           // as given to bus_service_new
  std::optional<std::string> address;                        // the same; none when null
  bus_service* service = nullptr;                            // while it serves
  int ended = 0;                                             // number of requests replied to or failed
  std::string reply;                                         // the last reply
  int failure = 0;                                           // the last failure
  std::vector<std::pair<std::string, std::string>> signals;  // names and payloads

 private:
  std::deque<bus_request> requests_;
};

}  // namespace vptz_test

#endif
