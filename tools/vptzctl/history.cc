#include "history.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// These need what <cstdio> declares.
#include <readline/history.h>

namespace vptzctl {
namespace {

constexpr int kLines = 1000;

std::string StateFolder() {
  // A relative path does not count, as the standard for these folders says.
  const char* state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return std::string(state) + "/vptzctl";
  const char* home = std::getenv("HOME");
  return home != nullptr && *home == '/' ? std::string(home) + "/.local/state/vptzctl" : "";
}

bool MakeFolder(const std::string& folder) {
  std::error_code error;
  const std::filesystem::path path(folder);
  std::filesystem::create_directories(path.parent_path(), error);
  mkdir(folder.c_str(), S_IRWXU);
  return std::filesystem::is_directory(path, error);
}

// Opened for appending, for its owner alone. -1 when that cannot be.
int Open(const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                        S_IRUSR | S_IWUSR);
  struct stat status = {};
  if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
      fchmod(file, S_IRUSR | S_IWUSR) == 0) {
    return file;
  }
  if (file >= 0) close(file);
  return -1;
}

}  // namespace

History::History() {
  const std::string folder = StateFolder();
  if (folder.empty() || !MakeFolder(folder)) return;
  path_ = folder + "/history";
  const int file = Open(path_);
  if (file < 0) {
    path_.clear();
    return;
  }
  close(file);
  history_truncate_file(path_.c_str(), kLines);
  read_history(path_.c_str());
  stifle_history(kLines);
}

void History::Recall(const std::string& line) {
  const HIST_ENTRY* last = history_length > 0 ? history_get(history_base + history_length - 1) : nullptr;
  if (last == nullptr || line != last->line) add_history(line.c_str());
}

void History::Keep(const std::string& line) {
  if (path_.empty() || !MayBeKept(line)) return;
  const int file = Open(path_);
  if (file < 0) return;
  const std::string text = line + "\n";
  [[maybe_unused]] const ssize_t written = write(file, text.data(), text.size());
  close(file);
}

bool MayBeKept(const std::string& line) {
  static const std::regex credentials("://[^/]*@");
  const bool one_line = line.find('\n') == std::string::npos;
  return one_line && !line.empty() && line.front() != ' ' && !std::regex_search(line, credentials);
}

}  // namespace vptzctl
