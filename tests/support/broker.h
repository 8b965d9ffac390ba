#ifndef VPTZ_TESTS_SUPPORT_BROKER_H
#define VPTZ_TESTS_SUPPORT_BROKER_H

#include <optional>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/temp_dir.h"

namespace vptz_test {

// A private MQTT broker on a Unix socket in a folder of its own.
class Broker {
 public:
  // Starts it with further lines of configuration. Throws with the broker's
  // log when it does not run.
  explicit Broker(const std::vector<std::string>& extra_configuration = {});
  ~Broker();
  Broker(const Broker&) = delete;
  Broker& operator=(const Broker&) = delete;

  pid_t pid() const { return process_->pid(); }

  // What a bus client connects to.
  std::string address() const { return "unix:" + socket_path(); }
  std::string socket_path() const { return folder_.path() + "/bus.sock"; }

  // The broker's own folder, which goes with it.
  const std::string& folder() const { return folder_.path(); }

  // Ends it without a farewell; the socket stays behind with nobody listening.
  void Kill();

  // Holds it still: connections stay and nothing answers.
  void Stop();
  void Continue();

  // Starts it again on the same path. Returns when it accepts connections.
  void Start();

  std::string Log() const;

 private:
  bool Accepts() const;

  TempDir folder_;
  std::optional<Process> process_;
};

}  // namespace vptz_test

#endif
