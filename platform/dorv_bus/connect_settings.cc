#include "connect_settings.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "descriptor.h"
#include "log_writer.h"

namespace dorv {
namespace {

constexpr char kDefaultFile[] = "/etc/dorv/bus.conf";
constexpr std::size_t kLargestFile = std::size_t{1} << 20;

struct KeyFileFree {
  void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileFree>;

std::string Value(GKeyFile* file, const char* group, const char* key) {
  const std::unique_ptr<char, decltype(&g_free)> text(g_key_file_get_string(file, group, key, nullptr),
                                                      &g_free);
  return text == nullptr ? "" : text.get();
}

// The text of a regular file of moderate size. GLib would wait until a
// process writes into a pipe, and take all that fits into memory. The library reads its
// configuration in the same way; the two share no code, since an appliance brings
// a bus of its own.
bool ReadRegularFile(const std::string& path, std::string* text) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return false;
  }
  char buffer[4096];
  ssize_t length = 0;
  while (text->size() <= kLargestFile && (length = read(file.get(), buffer, sizeof buffer)) > 0) {
    text->append(buffer, static_cast<std::size_t>(length));
  }
  return length == 0 && text->size() <= kLargestFile;
}

// The file's first line, without its end.
bool ReadSecret(const std::string& path, std::string* secret, LogWriter& log) {
  std::string text;
  if (!ReadRegularFile(path, &text)) {
    DORV_LOG_LATER(log, ZERK_LOG_ERROR, "cannot read the password file %s", path.c_str());
    return false;
  }
  *secret = text.substr(0, text.find_first_of(std::string_view("\r\n\0", 3)));
  return true;
}

bool LoadKeyFile(GKeyFile* file, const char* path) {
  std::string text;
  // Without the library's own account of what is wrong, which may quote a line.
  return ReadRegularFile(path, &text) &&
         g_key_file_load_from_data(file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr) != FALSE;
}

// Whole seconds from 1 to 3600. An empty text leaves what is there.
bool ReadConnectTimeout(const std::string& text, const char* source, std::chrono::seconds* timeout,
                        LogWriter& log) {
  if (text.empty()) {
    return true;
  }
  int seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || seconds < 1 || seconds > 3600) {
    DORV_LOG_LATER(log, ZERK_LOG_ERROR, "%s is not a whole number of seconds from 1 to 3600", source);
    return false;
  }
  *timeout = std::chrono::seconds(seconds);
  return true;
}

std::optional<ConnectSettings> FromFile(const char* path, LogWriter& log) {
  const KeyFile file(g_key_file_new());
  if (!LoadKeyFile(file.get(), path)) {
    DORV_LOG_LATER(log, ZERK_LOG_ERROR, "cannot read the bus settings %s", path);
    return std::nullopt;
  }
  ConnectSettings settings;
  settings.user = Value(file.get(), "broker", "user");
  settings.password = Value(file.get(), "broker", "password");
  const std::string password_file = Value(file.get(), "broker", "password_file");
  if (!password_file.empty() && !ReadSecret(password_file, &settings.password, log)) {
    return std::nullopt;
  }
  settings.tls = g_key_file_has_group(file.get(), "tls") != FALSE;
  settings.ca_file = Value(file.get(), "tls", "ca_file");
  settings.certificate = Value(file.get(), "tls", "certificate");
  settings.key = Value(file.get(), "tls", "key");
  if (!ReadConnectTimeout(Value(file.get(), "broker", "connect_timeout"), "connect_timeout in the bus settings",
                          &settings.connect_timeout, log)) {
    return std::nullopt;
  }
  return settings;
}

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::optional<ConnectSettings> FromChosenFile(LogWriter& log) {
  const std::string chosen = Environment("DORV_BUS_SETTINGS");
  if (!chosen.empty()) {
    return FromFile(chosen.c_str(), log);
  }
  return access(kDefaultFile, F_OK) == 0 ? FromFile(kDefaultFile, log) : ConnectSettings();
}

}  // namespace

std::optional<ConnectSettings> ConnectSettings::Load() {
  LogWriter log;  // waits for its line at the end, but for no more than a second
  std::optional<ConnectSettings> settings = FromChosenFile(log);
  if (settings && !ReadConnectTimeout(Environment("DORV_BUS_CONNECT_TIMEOUT"), "DORV_BUS_CONNECT_TIMEOUT",
                                      &settings->connect_timeout, log)) {
    return std::nullopt;
  }
  return settings;
}

}  // namespace dorv
