#include <chrono>

#include "command.h"
#include "session.h"

namespace vptzctl {
namespace {

ExitCode ServiceStatus(Session& session) {
  const auto begin = std::chrono::steady_clock::now();
  const int status = session.client().GetStatus(session.timeout);
  const std::chrono::duration<double, std::milli> round_trip = std::chrono::steady_clock::now() - begin;
  session.result.answers = {
      {"service", std::string("vptz"), ""},
      {"state", std::string("running"), ""},
      {"round_trip", RoundedToThousandths(round_trip.count()), "ms"},
      {"library", std::string(session.client().Version()), ""},
  };
  return session.Finish(status);
}

}  // namespace

std::vector<Command> ConnectionCommands() {
  return {
      {"", "status", "Tells whether the service answers.", {"GetStatus", "Version"}, {}, {}, ServiceStatus}};
}

}  // namespace vptzctl
