#include "run.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>

#include "command.h"
#include "completion.h"
#include "environment.h"
#include "output.h"
#include "parser.h"
#include "session.h"

namespace vptzctl {
namespace {

ExitCode RunCommand(const Invocation& invocation, KeptClients* kept, Output* output) {
  Session session(invocation, *output, kept);
  try {
    session.Begin();
    return invocation.command->run(session);
  } catch (const CommandError& error) {
    session.MeetDeadline();
    session.result.answers.clear();
    session.result.table.clear();
    session.result.lists.clear();
    output->Fail(session.result, error.failure(), std::nullopt);
    return error.failure().exit_code;
  }
}

}  // namespace

ExitCode FailWithUsage(const UsageError& error, bool json) {
  Output output(json);
  output.Fail({}, {"usage", error.what(), ExitCode::kUsage}, std::nullopt);
  return ExitCode::kUsage;
}

ExitCode RunInvocation(const Invocation& invocation, KeptClients* kept) {
  Output output(invocation.json);
  ExitCode exit_code = ExitCode::kDone;
  if (invocation.command) {
    // Of several commands it is the first one's: threads read the environment then.
    if (kept == nullptr) PrepareEnvironment(invocation);
    exit_code = RunCommand(invocation, kept, &output);
  } else {
    output.Print(invocation.text);
  }
  if (!output.Complete()) {
    std::fputs("vptzctl: cannot write to standard output\n", stderr);
    return exit_code == ExitCode::kDone ? ExitCode::kOther : exit_code;
  }
  return exit_code;
}

int Run(int argc, const char* const* argv) noexcept {
  try {
    if (argc > 1 && std::string(argv[1]) == "complete") return PrintCompletion({argv + 2, argv + argc});
    return static_cast<int>(RunInvocation(Parse(argc, argv)));
  } catch (const UsageError& error) {
    // A line that cannot be read may still say how it wants to be answered.
    const bool json =
        std::any_of(argv, argv + argc, [](const char* text) { return std::string(text) == "--json"; });
    return static_cast<int>(FailWithUsage(error, json));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vptzctl: %s\n", error.what());
    return static_cast<int>(ExitCode::kOther);
  }
}

}  // namespace vptzctl
