#include "script.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace vptzctl {
namespace {

// A name that begins with a dash or a scheme would be none to sqlite3.
std::string AsPath(const std::string& path) { return path.front() == '/' ? path : "./" + path; }

class FileActions {
 public:
  FileActions() { posix_spawn_file_actions_init(&actions_); }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  void Open(int descriptor, const char* path, int flags) {
    posix_spawn_file_actions_addopen(&actions_, descriptor, path, flags, 0);
  }
  void Duplicate(int from, int to) { posix_spawn_file_actions_adddup2(&actions_, from, to); }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

std::string ReadAll(int descriptor) {
  std::string all;
  char bytes[4096];
  ssize_t length = 0;
  while ((length = read(descriptor, bytes, sizeof bytes)) > 0 || (length < 0 && errno == EINTR)) {
    if (length > 0) all.append(bytes, static_cast<std::size_t>(length));
  }
  return all;
}

bool Succeeded(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string FirstLine(const std::string& text) {
  const std::string line = text.substr(0, text.find('\n'));
  return line.empty() ? "sqlite3 failed without a word" : line;
}

// The child's end is closed here, so that the reading ends with the child.
std::string Run(const std::string& database, const std::string& script, const int (&pipe_ends)[2]) {
  FileActions actions;
  actions.Open(STDIN_FILENO, script.c_str(), O_RDONLY);
  actions.Open(STDOUT_FILENO, "/dev/null", O_WRONLY);
  actions.Duplicate(pipe_ends[1], STDERR_FILENO);
  std::string file = AsPath(database);
  char program[] = "sqlite3";
  char* const arguments[] = {program, file.data(), nullptr};
  pid_t child = 0;
  const int failure = posix_spawnp(&child, program, actions.get(), nullptr, arguments, environ);
  close(pipe_ends[1]);
  if (failure != 0) return std::string("sqlite3 cannot be started: ") + std::strerror(failure);
  const std::string errors = ReadAll(pipe_ends[0]);
  return Succeeded(child) ? "" : FirstLine(errors);
}

}  // namespace

std::string RunScript(const std::string& database, const std::string& script) {
  if (access(script.c_str(), R_OK) != 0) return script + " cannot be read: " + std::strerror(errno);
  if (std::filesystem::is_directory(script)) return script + " is a directory";
  int pipe_ends[2];
  if (pipe2(pipe_ends, O_CLOEXEC) != 0) return std::strerror(errno);
  std::string reason = Run(database, script, pipe_ends);
  close(pipe_ends[0]);
  return reason;
}

}  // namespace vptzctl
