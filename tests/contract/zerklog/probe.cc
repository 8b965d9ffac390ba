// Logs what the command line tells. Ends with 0, with 1 when the log did not
// leave the process as it was, with 2 when it doesn't know the command.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zerklog.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kModule = 42;

// A log need not have names for its levels.
constexpr int kError = 0;
constexpr int kWarning = 1;
constexpr int kDetail = 3;

struct Arguments {
  std::vector<std::string> texts;
  const char* null;  // not known to the compiler as such

  int Number(std::size_t index) const { return std::stoi(texts.at(index)); }
};

void Log(int level, const std::string& text) {
  ZERK_LOG_write_newline(kModule, level, "probe.cc", 12, "Log", "%s", text.c_str());
}

int Text(const Arguments& arguments) {
  for (const std::string& text : arguments.texts) {
    Log(kWarning, text);
  }
  return 0;
}

int Levels(const Arguments& arguments) {
  for (std::size_t index = 0; index < arguments.texts.size(); ++index) {
    const int level = arguments.Number(index);
    Log(level, "level " + std::to_string(level));
  }
  return 0;
}

int Nulls(const Arguments& arguments) {
  const char* null = arguments.null;
  ZERK_LOG_write_newline(kModule, kError, null, 1, "Function", "no file");
  ZERK_LOG_write_newline(kModule, kError, "file.cc", 2, null, "no function");
  ZERK_LOG_write_newline(kModule, kError, "file.cc", 3, "Function", null, 0);
  ZERK_LOG_write_newline(-1, kError, null, -1, null, null, 0);
  return 0;
}

int Long(const Arguments& arguments) {
  Log(kError, std::string(static_cast<std::size_t>(arguments.Number(0)), 'x'));
  return 0;
}

// Threads, lines per thread, length of a line: each thread has its own letter.
int Threads(const Arguments& arguments) {
  std::vector<std::thread> threads;
  threads.reserve(static_cast<std::size_t>(arguments.Number(0)));
  for (int number = 0; number < arguments.Number(0); ++number) {
    threads.emplace_back([&arguments, number] {
      const std::string text(static_cast<std::size_t>(arguments.Number(2)), static_cast<char>('a' + number));
      for (int line = 0; line < arguments.Number(1); ++line) {
        Log(kError, text);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return 0;
}

int KeepsErrno(const Arguments&) {
  for (const int level : {kError, kDetail}) {
    errno = EXDEV;
    Log(level, "errno is EXDEV");
    if (errno != EXDEV) {
      return 1;
    }
  }
  return 0;
}

// Takes the format as an argument: compilers object to one that reads errno.
int ReadsErrno(const Arguments& arguments) {
  errno = EXDEV;
  ZERK_LOG_write_newline(kModule, kError, "probe.cc", 1, "ReadsErrno", arguments.texts.at(0).c_str(), 7);
  return 0;
}

// The C locale has no character for this one, so printf fails.
int CannotBeFormatted(const Arguments&) {
  ZERK_LOG_write_newline(kModule, kError, "probe.cc", 1, "CannotBeFormatted", "wide %ls", L"\u20ac");
  return 0;
}

sigset_t CurrentMask() {
  sigset_t mask;
  sigemptyset(&mask);
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  return mask;
}

// Whether two masks treat every signal alike.
bool Same(const sigset_t& left, const sigset_t& right) {
  for (int signal = 1; signal < NSIG; ++signal) {
    if (sigismember(&left, signal) != sigismember(&right, signal)) {
      return false;
    }
  }
  return true;
}

bool DefaultAction(int signal) {
  struct sigaction action = {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler == SIG_DFL;
}

// Logs to standard error whose reader has gone.
int ReaderGone(const Arguments&) {
  int ends[2];
  if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0) {
    return 1;
  }
  close(ends[0]);
  std::signal(SIGPIPE, SIG_DFL);
  const sigset_t before = CurrentMask();
  Log(kError, "nobody reads this");
  return Same(before, CurrentMask()) && DefaultAction(SIGPIPE) ? 0 : 1;
}

int NoStandardError(const Arguments&) {
  close(STDERR_FILENO);
  Log(kError, "nobody reads this");
  return 0;
}

// Logs while no file may grow beyond the given size.
int FileLimit(const Arguments& arguments) {
  const rlim_t bytes = static_cast<rlim_t>(arguments.Number(0));
  const rlimit limit = {bytes, bytes};
  if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
    return 1;
  }
  Log(kError, std::string(bytes, 'x'));
  Log(kError, "once more");
  return 0;
}

int ExitCode(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

// Forks again and again while another thread logs; each child logs as well.
int Fork(const Arguments& arguments) {
  std::thread other([] {
    for (int line = 0; line < 2000; ++line) {
      Log(kError, "parent");
    }
  });
  int failures = 0;
  for (int number = 0; number < arguments.Number(0); ++number) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(10);
      Log(kError, "child");
      _exit(0);
    }
    failures += ExitCode(child);
  }
  other.join();
  return failures == 0 ? 0 : 1;
}

int Waiting(int pipe) {
  int bytes = 0;
  ioctl(pipe, FIONREAD, &bytes);
  return bytes;
}

// Forks while another thread is stuck in a line that the pipe at standard error has
// no room for; the child logs to standard output.
int ForkWhileStuck(const Arguments&) {
  int ends[2];
  if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0) {
    return 1;
  }
  close(ends[1]);
  alarm(10);
  const int room = fcntl(STDERR_FILENO, F_GETPIPE_SZ);
  std::thread stuck([room] { Log(kError, std::string(2 * static_cast<std::size_t>(room), 'x')); });
  while (Waiting(ends[0]) < room) {
    usleep(1000);
  }
  const pid_t child = fork();
  if (child == 0) {
    alarm(10);
    dup2(STDOUT_FILENO, STDERR_FILENO);
    Log(kError, "child");
    const pid_t grandchild = fork();
    if (grandchild == 0) {
      Log(kError, "grandchild");
      _exit(0);
    }
    _exit(ExitCode(grandchild));
  }
  const int failures = ExitCode(child);
  std::thread reader([&ends] {
    char bytes[4096];
    while (read(ends[0], bytes, sizeof bytes) > 0) {
    }
  });
  stuck.join();
  Log(kError, "parent");
  close(STDERR_FILENO);
  reader.join();
  return failures;
}

// A thread that is to be cancelled must come back from the log.
int Cancelled(const Arguments&) {
  bool came_back = false;
  std::thread thread([&came_back] {
    pthread_cancel(pthread_self());
    Log(kError, "cancelled");
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    came_back = true;
  });
  thread.join();
  return came_back ? 0 : 1;
}

const std::map<std::string, std::function<int(const Arguments&)>> kCommands = {
    {"text", Text},
    {"levels", Levels},
    {"nulls", Nulls},
    {"long", Long},
    {"threads", Threads},
    {"keeps-errno", KeepsErrno},
    {"reads-errno", ReadsErrno},
    {"cannot-be-formatted", CannotBeFormatted},
    {"reader-gone", ReaderGone},
    {"no-standard-error", NoStandardError},
    {"file-limit", FileLimit},
    {"fork", Fork},
    {"fork-while-stuck", ForkWhileStuck},
    {"cancelled", Cancelled},
};

}  // namespace

int main(int argc, char** argv) {
  const auto command = kCommands.find(argc > 1 ? argv[1] : "");
  if (command == kCommands.end()) {
    std::cerr << "usage: zerklog_probe COMMAND [ARGUMENT ...]\n";
    return 2;
  }
  return command->second({std::vector<std::string>(argv + 2, argv + argc), argv[argc]});
}
