#include "prompt.h"

#include <cstdio>
#include <iostream>

#include <unistd.h>

#include "line_terminal.h"
#include "printable.h"
#include "session.h"

namespace vptzctl {
namespace {

constexpr char kYes[] = "--yes";

bool SaysYes() {
  std::string answer;
  std::getline(std::cin, answer);
  return EqualIgnoringCase(answer, "y") || EqualIgnoringCase(answer, "yes");
}

}  // namespace

Argument YesArgument() { return Flag(kYes, "do not ask").Unreported(); }

void Confirm(Session& session, const std::string& question) {
  if (session.Flag(kYes) || isatty(STDIN_FILENO) != 1 || isatty(STDERR_FILENO) != 1) return;
  session.StopClock();
  const OrdinaryTerminal ordinary;
  std::fputs((Printable(question) + " [y/N] ").c_str(), stderr);
  const bool yes = SaysYes();
  session.StartClock();
  if (!yes) throw CommandError({"declined", "the answer was no; nothing was sent", ExitCode::kUsage});
}

}  // namespace vptzctl
