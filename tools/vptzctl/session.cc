#include "session.h"

#include <cerrno>

#include "command.h"

namespace vptzctl {

Session::Session(VptzClient& vptz_client, const Command& command, const Values& values, int timeout_seconds,
                 Output& destination)
    : client(vptz_client),
      timeout(timeout_seconds),
      output(destination),
      result(Describe(command, values)),
      values_(values) {}

double Session::Number(const std::string& name) const {
  const double* number = std::get_if<double>(&values_.at(name));
  return number ? *number : kVptzNotCommanded;
}

ExitCode Session::Finish(int status) {
  if (status != 0) {
    return Fail(status);
  }
  output.Show(result, status);
  return ExitCode::kDone;
}

ExitCode Session::Answer(int status) {
  if (status < 0) {
    return Fail(status);
  }
  output.Show(result, status);
  return ExitCode::kDone;
}

ExitCode Session::Fail(int status) {
  Failure failure = Explain(status);
  if (failure.exit_code == ExitCode::kTimeout) {
    failure.message += " of " + std::to_string(client.GetVptzTimeout(timeout)) + " s";
  }
  result.answers.clear();
  result.table.clear();
  output.Fail(result, failure, status);
  return failure.exit_code;
}

Result Describe(const Command& command, const Values& values) {
  Result result;
  result.command = command.Name();
  for (const Argument& argument : command.arguments) {
    if (argument.reported) {
      result.arguments.push_back({FieldName(argument), values.at(argument.name), argument.unit});
    }
  }
  return result;
}

}  // namespace vptzctl
