// Values that the database knows for arguments: cameras, presets, protocols.
#ifndef VPTZCTL_KNOWN_VALUES_H
#define VPTZCTL_KNOWN_VALUES_H

#include <map>
#include <string>
#include <vector>

#include "completion.h"

namespace vptzctl {

struct Command;

// What a command line holds so far.
struct LineSoFar {
  const Command* command = nullptr;          // null: it is not complete
  std::map<std::string, std::string> given;  // texts by the arguments' names
  const Argument* wanted = nullptr;          // whose value is being typed
  std::string typed;                         // what there is of it
};

// The argument of "help", whose values are the words of commands.
constexpr char kCommandWords[] = "COMMAND";

// The values of the wanted argument; none when they are not known.
std::vector<Candidate> KnownValues(const LineSoFar& line, const Library& library);

}  // namespace vptzctl

#endif
