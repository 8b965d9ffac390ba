#include "command.h"

#include <iterator>

namespace vptzctl {
namespace {

std::vector<Command> AllSubjects() {
  std::vector<Command> all;
  for (const auto& subject : {ConnectionCommands, SignalCommands, RegistryCommands, DiscoveryCommands,
                              MaintenanceCommands, MotionCommands, DriveCommands, ProfileCommands,
                              PresetCommands, PresetFileCommands, ImagingCommands, FocusCommands, NatCommands,
                              PowerCommands, DatabaseCommands, FaultCommands, HelpCommands, ShellCommands}) {
    std::vector<Command> rows = subject();
    all.insert(all.end(), std::make_move_iterator(rows.begin()), std::make_move_iterator(rows.end()));
  }
  return all;
}

}  // namespace

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = AllSubjects();
  return commands;
}

const std::vector<Group>& Groups() {
  static const std::vector<Group> groups = {
      {"device", "Cameras: list, add, remove, log in"},
      {"ptz", "Pan, tilt and zoom"},
      {"preset", "Stored positions"},
      {"image", "Image settings"},
      {"focus", "Focus"},
      {"nat", "Addresses as they are reachable from outside"},
      {"serial", "USB-serial ports and the service's device configuration"},
      {"power", "Power of the controlled devices"},
      {"profile", "What PTZ and media profiles can do"},
      {"db", "Database files"},
      {"fault", "Faults of the reference service's simulated cameras"},
  };
  return groups;
}

}  // namespace vptzctl
