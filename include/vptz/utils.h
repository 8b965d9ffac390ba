// Small helpers for texts, files and names. They keep no state, throw nothing
// but std::bad_alloc, and may be called from any thread.
#ifndef VPTZ_UTILS_H
#define VPTZ_UTILS_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>

// Replaces every occurrence of `pattern`; what was inserted is not looked at
// again. An empty pattern changes nothing. Always 0.
VPTZ_API int ReplaceString(std::string* text, const std::string& pattern, const std::string& replacement);

// Replaces the first occurrence only. Always 0.
VPTZ_API int StrReplace(std::string& text, const std::string& pattern, const std::string& replacement);

// Cuts a text at the given characters. Never yields empty pieces; without
// delimiters a text that is not empty is one piece.
VPTZ_API std::vector<std::string> StrSplit(const std::string& text, const std::string& delimiters);

// Whether something is there, of whatever kind.
VPTZ_API bool IsFile(const std::string& path);

// Whether a directory is there.
VPTZ_API bool IsDir(const std::string& path);

// Removes a file or an empty directory. 0, also when nothing was there, or -1
// with a line in the log.
VPTZ_API int Remove(const std::string& path);

// Size in bytes, of a symbolic link its own; -1 when nothing is there.
VPTZ_API std::int64_t FileSize(const std::string& path);

// The path of a "file" URI; any other text unchanged. Always 0.
VPTZ_API int GetFilepathFromUri(const std::string& uri, std::string* path);

// Creates the directory of a file, with missing parents and the given mode,
// below an ancestor that must be there already: the directory's first `depth`
// levels. With a depth below 1 nothing need be there. 0, or -1: the directory
// has fewer levels, the ancestor is missing, or it cannot be created.
VPTZ_API int MakeDirByFilePath(const std::string& path, unsigned mode, int depth);

// MakeDirByFilePath for a file named by a URI.
VPTZ_API int MakeDirByFileUri(const std::string& uri, unsigned mode, int depth);

// The number of a control protocol: "ONVIF" 1, "RS232" 2, "QX310" 3, "NDI" 4,
// "VISCA_OVER_IP" 5, "NDIHX" 6; -1 for any other text. Case counts.
VPTZ_API int ConvertModuleStrToId(const std::string& name);

#endif
