#include "password.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iostream>
#include <istream>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "failures.h"
#include "line_terminal.h"
#include "session.h"

namespace vptzctl {
namespace {

constexpr char kFileOption[] = "--password-file";
constexpr char kInputOption[] = "--password-stdin";

[[noreturn]] void Fail(const std::string& reason) {
  throw CommandError({"no_password", reason + "; nothing was sent", ExitCode::kUsage});
}

// The first line. Empty, and the stream bad, when it cannot be read.
std::string FromStream(std::istream& stream) {
  std::string line;
  std::getline(stream, line);
  return line.substr(0, line.find('\r'));
}

std::string FromFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) Fail("the password file " + path + " cannot be read: " + std::strerror(errno));
  std::string password = FromStream(file);
  if (file.bad()) Fail("the password file " + path + " cannot be read");
  return password;
}

std::string FromInput() {
  std::string password = FromStream(std::cin);
  if (std::cin.bad()) Fail("standard input cannot be read");
  return password;
}

volatile std::sig_atomic_t caught = 0;

void OnSignal(int number) { caught = number; }

// Holds signals off but for the moments of waiting, so that the terminal gets its
// echo back and none comes between looking for one and waiting; what the signal
// would have done is done at the end.
class DeferredSignals {
 public:
  DeferredSignals() {
    sigset_t deferred;
    sigemptyset(&deferred);
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    for (std::size_t i = 0; i < std::size(kNumbers); ++i) {
      sigaddset(&deferred, kNumbers[i]);
      sigaction(kNumbers[i], &action, &before_[i]);
    }
    pthread_sigmask(SIG_BLOCK, &deferred, &mask_);
  }
  ~DeferredSignals() {
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    for (std::size_t i = 0; i < std::size(kNumbers); ++i) sigaction(kNumbers[i], &before_[i], nullptr);
    if (caught != 0) raise(caught);
  }
  DeferredSignals(const DeferredSignals&) = delete;
  DeferredSignals& operator=(const DeferredSignals&) = delete;

  // Whether there is something to read; false when a signal came first.
  bool Wait(int descriptor) const {
    pollfd polled{descriptor, POLLIN, 0};
    while (caught == 0) {
      if (ppoll(&polled, 1, nullptr, &mask_) == 1) return true;
      if (errno != EINTR) return false;
    }
    return false;
  }

 private:
  static constexpr int kNumbers[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
  struct sigaction before_[std::size(kNumbers)] = {};
  sigset_t mask_ = {};
};

// The terminal of the program, whatever its standard streams are.
class Terminal {
 public:
  Terminal() : descriptor_(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (descriptor_ < 0 || tcgetattr(descriptor_, &before_) != 0) {
      Close();
      Fail(std::string("there is no terminal to ask for the password; give ") + kFileOption + " or " +
           kInputOption);
    }
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(descriptor_, TCSAFLUSH, &silent);
  }
  ~Terminal() {
    tcsetattr(descriptor_, TCSAFLUSH, &before_);
    Close();
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void Write(const std::string& text) const {
    [[maybe_unused]] const ssize_t written = write(descriptor_, text.data(), text.size());
  }

  // A line without its end. False when it was interrupted or input has ended.
  bool ReadLine(const DeferredSignals& signals, std::string* line) const {
    char byte = 0;
    while (signals.Wait(descriptor_) && read(descriptor_, &byte, 1) == 1) {
      if (byte == '\n') return true;
      *line += byte;
    }
    return false;
  }

 private:
  void Close() const {
    if (descriptor_ >= 0) close(descriptor_);
  }

  int descriptor_;
  termios before_ = {};
};

std::string FromTerminal() {
  const DeferredSignals signals;
  const Terminal terminal;
  terminal.Write("Password: ");
  std::string password;
  const bool complete = terminal.ReadLine(signals, &password);
  terminal.Write("\n");
  if (!complete) Fail("no password was given");
  return password;
}

}  // namespace

std::vector<Argument> PasswordArguments(const std::string& needs) {
  Argument file = File(kFileOption, "FILE", "read the password from a file's first line").Unreported();
  Argument input =
      Flag(kInputOption, "read the password from standard input").Excludes({kFileOption}).Unreported();
  if (needs.empty()) return {file, input};
  return {file.Needs(needs), input.Needs(needs)};
}

bool TakeAPassword(const std::vector<Argument>& arguments) {
  return std::any_of(arguments.begin(), arguments.end(),
                     [](const Argument& argument) { return argument.name == kFileOption; });
}

std::string ReadPassword(Session& session) {
  session.StopClock();
  const OrdinaryTerminal ordinary;
  std::string password = session.Given(kFileOption)   ? FromFile(session.Text(kFileOption))
                         : session.Flag(kInputOption) ? FromInput()
                                                      : FromTerminal();
  session.StartClock();
  return password;
}

}  // namespace vptzctl
