#include "model/sql_script.h"

#include <glib.h>

#include <memory>

namespace vptz {
namespace {

struct GlibDeleter {
  void operator()(char* text) const { g_free(text); }
};
using GlibText = std::unique_ptr<char, GlibDeleter>;

bool IsPlain(const std::string& text) {
  return !text.empty() && text.find_first_of(" \t\r\n\"'\\;#|&$`*?[]{}()<>~!") == std::string::npos;
}

std::string ShellQuoted(const std::string& text) { return GlibText(g_shell_quote(text.c_str())).get(); }

// The argument of a dot command in double quotes, where a backslash protects
// the next character.
std::string DotQuoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
    }
    quoted += c;
  }
  return quoted + '"';
}

std::string CommandLine(const std::string& database, const std::string& script) {
  const std::string file = AsPath(database);
  const std::string source = AsPath(script);
  const std::string read =
      IsPlain(source) ? "\".read " + source + "\"" : ShellQuoted(".read " + DotQuoted(source));
  return "sqlite3 " + (IsPlain(file) ? file : ShellQuoted(file)) + " " + read;
}

}  // namespace

std::string AsPath(const std::string& path) {
  const bool special = path.empty() || path.find_first_of("-|:") == 0 || path.compare(0, 5, "file:") == 0;
  return special ? "./" + path : path;
}

bool RunSqlScript(const std::string& database, const std::string& script, int* wait_status) {
  char* output = nullptr;
  char* errors = nullptr;
  GError* error = nullptr;
  const gboolean started =
      g_spawn_command_line_sync(CommandLine(database, script).c_str(), &output, &errors, wait_status, &error);
  g_free(output);
  g_free(errors);
  g_clear_error(&error);
  return started != FALSE;
}

}  // namespace vptz
