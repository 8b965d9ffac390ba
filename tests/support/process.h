#ifndef VPTZ_TESTS_SUPPORT_PROCESS_H
#define VPTZ_TESTS_SUPPORT_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace vptz_test {

// Closes its descriptor.
class Descriptor {
 public:
  explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
  ~Descriptor() { Reset(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return descriptor_; }
  void Reset(int descriptor = -1);

 private:
  int descriptor_;
};

// A child process with its standard streams caught. It inherits no other
// descriptor, starts with default signal dispositions, and is killed with the
// object or when the thread that started it ends. Not for several threads at
// once.
class Process {
 public:
  // argv[0] is a path or is looked for along PATH; extra_env holds "NAME=value"
  // entries that replace inherited ones. Throws when it cannot be executed.
  explicit Process(std::vector<std::string> argv, const std::vector<std::string>& extra_env = {});
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // -1 once it has been waited for.
  pid_t pid() const { return pid_; }

  bool Running();

  // SIGSTOP has taken effect when this returns.
  void Signal(int number);

  // The exit code, or 128 plus the number of the signal that ended it. Kills
  // the process and throws when it outlives the limit.
  int Wait(std::chrono::milliseconds limit = std::chrono::seconds(20));

  // What it has written so far to standard output and standard error.
  std::string Output() const;
  std::string Errors() const;

  // Standard input. Write throws when it is closed or nobody reads for 20 s.
  void Write(const std::string& text);
  void CloseInput();

 private:
  Descriptor input_;
  Descriptor output_;
  Descriptor errors_;
  std::string command_line_;
  pid_t pid_ = -1;
  bool running_ = false;
  int exit_code_ = -1;
};

struct RunResult {
  int exit_code;
  std::string output;
  std::string errors;
};

// Runs a program to its end.
RunResult Run(std::vector<std::string> argv, const std::vector<std::string>& extra_env = {},
              const std::string& input = "", std::chrono::milliseconds limit = std::chrono::seconds(20));

}  // namespace vptz_test

#endif
