// Several commands in one process: typed at a prompt, or read from standard input.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <streambuf>
#include <utility>

#include <unistd.h>

#include "command.h"
#include "history.h"
#include "interrupt.h"
#include "line_editor.h"
#include "parser.h"
#include "prompt_interrupt.h"
#include "run.h"
#include "session.h"
#include "signals.h"
#include "words.h"

namespace vptzctl {
namespace {

constexpr char kShell[] = "shell";

// Runs lines, one after the other, over one connection.
class Runner {
 public:
  // What the shell's own command line says holds for each line that does not say
  // otherwise.
  explicit Runner(const Invocation& defaults) : defaults_(defaults) {}

  KeptClients& clients() { return clients_; }
  const char* address() const { return defaults_.bus.empty() ? nullptr : defaults_.bus.c_str(); }

  // Reads a line. Empty, with the failure shown, when it is wrong.
  std::optional<Invocation> Read(const std::vector<std::string>& words) {
    try {
      return Understood(words);
    } catch (const UsageError& error) {
      const bool json = std::find(words.begin(), words.end(), "--json") != words.end();
      FailWithUsage(error, defaults_.json || json);
      return std::nullopt;
    }
  }

  ExitCode Run(const Invocation& invocation) {
    ExitCode exit_code = ExitCode::kOther;
    try {
      exit_code = RunInvocation(invocation, &clients_);
    } catch (const std::exception& error) {
      FailUnexpectedly(error, invocation.json);
    }
    Forget(invocation);
    return exit_code;
  }

 private:
  Invocation Understood(const std::vector<std::string>& words) const {
    std::vector<const char*> argv = {"vptzctl"};
    for (const std::string& word : words) argv.push_back(word.c_str());
    Invocation invocation = Parse(static_cast<int>(argv.size()), argv.data());
    if (invocation.command != nullptr && invocation.command->Name() == kShell) {
      throw UsageError("this is the shell");
    }
    if (!invocation.bus.empty() || invocation.verbose) {
      throw UsageError("connection and log are the shell's: give --bus and --verbose to 'vptzctl shell'");
    }
    invocation.bus = defaults_.bus;
    invocation.json |= defaults_.json;
    if (invocation.timeout == 0) invocation.timeout = defaults_.timeout;
    return invocation;
  }

  // What must not outlive its command: a database of its own, signals, and the one
  // subscription that ends with its client only.
  void Forget(const Invocation& invocation) {
    ForgetSignals();
    if (invocation.command == nullptr) return;
    if (invocation.command->needs == Needs::kNothing) clients_.lookup.reset();
    const auto& operations = invocation.command->operations;
    if (std::find(operations.begin(), operations.end(), "SubscribeAllSignal") == operations.end()) return;
    clients_.bus.reset();
    clients_.connected = false;
  }

  const Invocation& defaults_;
  KeptClients clients_;
};

bool Leaves(const std::vector<std::string>& words) {
  return words.size() == 1 && (words[0] == "exit" || words[0] == "quit");
}

// ---- from standard input -------------------------------------------------------

// Counts the lines that standard input gives, to the commands too: one may read a
// password there.
class LineCounter : public std::streambuf {
 public:
  LineCounter() : source_(std::cin.rdbuf(this)) {}
  ~LineCounter() override { std::cin.rdbuf(source_); }

  int lines() const { return lines_; }

 private:
  int_type underflow() override { return source_->sgetc(); }
  int_type uflow() override {
    const int_type c = source_->sbumpc();
    if (c == '\n') ++lines_;
    return c;
  }

  std::streambuf* const source_;
  int lines_ = 0;
};

// Joins lines as long as a quote is open or a backslash ends them.
class Script {
 public:
  // The next command's words; false at the end. Throws UsageError when the end
  // comes too soon.
  bool Next(std::vector<std::string>* words) {
    std::string text;
    SplitLine split;
    line_ = counter_.lines() + 1;
    for (std::string line; std::getline(std::cin, line); text += '\n') {
      if (line.find('\0') != std::string::npos) throw UsageError("the line holds a zero byte");
      split = SplitWords(text += line);
      if (!split.complete) continue;
      *words = std::move(split.words);
      return true;
    }
    if (std::ferror(stdin) != 0) throw std::runtime_error("cannot read standard input");
    if (!text.empty()) throw UsageError("the input ends within a quote, or behind a backslash");
    return false;
  }

  // Where the last command began, counted from 1.
  int line() const { return line_; }

