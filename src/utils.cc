#include <vptz/utils.h>

#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <utility>

#include "log.h"

namespace {

using vptz::LogLevel;
using vptz::log_source::kUtils;

struct GlibDeleter {
  void operator()(char* text) const { g_free(text); }
};
using GlibText = std::unique_ptr<char, GlibDeleter>;

// The directory's first levels, up to the slash at index `depth`; the whole
// directory when it has just that many slashes. False when it has fewer.
bool RequiredAncestor(const std::string& directory, int depth, std::string* ancestor) {
  int slashes = 0;
  std::size_t end = std::string::npos;
  for (std::size_t i = 0; i < directory.size(); ++i) {
    if (directory[i] != '/') {
      continue;
    }
    if (slashes == depth) {
      end = i;
    }
    ++slashes;
  }
  *ancestor = directory.substr(0, end);
  return slashes >= depth;
}

struct Module {
  const char* name;
  int id;
};
constexpr Module kModules[] = {{"ONVIF", 1}, {"RS232", 2},         {"QX310", 3},
                               {"NDI", 4},   {"VISCA_OVER_IP", 5}, {"NDIHX", 6}};

}  // namespace

int ReplaceString(std::string* text, const std::string& pattern, const std::string& replacement) {
  if (pattern.empty()) {
    return 0;
  }
  // The text stays as it is meanwhile: it may be the pattern or the replacement.
  std::string result;
  std::size_t from = 0;
  for (std::size_t at = text->find(pattern); at != std::string::npos; at = text->find(pattern, from)) {
    result.append(*text, from, at - from).append(replacement);
    from = at + pattern.size();
  }
  result.append(*text, from);
  *text = std::move(result);
  return 0;
}

int StrReplace(std::string& text, const std::string& pattern, const std::string& replacement) {
  const std::size_t at = text.find(pattern);
  if (at != std::string::npos) {
    text.replace(at, pattern.size(), replacement);
  }
  return 0;
}

std::vector<std::string> StrSplit(const std::string& text, const std::string& delimiters) {
  std::vector<std::string> pieces;
  std::size_t begin = text.find_first_not_of(delimiters);
  while (begin != std::string::npos) {
    const std::size_t end = text.find_first_of(delimiters, begin);
    pieces.push_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(delimiters, end);
  }
  return pieces;
}

bool IsFile(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool IsDir(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

int Remove(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return 0;
  }
  const int result = std::remove(path.c_str());
  if (result < 0) {
    VPTZ_LOG(LogLevel::kWarning, kUtils, "Failed to remove %s (%d)", path.c_str(), result);
  }
  return result;
}

std::int64_t FileSize(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? static_cast<std::int64_t>(status.st_size) : -1;
}

int GetFilepathFromUri(const std::string& uri, std::string* path) {
  constexpr std::size_t kSchemeLength = sizeof("file://") - 1;
  const GlibText scheme(g_uri_parse_scheme(uri.c_str()));
  const bool is_file = scheme != nullptr && std::string(scheme.get()) == "file" && uri.size() >= kSchemeLength;
  *path = is_file ? uri.substr(kSchemeLength) : uri;
  return 0;
}

int MakeDirByFilePath(const std::string& path, unsigned mode, int depth) {
  const std::string directory = GlibText(g_path_get_dirname(path.c_str())).get();
  if (depth >= 1) {
    std::string ancestor;
    if (!RequiredAncestor(directory, depth, &ancestor) || !IsDir(ancestor)) {
      return -1;
    }
  }
  return g_mkdir_with_parents(directory.c_str(), static_cast<int>(mode));
}

int MakeDirByFileUri(const std::string& uri, unsigned mode, int depth) {
  std::string path;
  GetFilepathFromUri(uri, &path);
  return MakeDirByFilePath(path, mode, depth);
}

int ConvertModuleStrToId(const std::string& name) {
  for (const Module& module : kModules) {
    if (name == module.name) {
      return module.id;
    }
  }
  return -1;
}
