#include <vptz/config.h>

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "log.h"
#include "no_throw.h"

namespace {

using vptz::LogLevel;
using vptz::log_source::kConfig;

struct GlibDeleter {
  void operator()(char* text) const { g_free(text); }
};
using GlibText = std::unique_ptr<char, GlibDeleter>;

// Receives and owns the error of one GLib call.
class GlibError {
 public:
  GlibError() = default;
  ~GlibError() { g_clear_error(&error_); }
  GlibError(const GlibError&) = delete;
  GlibError& operator=(const GlibError&) = delete;

  GError** out() { return &error_; }
  bool IsSet() const { return error_ != nullptr; }
  bool Is(GKeyFileError code) const { return g_error_matches(error_, G_KEY_FILE_ERROR, code) != FALSE; }

 private:
  GError* error_ = nullptr;
};

// Closes its descriptor.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return descriptor_; }

 private:
  const int descriptor_;
};

constexpr std::size_t kLargestFile = std::size_t{1} << 20;

// The text of a regular file of moderate size. GLib would wait for somebody to
// write into a pipe and take whatever fits into memory.
bool ReadRegularFile(const std::string& path, std::string* text) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  char buffer[4096];
  ssize_t length = 0;
  while (text->size() <= kLargestFile && (length = read(file.get(), buffer, sizeof buffer)) > 0) {
    text->append(buffer, static_cast<std::size_t>(length));
  }
  return length == 0 && text->size() <= kLargestFile;
}

bool LoadKeyFile(GKeyFile* key_file, const std::string& path) {
  return vptz::NoThrow(false, [&] {
    std::string text;
    return ReadRegularFile(path, &text) &&
           g_key_file_load_from_data(key_file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr) != FALSE;
  });
}

enum class Failure { kNone, kNoKey, kNoGroup, kOther };

Failure FailureOf(const GlibError& error) {
  if (!error.IsSet()) return Failure::kNone;
  if (error.Is(G_KEY_FILE_ERROR_KEY_NOT_FOUND)) return Failure::kNoKey;
  if (error.Is(G_KEY_FILE_ERROR_GROUP_NOT_FOUND)) return Failure::kNoGroup;
  return Failure::kOther;
}

// Refuses what GLib would complain about on standard error instead of
// reporting it. Where nothing has been read there are no groups.
Failure CheckArguments(const GKeyFile* key_file, const char* group, const char* key) {
  if (group == nullptr || key == nullptr) return Failure::kOther;
  return key_file == nullptr ? Failure::kNoGroup : Failure::kNone;
}

Failure ReadText(GKeyFile* key_file, const char* group, const char* key, GlibText& text) {
  const Failure refused = CheckArguments(key_file, group, key);
  if (refused != Failure::kNone) return refused;
  GlibError error;
  text.reset(g_key_file_get_value(key_file, group, key, error.out()));
  return FailureOf(error);
}

// Leaves 0 in `number` unless it succeeds.
Failure ReadInteger(GKeyFile* key_file, const char* group, const char* key, int& number) {
  number = 0;
  const Failure refused = CheckArguments(key_file, group, key);
  if (refused != Failure::kNone) return refused;
  GlibError error;
  number = g_key_file_get_integer(key_file, group, key, error.out());
  return FailureOf(error);
}

int Assign(const char* from, std::string& to) {
  return vptz::NoThrow(-1, [&] { return to = from, 0; });
}

}  // namespace

Config::Config(const char* path) : path_(path) {}

Config::~Config() { Release(); }

int Config::AssignPath(const char* path) { return path == nullptr ? -1 : Assign(path, path_); }

const char* Config::GetPath() const { return path_.c_str(); }

int Config::Load() {
  Release();
  key_file_ = g_key_file_new();
  if (key_file_ == nullptr) {
    VPTZ_LOG(LogLevel::kError, kConfig, "Could not create the keyfile");
    return -1;
  }
  if (!LoadKeyFile(key_file_, path_)) {
    VPTZ_LOG(LogLevel::kError, kConfig, "Could not load the config file: %s", path_.c_str());
    Release();  // a parse that fails on the way leaves the groups read so far
    return -1;
  }
  VPTZ_LOG(LogLevel::kNotice, kConfig, "Complete load config file: %s", path_.c_str());
  return 0;
}

void Config::Release() { g_clear_pointer(&key_file_, g_key_file_unref); }

int Config::GetValue(const char* group, const char* key, std::string& value) {
  GlibText text;
  switch (ReadText(key_file_, group, key, text)) {
    case Failure::kNone:
      return Assign(text.get(), value);
    case Failure::kNoKey:
      VPTZ_LOG(LogLevel::kWarning, kConfig, "Failed to get config value %s/%s: Key not found!", group, key);
      return -1;
    case Failure::kNoGroup:
      VPTZ_LOG(LogLevel::kWarning, kConfig, "Failed to get config value %s/%s: Group not found!", group, key);
      return -1;
    case Failure::kOther:
      break;
  }
  VPTZ_LOG(LogLevel::kError, kConfig, "Failed to get config value: Unkown error!");  // kept: the spelling
  return -1;
}

int Config::GetValue(const char* group, const char* key, const char* default_value, std::string& value) {
  GlibText text;
  const bool found = ReadText(key_file_, group, key, text) == Failure::kNone;
  const char* const source = found ? text.get() : default_value;
  return Assign(source != nullptr ? source : "", value);
}

int Config::GetValue(const char* group, const char* key, int default_value, int& value) {
  int number = 0;
  if (ReadInteger(key_file_, group, key, number) == Failure::kOther) {
    VPTZ_LOG(LogLevel::kError, kConfig, "Failed to get config value: Unkown error!");  // kept: the spelling
    return -1;
  }
  if (number == 0) {  // also what the file may say: a 0 counts as missing
    value = default_value;
    return -1;
  }
  value = number;
  return 0;
}
