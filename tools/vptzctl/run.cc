#include "run.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string>

#include <vptz/vptz_client.h>

#include "command.h"
#include "output.h"
#include "parser.h"
#include "session.h"

namespace vptzctl {
namespace {

// The bus library's rule for a client that names no address.
std::string DefaultAddress() {
  const char* address = std::getenv("DORV_BUS_ADDRESS");
  return address && *address ? address : "unix:/run/dorv/bus.sock";
}

ExitCode FailToConnect(const Invocation& invocation, Output* output) {
  const std::string address = invocation.bus.empty() ? DefaultAddress() : invocation.bus;
  const Failure failure = {"not_connected",
                           "cannot connect to the message bus at " + address + "; nothing was sent",
                           ExitCode::kNoConnection};
  output->Fail(Describe(*invocation.command, invocation.values), failure, std::nullopt);
  return failure.exit_code;
}

ExitCode RunCommand(const Invocation& invocation, Output* output) {
  VptzClient client;
  if (client.Connect("vptzctl", invocation.bus.empty() ? nullptr : invocation.bus.c_str()) != 0) {
    return FailToConnect(invocation, output);
  }
  Session session(client, *invocation.command, invocation.values, invocation.timeout, *output);
  return invocation.command->run(session);
}

ExitCode FailWithUsage(const UsageError& error, bool json) {
  Output output(json);
  output.Fail({}, {"usage", error.what(), ExitCode::kUsage}, std::nullopt);
  return ExitCode::kUsage;
}

ExitCode RunInvocation(const Invocation& invocation) {
  Output output(invocation.json);
  ExitCode exit_code = ExitCode::kDone;
  if (invocation.command) {
    exit_code = RunCommand(invocation, &output);
  } else {
    output.Print(invocation.text);
  }
  if (!output.Complete()) {
    std::fputs("vptzctl: cannot write to standard output\n", stderr);
    return exit_code == ExitCode::kDone ? ExitCode::kOther : exit_code;
  }
  return exit_code;
}

}  // namespace

int Run(int argc, const char* const* argv) noexcept {
  try {
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
