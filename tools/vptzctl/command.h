// The command table: one row per verb.
#ifndef VPTZCTL_COMMAND_H
#define VPTZCTL_COMMAND_H

#include <string>
#include <vector>

#include "arguments.h"
#include "failures.h"

namespace vptzctl {

class Session;

struct Command {
  std::string group;                      // "move" of "move to"; empty when the verb stands alone
  std::string verb;                       // "to"
  std::string help;                       // what it does, in one sentence
  std::vector<std::string> operations;    // the operations of VptzClient behind it
  std::vector<Argument> arguments;        // in the order of help and results
  std::vector<std::string> needs_one_of;  // options of which at least one is given
  ExitCode (*run)(Session&);

  // "move to"
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
std::vector<Command> MotionCommands();
std::vector<Command> ProfileCommands();
std::vector<Command> PowerCommands();

}  // namespace vptzctl

#endif
