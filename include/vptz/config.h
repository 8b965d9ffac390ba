#ifndef VPTZ_CONFIG_H
#define VPTZ_CONFIG_H

#include <string>

#include <vptz/export.h>

struct _GKeyFile;  // NOLINT(bugprone-reserved-identifier): GLib's own name

// Reads settings from a key file: groups in square brackets, one "key=value"
// per line. Not safe for use from several threads at once. Where memory runs out
// operations return -1; only the constructor throws.
class VPTZ_API Config {
 public:
  // Keeps the path; reads nothing. Throws std::logic_error when `path` is null,
  // std::bad_alloc when memory runs out.
  explicit Config(const char* path);
  virtual ~Config();
  Config(const Config&) = delete;
  Config& operator=(const Config&) = delete;

  // Replaces the path for the next Load. -1, and the old path stays, when
  // `path` is null; else 0.
  int AssignPath(const char* path);

  // The path; valid until the next AssignPath.
  const char* GetPath() const;

  // Reads the file anew and forgets what was read before. 0, or -1 when the
  // file is missing, unreadable, no regular file, longer than 1 MiB or no key
  // file; that is logged. Never waits for somebody to write into a pipe.
  int Load();

  // Forgets what was read.
  void Release();

  // Copies the raw text of a key. 0, or -1 when key or group is missing, which
  // is logged; `value` is then left alone.
  int GetValue(const char* group, const char* key, std::string& value);

  // Copies the raw text of a key, or `default_value` (null counts as empty)
  // when there is none. 0, or -1 and `value` left alone when memory runs out; logs
  // nothing.
  int GetValue(const char* group, const char* key, const char* default_value, std::string& value);

  // Reads a key as a decimal integer. 0 when it holds one other than 0.
  // -1 and `default_value` in `value` when key or group is missing or the
  // number is 0. -1, a log line, and `value` left alone when the key holds
  // something else.
  int GetValue(const char* group, const char* key, int default_value, int& value);

 private:
  std::string path_;
  _GKeyFile* key_file_ = nullptr;
};

#endif
