#include "command.h"

#include <iterator>

namespace vptzctl {
namespace {

std::vector<Command> AllSubjects() {
  std::vector<Command> all;
  for (const auto& subject : {ConnectionCommands, MotionCommands, ProfileCommands, PowerCommands}) {
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
      {"move", "Move to a position, or at a velocity"},
      {"serial", "USB-serial ports and the service's device configuration"},
      {"power", "Power of the controlled devices"},
  };
  return groups;
}

}  // namespace vptzctl
