// The broker as the packages run it: the shipped configuration word for word
// but for its folders, with the users, modes and masks of the shipped units.
#ifndef VPTZ_TESTS_INTEGRATION_SHIPPED_BROKER_H
#define VPTZ_TESTS_INTEGRATION_SHIPPED_BROKER_H

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/temp_dir.h"

namespace vptz_test {

// What a unit of packaging/systemd says about a setting that it has once.
std::string UnitSetting(const std::string& unit, const std::string& name);

// The permissions in such a setting.
mode_t UnitMode(const std::string& unit, const std::string& name);

// As somebody with nothing on this machine; for a process of its own. Needs
// root.
void BecomeStranger();

class ShippedBroker {
 public:
  // With a file of the folder packaging and the passwords of its users. Throws
  // with the broker's log when it does not run.
  explicit ShippedBroker(const std::string& configuration,
                         const std::map<std::string, std::string>& passwords = {});

  // Where the installed system has /run/dorv, /etc/dorv and /var/lib/dorv.
  std::string run_folder() const { return root_.path() + "/run/dorv"; }
  std::string settings_folder() const { return root_.path() + "/etc/dorv"; }
  std::string state_folder() const { return root_.path() + "/var/lib/dorv"; }

  std::string socket_path() const { return run_folder() + "/bus.sock"; }
  std::string address() const { return "unix:" + socket_path(); }
  std::string database() const { return state_folder() + "/vptz.db"; }
  pid_t pid() const { return process_->pid(); }
  std::string Log() const { return process_->Errors(); }

  // Starts it anew, as after a crash.
  void Restart();

  // The service vptzd with the mask and the group of its unit. Returns when it
  // serves; throws when it does not.
  void StartService(const std::vector<std::string>& environment = {});

 private:
  void MakeFolders() const;
  void WriteConfiguration(const std::string& name) const;
  void WritePasswordFile(const std::map<std::string, std::string>& passwords) const;
  void Start();

  TempDir root_;
  std::optional<Process> process_;
  std::optional<Process> service_;
};

}  // namespace vptz_test

#endif
