#include "support/process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "support/records.h"
#include "support/wait_until.h"

extern char** environ;

namespace vptz_test {
namespace {

[[noreturn]] void ThrowErrno(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

int Check(int result, const char* what) {
  if (result < 0) ThrowErrno(errno, what);
  return result;
}

// The process writes into memory, so that it never waits for a reader. Threads
// and children that write at once append; they don't overwrite each other.
int MemoryFile(const char* name) {
  const int descriptor = Check(memfd_create(name, MFD_CLOEXEC), "memfd_create");
  Check(fcntl(descriptor, F_SETFL, O_APPEND), "fcntl");
  return descriptor;
}

std::string ReadAll(int descriptor) {
  std::string text;
  char buffer[4096];
  ssize_t length = 0;
  while ((length = pread(descriptor, buffer, sizeof buffer, static_cast<off_t>(text.size()))) > 0) {
    text.append(buffer, static_cast<std::size_t>(length));
  }
  return text;
}

std::string FindProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) return name;
  const char* path = std::getenv("PATH");
  std::string folders = path != nullptr ? path : "/usr/bin:/bin";
  for (std::size_t begin = 0; begin <= folders.size();) {
    const std::size_t end = std::min(folders.find(':', begin), folders.size());
    std::string candidate = folders.substr(begin, end - begin) + "/" + name;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
    begin = end + 1;
  }
  ThrowErrno(ENOENT, name);
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> Environment(const std::vector<std::string>& extra) {
  std::vector<std::string> entries = extra;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::size_t name_length = std::strcspn(*entry, "=") + 1;
    bool replaced = false;
    for (const std::string& other : extra) replaced |= other.compare(0, name_length, *entry, name_length) == 0;
    if (!replaced) entries.emplace_back(*entry);
  }
  return entries;
}

struct Launch {
  const char* program;
  char* const* argv;
  char* const* env;
  pid_t parent;
  int input;
  int output;
  int errors;
  int report;  // receives errno when the program cannot be executed
};

// The child's side. Only async-signal-safe calls: another thread of the parent
// may have held any lock at the fork.
[[noreturn]] void Become(const Launch& launch) {
  sigset_t none;
  sigemptyset(&none);
  for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != launch.parent) _exit(127);
  if (dup2(launch.input, 0) == 0 && dup2(launch.output, 1) == 1 && dup2(launch.errors, 2) == 2 &&
      close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) == 0) {
    execve(launch.program, launch.argv, launch.env);
  }
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(launch.report, &error, sizeof error);
  _exit(127);
}

}  // namespace

void Descriptor::Reset(int descriptor) {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = descriptor;
}

Process::Process(std::vector<std::string> argv, const std::vector<std::string>& extra_env)
    : output_(MemoryFile("output")), errors_(MemoryFile("errors")) {
  int input[2];
  int report[2];
  Check(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input), "socketpair");
  input_.Reset(input[0]);
  const timeval patience{20, 0};
  setsockopt(input[0], SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  const Descriptor child_input(input[1]);
  Check(pipe2(report, O_CLOEXEC), "pipe2");
  const Descriptor report_reader(report[0]);
  Descriptor report_writer(report[1]);

  const std::string program = FindProgram(argv.at(0));
  for (const std::string& word : argv) command_line_ += word + '\n';
  std::vector<std::string> environment = Environment(extra_env);
  const std::vector<char*> argv_pointers = Pointers(argv);
  const std::vector<char*> env_pointers = Pointers(environment);
  const Launch launch{program.c_str(),   argv_pointers.data(), env_pointers.data(), getpid(),
                      child_input.get(), output_.get(),        errors_.get(),       report_writer.get()};
  pid_ = Check(fork(), "fork");
  if (pid_ == 0) Become(launch);
  running_ = true;

  // The writer closes by itself when the program begins to execute.
  report_writer.Reset();
  int error = 0;
  if (read(report_reader.get(), &error, sizeof error) == sizeof error) {
    Wait();
    ThrowErrno(error, program);
  }
}

Process::~Process() {
  if (Running()) {
    Signal(SIGKILL);
    int status = 0;
    waitpid(pid_, &status, 0);
  }
  Record(command_line_ + Output() + Errors());
}

bool Process::Running() {
  int status = 0;
  if (running_ && waitpid(pid_, &status, WNOHANG) == pid_) {
    running_ = false;
    exit_code_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  }
  return running_;
}

void Process::Signal(int number) {
  if (!Running()) return;
  kill(pid_, number);
  if (number != SIGSTOP) return;
  siginfo_t state{};
  waitid(P_PID, static_cast<id_t>(pid_), &state, WSTOPPED | WEXITED | WNOWAIT);
}

int Process::Wait(std::chrono::milliseconds limit) {
  if (!WaitUntil([this] { return !Running(); }, limit)) {
    Signal(SIGKILL);
    WaitUntil([this] { return !Running(); });
    throw std::runtime_error("a process had to be killed; it wrote: " + Output() + Errors());
  }
  return exit_code_;
}

std::string Process::Output() const { return ReadAll(output_.get()); }

std::string Process::Errors() const { return ReadAll(errors_.get()); }

void Process::Write(const std::string& text) {
  for (std::size_t sent = 0; sent < text.size();) {
    const ssize_t step = send(input_.get(), text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    if (step < 0) ThrowErrno(errno, "writing to a process");
    sent += static_cast<std::size_t>(step);
  }
}

void Process::CloseInput() { input_.Reset(); }

RunResult Run(std::vector<std::string> argv, const std::vector<std::string>& extra_env,
              const std::string& input, std::chrono::milliseconds limit) {
  Process process(std::move(argv), extra_env);
  if (!input.empty()) process.Write(input);
  process.CloseInput();
  const int exit_code = process.Wait(limit);
  return {exit_code, process.Output(), process.Errors()};
}

}  // namespace vptz_test
