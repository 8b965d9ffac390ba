#include "settings.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "log.h"

namespace dorv {
namespace {

constexpr char kDefaultFile[] = "/etc/dorv/bus.conf";

struct KeyFileFree {
  void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileFree>;

std::string Value(GKeyFile* file, const char* group, const char* key) {
  char* text = g_key_file_get_string(file, group, key, nullptr);
  std::string value = text == nullptr ? "" : text;
  g_free(text);
  return value;
}

// The file's first line, without its end.
bool ReadSecret(const std::string& path, std::string* secret) {
  char* text = nullptr;
  if (!g_file_get_contents(path.c_str(), &text, nullptr, nullptr)) {
    DORV_LOG(ZERK_LOG_ERROR, "cannot read the password file %s", path.c_str());
    return false;
  }
  secret->assign(text);
  g_free(text);
  secret->erase(std::min(secret->find_first_of("\r\n"), secret->size()));
  return true;
}

std::optional<Settings> FromFile(const char* path) {
  const KeyFile file(g_key_file_new());
  GError* error = nullptr;
  if (!g_key_file_load_from_file(file.get(), path, G_KEY_FILE_NONE, &error)) {
    // Without the library's own text, which may quote a line of the file.
    g_clear_error(&error);
    DORV_LOG(ZERK_LOG_ERROR, "cannot read the bus settings %s", path);
    return std::nullopt;
  }
  Settings settings;
  settings.user = Value(file.get(), "broker", "user");
  settings.password = Value(file.get(), "broker", "password");
  const std::string password_file = Value(file.get(), "broker", "password_file");
  if (!password_file.empty() && !ReadSecret(password_file, &settings.password)) {
    return std::nullopt;
  }
  settings.tls = g_key_file_has_group(file.get(), "tls") != FALSE;
  settings.ca_file = Value(file.get(), "tls", "ca_file");
  settings.certificate = Value(file.get(), "tls", "certificate");
  settings.key = Value(file.get(), "tls", "key");
  return settings;
}

}  // namespace

std::optional<Settings> Settings::Load() {
  const char* chosen = std::getenv("DORV_BUS_SETTINGS");
  if (chosen != nullptr && *chosen != '\0') {
    return FromFile(chosen);
  }
  return access(kDefaultFile, F_OK) == 0 ? FromFile(kDefaultFile) : Settings();
}

}  // namespace dorv
