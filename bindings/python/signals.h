// Callbacks of signals and of asynchronous calls.
#ifndef VPTZ_BINDINGS_PYTHON_SIGNALS_H
#define VPTZ_BINDINGS_PYTHON_SIGNALS_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "binding.h"

namespace vptz_python {

constexpr char kSearchFinished[] = "finish/search_device";
constexpr char kDevicesUpdated[] = "update_devices";

// Keeps the next payload of a signal, beside a callback that the application may
// have for it. Everything needs the GIL.
class Listener {
 public:
  // Subscribes if need be. Throws what Client::Run throws.
  Listener(Client& client, const std::string& signal);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  const std::optional<std::string>& payload() const { return *payload_; }

  // Ends the subscription unless it has other users.
  void End();

 private:
  void Leave();

  Client& client_;
  std::size_t place_ = 0;
  std::shared_ptr<std::optional<std::string>> payload_ = std::make_shared<std::optional<std::string>>();
};

// The number of cameras that a search has found, or a refusal, from the payload of
// "finish/search_device"; nothing when the service does not tell.
std::optional<int> SearchResult(const std::string& payload);

}  // namespace vptz_python

#endif