 private:
  LineCounter counter_;
  int line_ = 0;
};

void TellLine(int line, bool goes_on) {
  std::fprintf(stderr, "vptzctl: line %d failed%s\n", line,
               goes_on ? "" : "; the lines behind it were not run");
}

// A user who interrupts one of many commands means them all.
void EndIfInterrupted() {
  if (Interrupt::Caught() != 0) raise(Interrupt::Caught());
}

ExitCode RunScript(Runner* runner, bool keep_going, bool json) {
  ExitCode result = ExitCode::kDone;
  Script script;
  const auto fail = [&](ExitCode exit_code) {
    TellLine(script.line(), keep_going);
    if (result == ExitCode::kDone) result = exit_code;
  };
  try {
    std::vector<std::string> words;
    while ((result == ExitCode::kDone || keep_going) && script.Next(&words)) {
      if (words.empty()) continue;
      if (Leaves(words)) break;
      const std::optional<Invocation> invocation = runner->Read(words);
      const ExitCode exit_code = invocation ? runner->Run(*invocation) : ExitCode::kUsage;
      EndIfInterrupted();
      if (exit_code != ExitCode::kDone) fail(exit_code);
    }
  } catch (const UsageError& error) {
    FailWithUsage(error, json);
    fail(ExitCode::kUsage);
  } catch (const std::exception& error) {
    FailUnexpectedly(error, json);
    if (result == ExitCode::kDone) result = ExitCode::kOther;
  }
  return result;
}

// ---- at a prompt ---------------------------------------------------------------

class Prompt {
 public:
  explicit Prompt(Runner* runner)
      : runner_(*runner), editor_(interrupt_, [this]() -> VptzClient& { return Lookup(); }) {}

  // Until Ctrl-D, "exit" or SIGTERM.
  void Loop() {
    std::fputs("vptzctl " VPTZCTL_VERSION ": a command a line; 'help' lists them, Ctrl-D leaves.\n", stderr);
    while (std::optional<std::string> line = ReadCommand()) {
      const std::vector<std::string> words = SplitWords(*line).words;
      if (words.empty()) continue;
      if (Leaves(words)) return;
      history_.Recall(*line);
      if (const std::optional<Invocation> invocation = runner_.Read(words)) {
        // A line that was not understood may hold anything, a password too.
        history_.Keep(*line);
        Run(*invocation);
      }
      if (Interrupt::Caught() != 0 && Interrupt::Caught() != SIGINT) return;
    }
    std::fputs("\n", stderr);
  }

 private:
  // A line, or several while a quote is open; nothing at the end.
  std::optional<std::string> ReadCommand() {
    std::optional<std::string> text = editor_.Read("vptzctl> ");
    while (text && !SplitWords(*text).complete) {
      const std::optional<std::string> more = editor_.Read("> ");
      if (!more || editor_.interrupted()) return "";
      *text += "\n" + *more;
    }
    return text;
  }

  // A call that waits comes back when the bus is left. It is joined again at once:
  // the command may have a camera to stop yet.
  void Run(const Invocation& invocation) {
    KeptClients& clients = runner_.clients();
    bool rejoined = true;
    interrupt_.Take();  // one that came before this command is not about it
    CallBreaker breaker(interrupt_, [&] {
      if (!clients.connected) return;  // nothing waits for an answer yet
      clients.bus->Disconnect();
      rejoined = clients.bus->Connect("vptzctl", runner_.address()) == 0;
    });
    runner_.Run(invocation);
    if (!breaker.End()) return;
    if (!rejoined) clients.connected = false;
    std::fputs("vptzctl: interrupted\n", stderr);
  }

  VptzClient& Lookup() {
    std::optional<VptzClient>& lookup = runner_.clients().lookup;
    return lookup ? *lookup : lookup.emplace();
  }

  Runner& runner_;
  PromptInterrupt interrupt_;
  LineEditor editor_;
  History history_;
};

ExitCode Shell(Session& session) {
  Runner runner(session.invocation());
  if (isatty(STDIN_FILENO) == 0) {
    return RunScript(&runner, session.Flag("--keep-going"), session.invocation().json);
  }
  Prompt(&runner).Loop();
  return ExitCode::kDone;
}

}  // namespace

std::vector<Command> ShellCommands() {
  return {{"",
           kShell,
           "Runs commands over one connection: the ones that you type, or each line of standard input.",
           {},
           {Flag("--keep-going", "continue after a line of standard input that fails").Unreported()},
           {},
           Shell,
           Needs::kNothing}};
}

}  // namespace vptzctl
