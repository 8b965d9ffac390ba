// What a verb's function works with: the connected client, what the command
// line holds, and the result that it fills.
#ifndef VPTZCTL_SESSION_H
#define VPTZCTL_SESSION_H

#include <string>

#include <vptz/vptz_client.h>

#include "failures.h"
#include "output.h"
#include "value.h"

namespace vptzctl {

struct Command;

class Session {
 public:
  // `result` begins with the command's name and its arguments. `timeout` is in
  // seconds; 0 is the configured one.
  Session(VptzClient& client, const Command& command, const Values& values, int timeout, Output& output);

  // The value of an argument: of a number that is not given kVptzNotCommanded.
  double Number(const std::string& name) const;
  std::uint32_t Integer(const std::string& name) const { return std::get<std::uint32_t>(values_.at(name)); }
  bool Flag(const std::string& name) const { return std::get<bool>(values_.at(name)); }
  const std::string& Text(const std::string& name) const { return std::get<std::string>(values_.at(name)); }
  bool Given(const std::string& name) const { return values_.at(name).index() != 0; }

  // Ends a command whose result is done or not: shows it, or why it failed.
  ExitCode Finish(int status);

  // Ends a command whose positive result is the answer.
  ExitCode Answer(int status);

  ExitCode Fail(int status);

  VptzClient& client;
  const int timeout;
  Output& output;
  Result result;

 private:
  const Values& values_;
};

// The result with a command's name and its arguments.
Result Describe(const Command& command, const Values& values);

}  // namespace vptzctl

#endif
