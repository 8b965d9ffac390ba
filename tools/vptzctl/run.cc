#include "run.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

#include "command.h"
#include "completion.h"
#include "environment.h"
#include "output.h"
#include "parser.h"
#include "session.h"

namespace vptzctl {
namespace {

Failure Unexpected(const std::exception& error) { return {"unexpected", error.what(), ExitCode::kOther}; }

ExitCode RunCommand(const Invocation& invocation, KeptClients* kept, Output* output) {
  Session session(invocation, *output, kept);
  const auto fail = [&](const Failure& failure) {
    session.MeetDeadline();
    session.result.answers.clear();
    session.result.table.clear();
    session.result.lists.clear();
    output->Fail(session.result, failure, std::nullopt);
    return failure.exit_code;
  };
  try {
    session.Begin();
    return invocation.command->run(session);
  } catch (const CommandError& error) {
    return fail(error.failure());
  } catch (const std::exception& error) {
    return fail(Unexpected(error));
  }
}

// The next file or socket would become a standard stream that the caller has
// closed, and get what is printed. Opened the wrong way round, so that using the
// stream fails as it does when it is closed.
void OccupyClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

ExitCode FailWithUsage(const UsageError& error, bool json) {
  Output output(json);
  output.Fail({}, {"usage", error.what(), ExitCode::kUsage}, std::nullopt);
  return ExitCode::kUsage;
}

// Whatever failed may fail in telling it, too.
ExitCode FailUnexpectedly(const std::exception& error, bool json) noexcept {
  try {
    Output(json).Fail({}, Unexpected(error), std::nullopt);
  } catch (const std::exception&) {
    std::fprintf(stderr, "vptzctl: %s\n", error.what());
  }
  return ExitCode::kOther;
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
  OccupyClosedStreams();
  // A line that cannot be read may still say how it wants to be answered.
  const bool json =
      std::any_of(argv, argv + argc, [](const char* text) { return std::string_view(text) == "--json"; });
  try {
    if (argc > 1 && std::string(argv[1]) == "complete") return PrintCompletion({argv + 2, argv + argc});
    return static_cast<int>(RunInvocation(Parse(argc, argv)));
  } catch (const UsageError& error) {
    return static_cast<int>(FailWithUsage(error, json));
  } catch (const std::exception& error) {
    return static_cast<int>(FailUnexpectedly(error, json));
  }
}

}  // namespace vptzctl
