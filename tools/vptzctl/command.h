// The command table: one row per verb.
#ifndef VPTZCTL_COMMAND_H
#define VPTZCTL_COMMAND_H

#include <string>
#include <vector>

#include "arguments.h"
#include "failures.h"

namespace vptzctl {

class Session;

// What a verb works with. A verb with a camera needs the database as well.
enum class Needs {
  kBus,
  kDatabase,  // the library's own
  kNothing,   // a file that it opens itself
};

struct Command {
  std::string group;                      // "ptz" of "ptz move"; empty when the verb stands alone
  std::string verb;                       // "move"
  std::string help;                       // what it does, in one sentence
  std::vector<std::string> operations;    // the library's operations behind it
  std::vector<Argument> arguments;        // in the order of help and results
  std::vector<std::string> needs_one_of;  // options of which at least one is given
  ExitCode (*run)(Session&);
  Needs needs = Needs::kBus;

  // "ptz move"
  std::string Name() const { return group.empty() ? verb : group + " " + verb; }
};

// A first word that several verbs share.
struct Group {
  std::string name;
  std::string help;
};

const std::vector<Command>& Commands();
const std::vector<Group>& Groups();

// The rows of each subject, each in a source of its own.
std::vector<Command> ConnectionCommands();
std::vector<Command> DiscoveryCommands();
std::vector<Command> SignalCommands();
std::vector<Command> RegistryCommands();
std::vector<Command> MaintenanceCommands();
std::vector<Command> MotionCommands();
std::vector<Command> DriveCommands();
std::vector<Command> PresetCommands();
std::vector<Command> PresetFileCommands();
std::vector<Command> ImagingCommands();
std::vector<Command> FocusCommands();
std::vector<Command> NatCommands();
std::vector<Command> PowerCommands();
std::vector<Command> ProfileCommands();
std::vector<Command> DatabaseCommands();
std::vector<Command> FaultCommands();
std::vector<Command> HelpCommands();
std::vector<Command> ShellCommands();

}  // namespace vptzctl

#endif
